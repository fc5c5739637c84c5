#include "font_file.h"

#include <fmt/format.h>
#include <fontconfig/fontconfig.h>

#include <algorithm>
#include <array>
#include <filesystem>
#include <memory>

namespace stage {
namespace {

constexpr const char* kDefaultFamily = "DejaVu Sans";

using Config = std::unique_ptr<FcConfig, decltype(&FcConfigDestroy)>;
using Pattern = std::unique_ptr<FcPattern, decltype(&FcPatternDestroy)>;

bool is_file_name(const std::string& font) {
    constexpr std::array kExtensions = {".ttf", ".otf", ".ttc", ".pfb", ".woff"};
    return font.find('/') != std::string::npos ||
           std::any_of(kExtensions.begin(), kExtensions.end(), [&](auto* end) { return font.ends_with(end); });
}

std::string text_of(FcPattern* pattern, const char* property, int n = 0) {
    FcChar8* text = nullptr;
    if (FcPatternGetString(pattern, property, n, &text) != FcResultMatch) return {};
    return reinterpret_cast<const char*>(text);
}

// fontconfig returns some font for every family, so the family names of the found font are compared with the wanted
// one. Generic names match any font.
bool is_of_family(FcPattern* found, const std::string& family) {
    constexpr std::array kGeneric = {"sans", "sans-serif", "serif", "mono", "monospace"};
    if (std::any_of(kGeneric.begin(), kGeneric.end(), [&](auto* name) { return family == name; })) return true;
    const auto* wanted = reinterpret_cast<const FcChar8*>(family.c_str());
    for (int n = 0;; ++n) {
        const std::string name = text_of(found, FC_FAMILY, n);
        if (name.empty()) return false;
        if (FcStrCmpIgnoreCase(reinterpret_cast<const FcChar8*>(name.c_str()), wanted) == 0) return true;
    }
}

}  // namespace

Result<FontFile> find_font(const std::string& font) {
    if (is_file_name(font)) {
        std::error_code error;
        if (!std::filesystem::is_regular_file(font, error))
            return Error{fmt::format("font {}: there is no such file", font)};
        return FontFile{font, 0};
    }
    const std::string name = font.empty() ? kDefaultFamily : font;
    const Pattern wanted(FcNameParse(reinterpret_cast<const FcChar8*>(name.c_str())), FcPatternDestroy);
    if (!wanted) return Error{fmt::format("font \"{}\": neither a family name nor the path of a font file", font)};
    const std::string family = text_of(wanted.get(), FC_FAMILY);
    // Loaded again for each look-up (some milliseconds), so that new fonts are found and no memory stays allocated.
    const Config config(FcInitLoadConfigAndFonts(), FcConfigDestroy);
    FcConfigSubstitute(config.get(), wanted.get(), FcMatchPattern);
    FcDefaultSubstitute(wanted.get());
    FcResult result = FcResultNoMatch;
    const Pattern found(FcFontMatch(config.get(), wanted.get(), &result), FcPatternDestroy);
    if (!found) return Error{fmt::format("font \"{}\": no font is installed; give the path of a font file", name)};
    if (!is_of_family(found.get(), family))
        return Error{
            fmt::format("font \"{}\" is not installed; the nearest is \"{}\"; give a family that fc-list shows or "
                        "the path of a font file",
                        name, text_of(found.get(), FC_FAMILY))};
    FontFile file{text_of(found.get(), FC_FILE), 0};
    FcPatternGetInteger(found.get(), FC_INDEX, 0, &file.face_index);
    return file;
}

}  // namespace stage
