#include "lint.h"

#include "linted.h"
#include "stage/scenefile/messages.h"

namespace stage {

namespace {

// True if a parameter of another plug-in names this container.
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

// The values over time. Births of a container that is split into variants are summed over its variants.
std::vector<ParameterMoment> whole_moments(const BuiltScene& built, size_t container, const Plugin& owner,
                                           const PluginNotes& notes) {
    const auto first = static_cast<int32_t>(container);
    std::vector<ParameterMoment> moments = parameter_moments(built.description, first, owner);
    for (int32_t i = 1; i < built.description.containers[container].variants; ++i) {
        const std::vector<ParameterMoment> others = parameter_moments(built.description, first + i, owner);
        for (const std::string& shared : {notes.births->rate, notes.births->number}) {
            const auto index = static_cast<size_t>(find_parameter(owner, shared)->index);
            for (size_t k = 0; k < moments.size(); ++k)
                moments[k].values[index] = number_of(moments[k].values[index]) + number_of(others[k].values[index]);
        }
    }
    return moments;
}

}  // namespace

std::vector<std::string> lint_scene(const BuiltScene& built) {
    std::vector<LintedInstance> instances;
    for (size_t i = 0; i < built.plugins.size(); ++i) {
        if (built.plugins[i] < 0 || built.description.containers[i].variants == 0) continue;
        const Plugin& owner = plugin(built.plugins[i]);
        const PluginNotes& notes = built.notes.at(built.plugins[i]);
        instances.push_back({built, i, owner, notes, whole_moments(built, i, owner, notes), is_attached(built, i)});
    }
    std::vector<std::string> lines;
    for (const LintedInstance& linted : instances)
        for (const auto rule : {lint_births, lint_images, lint_outlines, lint_values, lint_bits}) rule(linted, lines);
    lint_pixels(instances, lines);
    return without_repeats(std::move(lines));  // a rule reports a surprise for each moment at which it holds
}

}  // namespace stage
