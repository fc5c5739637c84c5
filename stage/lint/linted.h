// The data that the rules of lint check: an instance of a plug-in with its notes and its values over time.
// Internal to this folder.
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

/// The first number of numbers_of, or `otherwise` if no parameter has the role.
double number_of(const LintedInstance& linted, const ParameterMoment& moment, const std::string& role,
                 double otherwise);

/// The value of a parameter that the plug-in has.
const ParameterValue& value_of(const LintedInstance& linted, const ParameterMoment& moment, const std::string& name);

/// The setting that gave the parameter its value, or null for a default.
const ParameterSetting* setting_of(const LintedInstance& linted, const ParameterMoment& moment,
                                   const std::string& name);

/// The place of that setting, or of the container for a default.
const Place& place_of(const LintedInstance& linted, const ParameterMoment& moment, const std::string& name);

/// True if one of the conditions holds, or if there are none.
bool holds(const LintedInstance& linted, const ParameterMoment& moment, const Conditions& conditions);

/// The rules. Each adds a line for each surprise.
void lint_births(const LintedInstance& linted, std::vector<std::string>& lines);
void lint_images(const LintedInstance& linted, std::vector<std::string>& lines);
void lint_outlines(const LintedInstance& linted, std::vector<std::string>& lines);
void lint_values(const LintedInstance& linted, std::vector<std::string>& lines);
void lint_bits(const LintedInstance& linted, std::vector<std::string>& lines);
void lint_pixels(const std::vector<LintedInstance>& instances, std::vector<std::string>& lines);

/// An estimate of the largest number of live particles, at most the size of the pool plus one burst. 0 if the notes do
/// not describe births.
double most_alive(const LintedInstance& linted);

}  // namespace stage
