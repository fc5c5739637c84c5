// What the rules of lint look at: an instance of a plug-in with its notes and its values over time.
// Only for the rules of this folder.
#pragma once

#include <string>
#include <vector>

#include "stage/scenefile/parameter_moments.h"
#include "stage/scenefile/scene_build.h"

namespace stage {

struct LintedInstance {
    const BuiltScene& built;
    size_t container;  // index in the description
    const Plugin& plugin;
    const PluginNotes& notes;
    std::vector<ParameterMoment> moments;
    bool attached;  // another plug-in has a parameter that names this container
};

const ContainerDescription& description_of(const LintedInstance& linted);

/// The parameter with a role of the notes, or null.
const ParameterInfo* with_role(const LintedInstance& linted, const std::string& role);

/// The numbers of all parameters with a role, in the order of the notes.
std::vector<double> numbers_of(const LintedInstance& linted, const ParameterMoment& moment, const std::string& role);

/// The first of them, or `otherwise` where no parameter has the role.
double number_of(const LintedInstance& linted, const ParameterMoment& moment, const std::string& role,
                 double otherwise);

/// The value of a parameter that the plug-in has.
const ParameterValue& value_of(const LintedInstance& linted, const ParameterMoment& moment, const std::string& name);

/// What set the parameter last, or null for a default.
const ParameterSetting* setting_of(const LintedInstance& linted, const ParameterMoment& moment,
                                   const std::string& name);

/// Where the parameter was set, or the container for a default.
const Place& place_of(const LintedInstance& linted, const ParameterMoment& moment, const std::string& name);

/// Whether one of the conditions holds; true for none.
bool holds(const LintedInstance& linted, const ParameterMoment& moment, const Conditions& conditions);

/// The rules. Each adds a line for each surprise.
void lint_births(const LintedInstance& linted, std::vector<std::string>& lines);
void lint_images(const LintedInstance& linted, std::vector<std::string>& lines);
void lint_outlines(const LintedInstance& linted, std::vector<std::string>& lines);
void lint_values(const LintedInstance& linted, std::vector<std::string>& lines);
void lint_bits(const LintedInstance& linted, std::vector<std::string>& lines);
void lint_pixels(const std::vector<LintedInstance>& instances, std::vector<std::string>& lines);

/// About the most particles that are alive at a time, at most the size of the pool and one burst: what is drawn. 0
/// where the notes say nothing about births.
double most_alive(const LintedInstance& linted);

}  // namespace stage
