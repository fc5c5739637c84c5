#include "curve_samples.h"

#include "stage/plugins/parameters.h"

namespace tovu {

std::map<std::string, std::vector<double>> curve_samples(stage::Stage& stage, int32_t container_handle,
                                                         const stage::PluginNotes& notes) {
    std::map<std::string, std::vector<double>> samples;
    for (const stage::ParameterNotes& parameter : notes.parameters) {
        if (!parameter.sampled || !parameter.curve) continue;
        if (!stage::press_button(stage, container_handle, parameter.sampled->press)) continue;
        const auto written = stage::get_parameter(stage, container_handle, parameter.sampled->text);
        const auto* text = written ? std::get_if<std::string>(&*written) : nullptr;
        if (text == nullptr) continue;
        if (const auto numbers = stage::curve_points(*parameter.curve, *text)) samples[parameter.name] = *numbers;
    }
    return samples;
}

}  // namespace tovu
