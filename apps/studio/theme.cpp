#include "theme.h"

#include <cmath>
#include <filesystem>
#include <string>

namespace tovu {

namespace {

constexpr const char* kFontFile = "/usr/share/fonts/truetype/dejavu/DejaVuSans.ttf";
constexpr const char* kHeadingFontFile = "/usr/share/fonts/truetype/dejavu/DejaVuSans-Bold.ttf";

// The letters and symbols of labels.
constexpr ImWchar kGlyphs[] = {0x20,   0x17f,  0x2010, 0x2030, 0x2190, 0x21ff, 0x2200,
                               0x22ff, 0x25a0, 0x25ff, 0x2713, 0x2713, 0};

ImVec4 rgb(unsigned int hex, float alpha = 1.0f) {
    return {static_cast<float>(hex >> 16 & 255) / 255.0f, static_cast<float>(hex >> 8 & 255) / 255.0f,
            static_cast<float>(hex & 255) / 255.0f, alpha};
}

void set_colors(ImGuiStyle& style) {
    ImGui::StyleColorsDark(&style);
    ImVec4* colors = style.Colors;
    colors[ImGuiCol_Text] = rgb(0xe4e7ec);
    colors[ImGuiCol_TextDisabled] = rgb(0x8a93a1);
    colors[ImGuiCol_WindowBg] = rgb(0x1b1e24);
    colors[ImGuiCol_ChildBg] = rgb(0x1b1e24);
    colors[ImGuiCol_PopupBg] = rgb(0x1f232a);
    colors[ImGuiCol_TitleBg] = colors[ImGuiCol_TitleBgActive] = rgb(0x2b313b);
    colors[ImGuiCol_Border] = rgb(0x434c5a);
    colors[ImGuiCol_FrameBg] = rgb(0x2e343f);
    colors[ImGuiCol_FrameBgHovered] = rgb(0x39414e);
    colors[ImGuiCol_FrameBgActive] = rgb(0x404a5a);
    colors[ImGuiCol_Button] = rgb(0x323945);
    colors[ImGuiCol_ButtonHovered] = rgb(0x414b5b);
    colors[ImGuiCol_ButtonActive] = rgb(0x3f78b5);
    colors[ImGuiCol_Header] = rgb(0x2b313b);
    colors[ImGuiCol_HeaderHovered] = rgb(0x38414e);
    colors[ImGuiCol_HeaderActive] = rgb(0x3f78b5);
    colors[ImGuiCol_PlotHistogram] = rgb(0x35608c);
    colors[ImGuiCol_CheckMark] = rgb(0x6cb2f2);
    colors[ImGuiCol_SliderGrab] = rgb(0x6cb2f2);
    colors[ImGuiCol_SliderGrabActive] = rgb(0x8cc6ff);
    colors[ImGuiCol_Separator] = rgb(0x343b46);
    colors[ImGuiCol_Tab] = rgb(0x252a32);
    colors[ImGuiCol_TabHovered] = rgb(0x414b5b);
    colors[ImGuiCol_TabActive] = rgb(0x35608c);
    colors[ImGuiCol_TabUnfocused] = rgb(0x252a32);
    colors[ImGuiCol_TabUnfocusedActive] = rgb(0x35608c);
    colors[ImGuiCol_NavHighlight] = rgb(0x8cc6ff);
    colors[ImGuiCol_TextSelectedBg] = rgb(0x3f78b5, 0.6f);
    colors[ImGuiCol_ModalWindowDimBg] = rgb(0x000000, 0.55f);
}

}  // namespace

stage::Result<stage::Done> apply_theme(float text_pixels) {
    ImGuiIO& io = ImGui::GetIO();
    std::error_code ignored;
    for (const char* file : {kFontFile, kHeadingFontFile})
        if (!std::filesystem::exists(file, ignored))
            return stage::Error{std::string(file) + ": no such font file; the package fonts-dejavu-core has it"};
    io.Fonts->Clear();
    io.Fonts->AddFontFromFileTTF(kFontFile, text_pixels, nullptr, kGlyphs);
    io.Fonts->AddFontFromFileTTF(kHeadingFontFile, std::floor(text_pixels * 1.2f));
    const float unit = text_pixels / 16.0f;
    ImGuiStyle style;
    set_colors(style);
    style.WindowPadding = {10, 10};
    style.FramePadding = {7, 4};
    style.ItemSpacing = {8, 6};
    style.ItemInnerSpacing = {6, 5};
    style.ScrollbarSize = 12;
    style.GrabMinSize = 10;
    style.WindowRounding = style.ChildRounding = style.FrameRounding = style.PopupRounding = style.GrabRounding =
        style.TabRounding = 4;
    style.WindowTitleAlign = {0.5f, 0.5f};
    style.ScaleAllSizes(unit);
    style.WindowMinSize = {1, 1};  // pixels, ImGui's minimum; ScaleAllSizes may have changed it
    ImGui::GetStyle() = style;
    return stage::Done{};
}

ImFont* heading_font() {
    return ImGui::GetIO().Fonts->Fonts.back();
}

}  // namespace tovu
