// A field for a name that is typed or chosen from a list.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "panels.h"

namespace tovu {

struct NameChoice {
    std::string from;  // origin: "scene", or the folder of a built-in image
    std::string name;

    auto operator<=>(const NameChoice&) const = default;
};

/// The images of the scene, then the built-in ones.
std::vector<NameChoice> images_to_choose(const stage::SceneDescription& scene);

/// A text field and the button of a list, `width` pixels together. target: for scripts, prefix of the names of the
/// list's entries, as in "parameter.wind_image.rise". Returns a name that was typed or chosen.
std::optional<std::string> name_field(Targets& targets, const std::string& target, const std::string& text, float width,
                                      const std::function<std::vector<NameChoice>()>& choices);

}  // namespace tovu
