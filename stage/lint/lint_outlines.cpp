// Rules about shapes that particles are born in.
#include <fmt/format.h>

#include <algorithm>

#include "linted.h"

namespace stage {

namespace {

constexpr float kMinExtent = 0.01f;  // no births in smaller shapes

struct PlanePoint {
    float across;
    float up;
};

// The plane of a choice such as "XZ", as indices of its axes.
struct Plane {
    std::string name;
    size_t across;
    size_t up;
};

using Outline = std::vector<PlanePoint>;

Plane plane_of(const LintedInstance& linted, const ParameterMoment& moment, const OutlineNotes& notes) {
    const std::string name = notes.plane.empty() ? "XY" : text_of(value_of(linted, moment, notes.plane));
    const auto axis = [](char letter) { return static_cast<size_t>(letter - 'X') % 3; };
    return {name, axis(name.at(0)), axis(name.at(1))};
}

Vector3 placed(const Matrix& m, const Vector3& v) {
    return {m[0] * v.x + m[4] * v.y + m[8] * v.z + m[12], m[1] * v.x + m[5] * v.y + m[9] * v.z + m[13],
            m[2] * v.x + m[6] * v.y + m[10] * v.z + m[14]};
}

std::vector<Outline> outlines_of(const std::vector<Mesh>& meshes, const Matrix& matrix, const Plane& plane) {
    std::vector<Outline> outlines;
    for (const Mesh& mesh : meshes) {
        Outline& outline = outlines.emplace_back();
        for (const Vector3& vertex : mesh.vertices) {
            const Vector3 point = placed(matrix, vertex);
            const float axes[] = {point.x, point.y, point.z};
            outline.push_back({axes[plane.across], axes[plane.up]});
        }
    }
    return outlines;
}

// The even-odd rule.
bool is_inside(const Outline& outline, PlanePoint point) {
    bool inside = false;
    for (size_t i = 0, before = outline.size() - 1; i < outline.size(); before = i++) {
        const PlanePoint a = outline[before], b = outline[i];
        if ((a.up > point.up) != (b.up > point.up) &&
            point.across < (b.across - a.across) * (point.up - a.up) / (b.up - a.up) + a.across)
            inside = !inside;
    }
    return inside;
}

bool lies_in(const Outline& inner, const Outline& outer) {
    return !inner.empty() && outer.size() >= 3 &&
           std::all_of(inner.begin(), inner.end(), [&](PlanePoint point) { return is_inside(outer, point); });
}

void lint_nesting(const std::vector<Outline>& outlines, const std::string& start, std::vector<std::string>& lines) {
    constexpr size_t kMostCompared = 200;  // number of outlines; the time grows with its square
    const size_t count = std::min(outlines.size(), kMostCompared);
    for (size_t inner = 0; inner < count; ++inner) {
        for (size_t outer = 0; outer < count; ++outer) {
            if (inner == outer || !lies_in(outlines[inner], outlines[outer])) continue;
            lines.push_back(
                fmt::format("{}: outline {} of {} lies inside outline {} and fills too, it is no hole; cut "
                            "holes into the outer outline, with an edge to and fro",
                            start, inner + 1, outlines.size(), outer + 1));
            return;
        }
    }
}

// Replaces tiny extents, which come from rounding, by 0.
float shown(float extent) {
    return extent < 1e-6f ? 0.0f : extent;
}

void lint_extent(const std::vector<Outline>& outlines, const Plane& plane, const std::string& start,
                 std::vector<std::string>& lines) {
    PlanePoint low{1e30f, 1e30f}, high{-1e30f, -1e30f};
    for (const Outline& outline : outlines) {
        for (const PlanePoint point : outline) {
            low = {std::min(low.across, point.across), std::min(low.up, point.up)};
            high = {std::max(high.across, point.across), std::max(high.up, point.up)};
        }
    }
    const float across = high.across - low.across, up = high.up - low.up;
    if (outlines.empty() || (across >= kMinExtent && up >= kMinExtent)) return;
    lines.push_back(
        fmt::format("{}: in the plane {} the shape is {:g} x {:g} units: nothing is born below {:g}; turn it "
                    "or take another plane",
                    start, plane.name, shown(across), shown(up), kMinExtent));
}

void lint_shape(const LintedInstance& linted, const ParameterMoment& moment, const ParameterNotes& notes,
                std::vector<std::string>& lines) {
    const std::vector<ContainerDescription>& containers = linted.built.description.containers;
    const std::string name = text_of(value_of(linted, moment, notes.name));
    const auto container = std::find_if(containers.begin(), containers.end(),
                                        [&](const ContainerDescription& one) { return one.name == name; });
    if (container == containers.end()) return;
    const auto index = static_cast<int32_t>(container - containers.begin());
    const PluginId owner = linted.built.plugins[static_cast<size_t>(index)];
    if (owner >= 0 && owner != linted.built.plugins[linted.container]) return;  // it may supply points itself
    const std::string start = fmt::format("{}: the container '{}'", place_of(linted, moment, notes.name), name);
    const auto track = std::find_if(linted.built.shapes.begin(), linted.built.shapes.end(),
                                    [&](const ShapeTrack& one) { return one.container == index; });
    if (track == linted.built.shapes.end()) {
        lines.push_back(start + " has no shape: nothing is born; give it a geometry");
        return;
    }
    const OutlineNotes& outline = *notes.outline;
    const bool in_world =
        !outline.coordinates.empty() && text_of(value_of(linted, moment, outline.coordinates)) == "World";
    const Matrix matrix =
        in_world ? world_matrix(*linted.built.stage, linted.built.container_handles[static_cast<size_t>(index)])
                 : kIdentity;
    const Plane plane = plane_of(linted, moment, outline);
    for (const ShapeKey& key : track->keys) {
        const std::vector<Outline> outlines = outlines_of(key.meshes, matrix, plane);
        lint_extent(outlines, plane, start, lines);
        lint_nesting(outlines, start, lines);
    }
}

}  // namespace

void lint_outlines(const LintedInstance& linted, std::vector<std::string>& lines) {
    for (const ParameterMoment& moment : linted.moments) {
        if (moment.made.empty()) continue;
        for (const ParameterNotes& notes : linted.notes.parameters) {
            if (notes.outline && holds(linted, moment, notes.acts_when) &&
                !text_of(value_of(linted, moment, notes.name)).empty())
                lint_shape(linted, moment, notes, lines);
        }
    }
}

}  // namespace stage
