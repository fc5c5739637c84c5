#include "picture_panel.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>

#include "actions.h"
#include "orbit.h"
#include "stage/assets/picture_file.h"
#include "theme.h"
#include "widgets/tip.h"

namespace tovu {

namespace {

constexpr float kDegreesPerPixel = 0.3f;
constexpr float kWheelFactor = 0.88f;

ImTextureID id_of(const stage::Texture& texture) {
    return reinterpret_cast<ImTextureID>(static_cast<uintptr_t>(texture.number()));
}

// The largest area with the picture's aspect ratio, centred in `area`.
Area fit(const Area& area, const std::array<int32_t, 2>& size) {
    const auto width = static_cast<float>(size[0]), height = static_cast<float>(size[1]);
    const float factor = std::min(area.width / width, area.height / height);
    const float w = std::max(1.0f, std::floor(width * factor)), h = std::max(1.0f, std::floor(height * factor));
    return {std::floor(area.x + (area.width - w) / 2), std::floor(area.y + (area.height - h) / 2), w, h};
}

void draw_checkerboard(ImDrawList* list, const Area& area) {
    const float cell = std::max(8.0f, ImGui::GetFontSize());
    list->AddRectFilled({area.x, area.y}, {area.x + area.width, area.y + area.height}, IM_COL32(92, 92, 92, 255));
    for (int row = 0; static_cast<float>(row) * cell < area.height; ++row)
        for (int column = row % 2; static_cast<float>(column) * cell < area.width; column += 2) {
            const float x = static_cast<float>(column) * cell, y = static_cast<float>(row) * cell;
            list->AddRectFilled({area.x + x, area.y + y},
                                {area.x + std::min(x + cell, area.width), area.y + std::min(y + cell, area.height)},
                                IM_COL32(128, 128, 128, 255));
        }
}

void draw_backdrop(PanelFrame& frame, const ShownPictures& pictures, ImDrawList* list, const Area& area) {
    const PanelMemory& memory = frame.memory;
    const ImVec2 low{area.x, area.y}, high{area.x + area.width, area.y + area.height};
    if (memory.backdrop == Backdrop::kCheckerboard) draw_checkerboard(list, area);
    if (memory.backdrop == Backdrop::kScene) list->AddRectFilled(low, high, IM_COL32(0, 0, 0, 255));
    if (memory.backdrop == Backdrop::kColour)
        list->AddRectFilled(low, high,
                            ImColor(memory.backdrop_color[0], memory.backdrop_color[1], memory.backdrop_color[2]));
    if (memory.backdrop == Backdrop::kPicture && pictures.backdrop.number() != 0)
        list->AddImage(id_of(pictures.backdrop), low, high, {0, 1}, {1, 0});
}

// Reads the backdrop picture if its name has changed. Shows none if the name, which may be incomplete, is not a
// picture.
void follow_backdrop(const PanelMemory& memory, ShownPictures& pictures) {
    if (memory.backdrop != Backdrop::kPicture || pictures.backdrop_file == memory.backdrop_file) return;
    pictures.backdrop_file = memory.backdrop_file;
    const auto picture = stage::read_picture(memory.backdrop_file);
    const bool shown = picture && stage::replace_texture(pictures.backdrop, *picture);
    if (!shown) pictures.backdrop = stage::Texture();
}

// EBU R 95: graphics stay within 90 % of width and height, action within 93 %.
void draw_safe_areas(ImDrawList* list, const Area& area) {
    for (const float margin : {0.05f, 0.035f})
        list->AddRect({area.x + area.width * margin, area.y + area.height * margin},
                      {area.x + area.width * (1 - margin), area.y + area.height * (1 - margin)}, kGuide);
    const float x = area.x + area.width / 2, y = area.y + area.height / 2, arm = ImGui::GetFontSize();
    list->AddLine({x - arm, y}, {x + arm, y}, kGuide);
    list->AddLine({x, y - arm}, {x, y + arm}, kGuide);
}

void draw_boxes(const DrawnFrame& drawn, ImDrawList* list, const Area& area) {
    for (const ShownBox& box : drawn.boxes) {
        for (size_t corner = 0; corner < box.corners.size(); ++corner)
            for (const size_t axis : {size_t{1}, size_t{2}, size_t{4}}) {
                if ((corner & axis) != 0) continue;
                const auto &a = box.corners[corner], &b = box.corners[corner | axis];
                list->AddLine({area.x + a[0] * area.width, area.y + a[1] * area.height},
                              {area.x + b[0] * area.width, area.y + b[1] * area.height}, kAccent);
            }
        list->AddText({area.x + box.corners[2][0] * area.width, area.y + box.corners[2][1] * area.height}, kAccent,
                      box.container.c_str());
    }
}

// Moves the camera by the mouse: orbit with the left button, shift with the middle button or Shift, zoom with the
// wheel.
void move_camera(PanelFrame& frame, const Area& area) {
    const ImGuiIO& io = ImGui::GetIO();
    const stage::CameraDescription& described = frame.studio.scene->camera;
    ViewOrders view = frame.studio.orders.view;
    stage::Camera camera = view.camera ? *view.camera : camera_of(described);
    float& distance = frame.memory.pivot_distance;
    if (!view.camera) distance = distance_looked_at(described);
    const bool held = ImGui::IsItemActive() && (io.MouseDelta.x != 0 || io.MouseDelta.y != 0);
    const bool wheeled = ImGui::IsItemHovered() && io.MouseWheel != 0;
    if (held && (ImGui::IsMouseDown(ImGuiMouseButton_Middle) || io.KeyShift)) {
        const float units = 2.0f * distance * std::tan(camera.field_of_view_degrees * 0.00872665f) / area.height;
        shift(camera, -io.MouseDelta.x * units, io.MouseDelta.y * units);
    } else if (held) {
        orbit(camera, distance, -io.MouseDelta.x * kDegreesPerPixel, -io.MouseDelta.y * kDegreesPerPixel);
    }
    if (wheeled) distance = approach(camera, distance, std::pow(kWheelFactor, io.MouseWheel));
    if (!held && !wheeled) return;
    view.camera = camera;
    frame.commands.push_back(SetView{view});
}

std::string triple_text(const Vector3& v) {
    return fmt::format("[{:.6g}, {:.6g}, {:.6g}]", v.x, v.y, v.z);
}

// The command that writes the view's camera into the scene.
SetKeys camera_keys(const stage::Camera& camera, const stage::CameraDescription& described, float distance) {
    SetKeys keys{"camera", {{{{"camera"}, {"position"}}, triple_text(camera.position)}}};
    if (described.look_at) {
        const Vector3 direction = stage::view_direction(camera);
        const Vector3 target{camera.position.x + direction.x * distance, camera.position.y + direction.y * distance,
                             camera.position.z + direction.z * distance};
        keys.values.push_back({{{"camera"}, {"look_at"}}, triple_text(target)});
        return keys;
    }
    keys.values.push_back({{{"camera"}, {"pan"}}, fmt::format("{:.6g}", std::remainder(camera.pan_degrees, 360.0f))});
    keys.values.push_back({{{"camera"}, {"tilt"}}, fmt::format("{:.6g}", camera.tilt_degrees)});
    return keys;
}

void choose_backdrop(PanelFrame& frame) {
    PanelMemory& memory = frame.memory;
    constexpr const char* kNames[] = {"Black", "Checkerboard", "Colour", "Picture"};
    ImGui::SetNextItemWidth(ImGui::GetFontSize() * 8.5f);
    auto chosen = static_cast<int>(memory.backdrop);
    if (ImGui::Combo("##behind", &chosen, kNames, IM_ARRAYSIZE(kNames)))
        memory.backdrop = static_cast<Backdrop>(chosen);
    mark(frame.targets, "behind");
    widgets::tip("What is shown behind the transparent background");
    ImGui::SameLine();
    if (memory.backdrop == Backdrop::kColour) {
        ImGui::ColorEdit3("##behind colour", memory.backdrop_color.data(), ImGuiColorEditFlags_NoInputs);
        ImGui::SameLine();
    } else if (memory.backdrop == Backdrop::kPicture) {
        ImGui::SetNextItemWidth(ImGui::GetFontSize() * 10.0f);
        ImGui::InputTextWithHint("##behind picture", "Picture file", &memory.backdrop_file);
        mark(frame.targets, "behind.file");
        ImGui::SameLine();
    }
}

// The button for the column of numbers and warnings. While the column is hidden, the label has the number of warnings.
void numbers_button(PanelFrame& frame) {
    const bool shown = shows_numbers(frame.memory, ImGui::GetIO().DisplaySize.x);
    const auto& facts = frame.studio.report.facts;
    const size_t warnings = facts && !shown ? facts->warnings.size() : 0;
    std::string label = "Numbers";
    if (warnings > 0) label = fmt::format("{} warning{}", warnings, warnings == 1 ? "" : "s");
    if (warnings > 0) ImGui::PushStyleColor(ImGuiCol_Text, kWarning);
    const char* what = "Shows the live particles, the time of a frame and the warnings (N)";
    if (tool_button(frame, (label + "###Numbers").c_str(), what, {.is_on = shown})) toggle_numbers(frame);
    if (warnings > 0) ImGui::PopStyleColor();
    mark(frame.targets, "Numbers");
}

void picture_tools(PanelFrame& frame) {
    PanelMemory& memory = frame.memory;
    const ViewOrders& view = frame.studio.orders.view;
    if (tool_button(frame, "Safe areas", "90 % for graphics and 93 % for action (S)", {.is_on = memory.safe_areas}))
        memory.safe_areas = !memory.safe_areas;
    if (tool_button(frame, "Forces", "Shows what moves the particles (F)", {.is_on = view.forces}))
        toggle_view(frame, &ViewOrders::forces);
    if (tool_button(frame, "Bounds", "Shows the box around all particles of a container (B)", {.is_on = view.boxes}))
        toggle_view(frame, &ViewOrders::boxes);
    if (tool_button(frame, "On air", "Shows the picture as it goes out live: without forces (A)",
                    {.is_on = view.on_air}))
        toggle_view(frame, &ViewOrders::on_air);
    if (frame.studio.scene && !frame.studio.scene->background) choose_backdrop(frame);
    numbers_button(frame);
    if (!view.camera) return ImGui::NewLine();
    if (tool_button(frame, "Scene camera", "Goes back to the camera of the scene (C)")) take_scene_camera(frame);
    const bool has_camera = frame.studio.document->kind == DocumentKind::kScene;
    if (has_camera && tool_button(frame, "Keep this view", "Makes this the camera of the scene")) {
        frame.commands.push_back(camera_keys(*view.camera, frame.studio.scene->camera, memory.pivot_distance));
        take_scene_camera(frame);
    }
    ImGui::NewLine();
}

// The mistakes of the scene, a line for each, without the name of the document's own file.
std::string mistakes_of(const Studio& studio) {
    std::string lines = !studio.scene_error.empty() ? studio.scene_error : studio.report.error;
    const std::string file = studio.document ? scene_file(*studio.document).string() + ":" : "";
    for (size_t at = lines.find(file); !file.empty() && at != std::string::npos; at = lines.find(file, at))
        lines.replace(at, file.size(), "Line ");
    return lines;
}

void show_mistakes(const Studio& studio, ImDrawList* list, const Area& area) {
    const std::string lines = mistakes_of(studio);
    if (lines.empty()) return;
    const bool is_edited = studio.document && !undo_label(*studio.document).empty();
    const std::string title = is_edited
                                  ? "The scene cannot be played like this. Undo takes the last change back."
                                  : "The scene cannot be played. Correct its file in a text editor and open it again.";
    const float pad = ImGui::GetFontSize() * 0.75f, width = area.width - 2 * pad, font = ImGui::GetFontSize();
    const float title_height = ImGui::CalcTextSize(title.c_str(), nullptr, false, width).y + pad / 2;
    const float height = title_height + ImGui::CalcTextSize(lines.c_str(), nullptr, false, width).y;
    const ImVec2 low{area.x + pad, area.y + pad};
    list->AddRectFilled({area.x, area.y}, {area.x + area.width, low.y + height + pad}, IM_COL32(52, 26, 26, 240), 4.0f);
    list->AddText(ImGui::GetFont(), font, low, kMistake, title.c_str(), nullptr, width);
    list->AddText(ImGui::GetFont(), font, {low.x, low.y + title_height}, ImGui::GetColorU32(ImGuiCol_Text),
                  lines.c_str(), nullptr, width);
}

}  // namespace

stage::Result<stage::Done> follow_frame(ShownPictures& pictures, const Studio& studio) {
    const auto& drawn = studio.report.drawn;
    if (drawn == nullptr || drawn == pictures.in_frame) return stage::Done{};
    pictures.in_frame = drawn;
    return stage::replace_texture(pictures.frame, drawn->picture);
}

void picture_panel(PanelFrame& frame, ShownPictures& pictures, const Area& area, bool bare) {
    ImGui::PushStyleColor(ImGuiCol_WindowBg, bare ? IM_COL32(0, 0, 0, 255) : kWell);
    if (bare) ImGui::PushStyleVar(ImGuiStyleVar_WindowPadding, {0, 0});
    begin_panel("Picture", area, false);
    const bool has_scene = frame.studio.scene != nullptr;
    if (!bare && has_scene) picture_tools(frame);
    const ImVec2 start = ImGui::GetCursorScreenPos(), size = ImGui::GetContentRegionAvail();
    if (has_scene && size.x >= 1 && size.y >= 1) {
        ImGui::InvisibleButton("picture", size, ImGuiButtonFlags_MouseButtonLeft | ImGuiButtonFlags_MouseButtonMiddle);
        mark(frame.targets, "picture");
        const Area shown = fit({start.x, start.y, size.x, size.y}, frame.studio.scene->size);
        ImDrawList* list = ImGui::GetWindowDrawList();
        follow_backdrop(frame.memory, pictures);
        draw_backdrop(frame, pictures, list, shown);
        if (pictures.frame.number() != 0)
            list->AddImage(id_of(pictures.frame), {shown.x, shown.y}, {shown.x + shown.width, shown.y + shown.height},
                           {0, 1}, {1, 0});
        if (frame.memory.safe_areas && !bare) draw_safe_areas(list, shown);
        if (pictures.in_frame && !bare) {
            list->PushClipRect({shown.x, shown.y}, {shown.x + shown.width, shown.y + shown.height}, true);
            draw_boxes(*pictures.in_frame, list, shown);
            list->PopClipRect();
        }
        show_mistakes(frame.studio, list, {start.x, start.y, size.x, size.y});
        move_camera(frame, shown);
    } else if (!frame.studio.scene_error.empty()) {
        show_mistakes(frame.studio, ImGui::GetWindowDrawList(), {start.x, start.y, size.x, size.y});
    }
    ImGui::End();
    if (bare) ImGui::PopStyleVar();
    ImGui::PopStyleColor();
}

}  // namespace tovu
