// The reference of a plug-in's parameters as a page of Markdown.
#pragma once

#include <string>
#include <vector>

#include "parameter_strip.h"

namespace tovu {

/// The page has sentences, facts and strip of each parameter. Strips are linked as `pictures`/NAME.jpg.
std::string reference_page(const NotedPlugin& noted, const std::vector<ParameterStrip>& strips,
                           const std::string& pictures);

}  // namespace tovu
