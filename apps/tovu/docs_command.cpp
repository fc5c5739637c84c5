#include "docs_command.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <filesystem>

#include "reference_page.h"
#include "stage/output/jpeg_file.h"
#include "stage/output/whole_file.h"

namespace tovu {

using stage::Done;
using stage::Error;
using stage::Result;

namespace {

constexpr int kQuality = 88;  // JPEG quality, 1 to 100

struct DocsFiles {
    std::filesystem::path page;
    std::filesystem::path pictures;  // folder
    std::filesystem::path digests;
};

std::string digests_text(const std::vector<ParameterStrip>& strips) {
    std::string text = "# Digests of what each picture is made of. ./tovu docs writes them.\n";
    for (const ParameterStrip& strip : strips) text += fmt::format("{} {:016x}\n", strip.notes.name, strip.digest);
    return text;
}

std::filesystem::path picture_file(const DocsFiles& files, const ParameterStrip& strip) {
    return files.pictures / (strip.notes.name + ".jpg");
}

// True if the stored picture was drawn from the current sources.
bool is_up_to_date(const DocsFiles& files, const std::string& stored_digests, const ParameterStrip& strip) {
    const std::string line = fmt::format("\n{} {:016x}\n", strip.notes.name, strip.digest);
    return stored_digests.find(line) != std::string::npos && std::filesystem::exists(picture_file(files, strip));
}

// Files of pictures that no parameter has any more.
std::vector<std::filesystem::path> left_over(const DocsFiles& files, const std::vector<ParameterStrip>& strips) {
    std::vector<std::filesystem::path> left;
    for (const auto& entry : std::filesystem::directory_iterator(files.pictures)) {
        bool wanted = entry.path().extension() != ".jpg";
        for (const ParameterStrip& strip : strips) wanted = wanted || entry.path() == picture_file(files, strip);
        if (!wanted) left.push_back(entry.path());
    }
    return left;
}

Result<Done> check_docs(const DocsFiles& files, const std::string& page, const std::vector<ParameterStrip>& strips) {
    constexpr const char* kFix = "run ./tovu docs";
    std::vector<std::string> errors;
    if (stage::read_whole_file(files.page) != page)
        errors.push_back(fmt::format("{}: is not the page that the notes give: {}", files.page.string(), kFix));
    const std::string stored = stage::read_whole_file(files.digests);
    for (const ParameterStrip& strip : strips)
        if (!is_up_to_date(files, stored, strip))
            errors.push_back(
                fmt::format("{}: was drawn from other sources: {}", picture_file(files, strip).string(), kFix));
    for (const std::filesystem::path& file : left_over(files, strips))
        errors.push_back(fmt::format("{}: no parameter has this picture: {}", file.string(), kFix));
    if (errors.empty()) return Done{};
    return Error{fmt::format("{}", fmt::join(errors, "\n"))};
}

Result<Done> draw_picture(const std::filesystem::path& file, const ParameterStrip& strip, const std::string& plugin) {
    const Result<stage::Picture> picture = draw_strip(strip, plugin);
    return picture ? stage::write_jpeg(file, *picture, kQuality) : Result<Done>(picture.error());
}

}  // namespace

Result<Done> make_docs(const DocsOptions& options, const std::function<void(const std::string& line)>& print) {
    const stage::StagePtr host = stage::make_stage();
    const Result<NotedPlugin> noted = load_noted_plugin(*host, "");
    if (!noted) return noted.error();
    const std::filesystem::path folder = options.folder;
    const DocsFiles files{folder / "parameters.md", folder / "parameters", folder / "parameters" / "digests.txt"};
    const Result<std::vector<ParameterStrip>> strips = parameter_strips(*noted, files.pictures / "scenes");
    if (!strips) return strips.error();
    const std::string page = reference_page(*noted, *strips, files.pictures.filename().string());
    if (options.check) return check_docs(files, page, *strips);
    const std::string stored = options.changed ? stage::read_whole_file(files.digests) : "";
    for (const ParameterStrip& strip : *strips) {
        if (is_up_to_date(files, stored, strip)) continue;
        const std::filesystem::path file = picture_file(files, strip);
        if (Result<Done> drawn = draw_picture(file, strip, noted->plugin.path); !drawn) return drawn;
        print(file.string());
    }
    for (const std::filesystem::path& file : left_over(files, *strips)) std::filesystem::remove(file);
    if (Result<Done> written = stage::write_whole_file(files.digests, digests_text(*strips)); !written) return written;
    print(files.page.string());
    return stage::write_whole_file(files.page, page);
}

}  // namespace tovu
