// The field for a parameter's value, by the kind of parameter.
#pragma once

#include "panels.h"

namespace tovu {

/// Whether the field is a curve. Curves need the whole width of the panel.
bool is_curve(const ParameterState& parameter);

/// Draws the field, `width` pixels wide. Returns a value that was set by a drag, a click or typing.
std::optional<stage::ParameterValue> value_field(const PanelFrame& frame, const ContainerFacts& container,
                                                 const ParameterState& parameter, float width);

/// A button for each choice, in rows of `width` pixels. The chosen button has the accent colour. target: as for
/// name_field. Returns the choice that was clicked.
std::optional<std::string> choice_buttons(Targets& targets, const std::string& target, const std::string& chosen,
                                          const std::vector<std::string>& choices, float width);

}  // namespace tovu
