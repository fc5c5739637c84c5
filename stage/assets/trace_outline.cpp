#include "stage/assets/trace_outline.h"

#include <fmt/format.h>
#include <potracelib.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <memory>
#include <optional>

#include "stage/assets/contours.h"

namespace stage {
namespace {

constexpr int kMaxSide = 16384;
constexpr int kWordBits = std::numeric_limits<potrace_word>::digits;

struct FreeParameters {
    void operator()(potrace_param_t* parameters) const { potrace_param_free(parameters); }
};
struct FreeTrace {
    void operator()(potrace_state_t* state) const { potrace_state_free(state); }
};

std::optional<Error> wrong_mask(const Mask& mask) {
    if (mask.width < 1 || mask.width > kMaxSide || mask.height < 1 || mask.height > kMaxSide)
        return Error{
            fmt::format("mask: {} × {} pixels; each side must be from 1 to {}", mask.width, mask.height, kMaxSide)};
    const size_t pixels = static_cast<size_t>(mask.width) * static_cast<size_t>(mask.height);
    if (mask.bytes.size() != pixels)
        return Error{fmt::format("mask: {} bytes; {} × {} pixels must have {}", mask.bytes.size(), mask.width,
                                 mask.height, pixels)};
    const uint8_t brightest = *std::max_element(mask.bytes.begin(), mask.bytes.end());
    if (brightest < mask.threshold)
        return Error{
            fmt::format("mask: no pixel reaches the threshold {}; the brightest is {}", mask.threshold, brightest)};
    return {};
}

std::optional<Error> wrong_setting(const TraceSettings& settings) {
    const auto wrong = [](const char* name, auto value, const char* right) {
        return Error{fmt::format("trace: {} is {}; it must be {}", name, value, right)};
    };
    if (!std::isfinite(settings.width) || settings.width <= 0)
        return wrong("width", settings.width, "a number above 0");
    if (!std::isfinite(settings.height) || settings.height <= 0)
        return wrong("height", settings.height, "a number above 0");
    if (!std::isfinite(settings.tolerance) || settings.tolerance < 0)
        return wrong("tolerance", settings.tolerance, "0 or a number above");
    if (settings.smallest_spot < 0) return wrong("smallest_spot", settings.smallest_spot, "0 or above");
    if (!(settings.corner_limit >= 0 && settings.corner_limit <= 2))
        return wrong("corner_limit", settings.corner_limit, "from 0 to 2");
    return {};
}

// The mask as the tracer takes it: a bit for each pixel, the leftmost in a word's highest bit, the first row the
// lowest.
struct Bitmap {
    std::vector<potrace_word> words;
    potrace_bitmap_t header;
};

Bitmap bitmap_of(const Mask& mask) {
    const int words_per_row = (mask.width + kWordBits - 1) / kWordBits;
    Bitmap bitmap{std::vector<potrace_word>(static_cast<size_t>(words_per_row) * static_cast<size_t>(mask.height)), {}};
    const uint8_t* pixel = mask.bytes.data();
    for (int row = 0; row < mask.height; ++row) {
        potrace_word* words = bitmap.words.data() + static_cast<ptrdiff_t>(row) * words_per_row;
        for (int column = 0; column < mask.width; ++column)
            if (*pixel++ >= mask.threshold)
                words[column / kWordBits] |= potrace_word{1} << (kWordBits - 1 - column % kWordBits);
    }
    bitmap.header = {mask.width, mask.height, words_per_row, bitmap.words.data()};
    return bitmap;
}

ContourPoint point(const potrace_dpoint_t& p) {
    return {p.x, p.y};
}

Contour flattened(const potrace_curve_t& curve, double tolerance) {
    Contour contour{point(curve.c[curve.n - 1][2])};  // each segment starts where the one before ends
    for (int i = 0; i < curve.n; ++i) {
        const potrace_dpoint_t* c = curve.c[i];
        if (curve.tag[i] == POTRACE_CURVETO) {
            append_cubic(contour, point(c[0]), point(c[1]), point(c[2]), tolerance);
        } else {
            contour.push_back(point(c[1]));
            contour.push_back(point(c[2]));
        }
    }
    contour.pop_back();  // the start again
    return contour;
}

}  // namespace

Result<std::vector<Mesh>> trace_outlines(const Mask& mask, const TraceSettings& settings) {
    if (auto error = wrong_mask(mask)) return *error;
    if (auto error = wrong_setting(settings)) return *error;
    const double pixel_width = double{settings.width} / mask.width,
                 pixel_height = double{settings.height} / mask.height;
    const double tolerance = settings.tolerance > 0 ? settings.tolerance / std::max(pixel_width, pixel_height) : 0.1;

    const std::unique_ptr<potrace_param_t, FreeParameters> parameters(potrace_param_default());
    if (!parameters) return Error{"trace: out of memory"};
    parameters->turdsize = settings.smallest_spot;
    parameters->alphamax = settings.corner_limit;
    const Bitmap bitmap = bitmap_of(mask);
    const std::unique_ptr<potrace_state_t, FreeTrace> traced(potrace_trace(parameters.get(), &bitmap.header));
    if (!traced || traced->status != POTRACE_STATUS_OK) return Error{"trace: out of memory"};

    std::vector<Contour> contours;
    for (const potrace_path_t* path = traced->plist; path; path = path->next)
        if (path->curve.n > 0) contours.push_back(flattened(path->curve, tolerance));
    std::vector<Mesh> outlines = outlines_of(contours, FillRule::EvenOdd);
    if (outlines.empty())
        return Error{
            fmt::format("mask: nothing but spots of at most smallest_spot, {}, pixels", settings.smallest_spot)};
    for (Mesh& outline : outlines)
        for (Vector3& v : outline.vertices)
            v = {static_cast<float>((v.x - mask.width / 2.0) * pixel_width),
                 static_cast<float>((v.y - mask.height / 2.0) * pixel_height), 0.0f};
    return outlines;
}

}  // namespace stage
