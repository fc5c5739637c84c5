#include "reference_page.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <cctype>
#include <cmath>
#include <numbers>

namespace tovu {

using stage::ParameterInfo;
using stage::ParameterNotes;

namespace {

// The anchor that GitHub gives a heading.
std::string anchor(std::string heading) {
    for (char& letter : heading)
        letter = letter == ' ' ? '-' : static_cast<char>(std::tolower(static_cast<unsigned char>(letter)));
    return heading;
}

// States the size of the view of the default camera.
std::string view_text() {
    const stage::CameraDescription camera;
    const stage::SceneDescription scene;
    const double distance = static_cast<double>(camera.position[2]);
    const double height =
        2.0 * distance * std::tan(static_cast<double>(camera.field_of_view) * std::numbers::pi / 360.0);
    const double width = height * scene.size[0] / scene.size[1];
    return fmt::format(
        "- The picture is 2 × distance × tan(`field_of_view` / 2) units high: from the default camera, {:g} units "
        "away, "
        "{:.0f} units high and {:.0f} wide at {} x {} pixels.\n",
        distance, height, width, scene.size[0], scene.size[1]);
}

std::string contents(const std::vector<ParameterGroup>& groups) {
    std::string text;
    for (const ParameterGroup& group : groups) {
        std::vector<std::string> links;
        for (const ParameterInfo* parameter : group.parameters)
            links.push_back(fmt::format("[{0}](#{0})", parameter->name));
        text += fmt::format("- [{}](#{}): {}\n", group.name, anchor(group.name), fmt::join(links, ", "));
    }
    return text;
}

std::string strip_text(const ParameterStrip& strip, const std::string& pictures) {
    std::vector<std::string> values, others;
    for (const stage::ParameterValue& value : strip.notes.picture->values)
        values.push_back(fmt::format("`{}`", value_text(value)));
    for (const stage::ParameterSetting& setting : strip.notes.picture->with)
        others.push_back(fmt::format("`{} = {}`", setting.name, value_text(setting.value)));
    return fmt::format("\n![{0}: {1}]({2}/{0}.jpg)\n\n{3}{4}{5}. *{6}*\n", strip.notes.name, fmt::join(values, ", "),
                       pictures, fmt::join(values, " · "), others.empty() ? "" : ", with ", fmt::join(others, ", "),
                       strip.purpose);
}

std::string parameter_text(const NotedPlugin& noted, const ParameterInfo& parameter,
                           const std::vector<ParameterStrip>& strips, const std::string& pictures) {
    std::string text = fmt::format("\n### {}\n\n**{}.** ", parameter.name, parameter.label);
    if (const ParameterNotes* notes = find_notes(noted.notes, parameter.name)) {
        text += notes->sentence;
        if (!notes->more.empty()) text += ' ' + notes->more;
    }
    text += "\n\n| | |\n|---|---|\n";
    for (const auto& [name, fact] : parameter_facts(noted, parameter)) text += fmt::format("| {} | {} |\n", name, fact);
    const auto strip = std::find_if(strips.begin(), strips.end(),
                                    [&](const ParameterStrip& one) { return one.notes.name == parameter.name; });
    return strip == strips.end() ? text : text + strip_text(*strip, pictures);
}

}  // namespace

std::string reference_page(const NotedPlugin& noted, const std::vector<ParameterStrip>& strips,
                           const std::string& pictures) {
    const std::vector<ParameterGroup> groups = grouped_parameters(noted);
    std::string text = fmt::format(
        "# Parameters\n\nThe {} parameters of {} in groups. `./tovu params NAME` shows one of them on the command "
        "line.\n"
        "`./tovu docs` makes this page and its pictures from `{}.toml`, the file beside the plug-in.\n\n{}"
        "\n## What nobody would guess\n\n",
        noted.plugin.parameters.size(), noted.plugin.name, noted.plugin.name, contents(groups));
    for (const std::string& fact : noted.notes.facts) text += fmt::format("- {}\n", fact);
    text += view_text();
    for (const ParameterGroup& group : groups) {
        text += fmt::format("\n## {}\n", group.name);
        for (const ParameterInfo* parameter : group.parameters)
            text += parameter_text(noted, *parameter, strips, pictures);
    }
    return text;
}

}  // namespace tovu
