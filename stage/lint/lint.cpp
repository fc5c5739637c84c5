#include "lint.h"

#include <algorithm>

#include "linted.h"
#include "stage/scenefile/messages.h"

namespace stage {

namespace {

// Whether a container with another plug-in names this one.
bool is_attached(const BuiltScene& built, size_t container) {
    const std::string& name = built.description.containers[container].name;
    for (size_t other = 0; other < built.plugins.size(); ++other) {
        if (built.plugins[other] < 0 || built.plugins[other] == built.plugins[container]) continue;
        const Plugin& owner = plugin(built.plugins[other]);
        for (const ParameterMoment& moment : parameter_moments(built.description, static_cast<int32_t>(other), owner)) {
            for (const ParameterInfo& parameter : owner.parameters)
                if (parameter.kind == ParameterKind::kContainer &&
                    text_of(moment.values[static_cast<size_t>(parameter.index)]) == name)
                    return true;
        }
    }
    return false;
}

}  // namespace

std::vector<std::string> lint_scene(const BuiltScene& built) {
    std::vector<std::string> lines;
    for (size_t i = 0; i < built.plugins.size(); ++i) {
        if (built.plugins[i] < 0) continue;
        const Plugin& owner = plugin(built.plugins[i]);
        const LintedInstance linted{
            built,
            i,
            owner,
            built.notes.at(built.plugins[i]),
            parameter_moments(built.description, static_cast<int32_t>(i), owner),
            is_attached(built, i),
        };
        for (const auto rule : {lint_births, lint_images, lint_outlines, lint_values, lint_drawing})
            rule(linted, lines);
    }
    return without_repeats(std::move(lines));  // a rule finds a surprise again at each later moment
}

}  // namespace stage
