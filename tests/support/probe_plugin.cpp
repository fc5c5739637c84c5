// A plug-in whose actions, correct and wrong ones, are started by tests.
#include "probe_plugin.h"

#include <tovu/entry_points.h>
#include <tovu/host_services.h>

#include <cstdlib>

namespace {

int32_t work_event;

ProbeInstance& probe_at(void* instance) {
    return *static_cast<ProbeInstance*>(instance);
}

char* text_at(uint32_t slot) {
    return reinterpret_cast<char*>(static_cast<uintptr_t>(slot));
}

void draw_numbers(ProbeInstance& probe, int from, int to) {
    for (int i = from; i < to; ++i) probe.random[i] = std::rand();
}

void ask_target(ProbeInstance& probe) {
    draw_numbers(probe, 0, 4);
    int32_t geometry = -1;
    _api__container_get_geometry(_api__get_objectid(text_at(probe.target), "", TOVU_OBJECT_CONTAINER), &geometry);
    int32_t reply = 0;
    probe.last_request = _api__geom_dispatcher(geometry, kProbeRequestDraw, nullptr, &reply) + 2 * reply;
    draw_numbers(probe, 4, 8);
}

}  // namespace

int32_t PLUGIN_INIT() noexcept {
    static constexpr const char* kModes[] = {"Slow", "Fast", nullptr};
    pelRegisterPlugin("Probe");
    pelRegisterPluginType(1);
    pelRegisterParameterInt("count", "Count", 3, -5, 10);
    pelRegisterParameterFloat("amount", "Amount", 0.5f, 0.0f, 999999.9f);
    pelRegisterParameterBool("on", "On", 1);
    pelRegisterParameterRadio("mode", "Mode", 1, kModes);
    pelRegisterParameterString("text", "Text", "hello", 30, kProbeTextLength, 0);
    pelRegisterParameterContainer("target", "Target", "");
    pelRegisterParameterImage("picture", "Picture", "");
    pelRegisterInfoText("info", "A probe");
    pelRegisterPushButton("draw", "Draw", kProbeDraw);
    pelRegisterPushButton("ask", "Ask", kProbeAsk);
    pelRegisterTotalSize(sizeof(ProbeInstance));
    pelRegisterUseLOD(0);
    pelRegisterUseEvents(1);
    work_event = pelRegisterEvent("Work", 0);
    return 0;
}

void PLUGIN_INIT_FUNCTION(void* instance) noexcept {
    ProbeInstance& probe = probe_at(instance);
    probe.geometry = _api__get_objectid_local("GEOM", TOVU_OBJECT_GEOMETRY);
}

void PLUGIN_CLEANUP_FUNCTION(void* instance) noexcept {
    _api__set_geom_changed(probe_at(instance).geometry);  // leaves a trace of the order of cleaning up
}

void PLUGIN_CHANGED_CALLBACK(void* instance, int32_t parameter_index) noexcept {
    probe_at(instance).last_change = parameter_index;
    ++probe_at(instance).changes;
}

void PLUGIN_EXEC_ACTION(void* instance, int32_t action) noexcept {
    ProbeInstance& probe = probe_at(instance);
    if (action == kProbeDraw) draw_numbers(probe, 0, 8);
    if (action == kProbeAsk) ask_target(probe);
    if (action == kProbeWritePastBlock) static_cast<char*>(instance)[sizeof(ProbeInstance)] = 1;
    if (action == kProbeWritePastText) text_at(probe.text)[kProbeTextLength + 1] = 1;
    if (action == kProbeLeaveSectionOpen) pelEventStart(work_event);
    if (action == kProbeEndWithoutStart) pelEventEnd(work_event);
    if (action == kProbeRegisterLate) pelRegisterParameterBool("late", "Late", 0);
}

uint8_t PLUGIN_NEW_GEOM(void* instance, int32_t) noexcept {
    _api__set_geom_changed(probe_at(instance).geometry);
    return 1;
}

uint8_t PLUGIN_RENDER_OPENGL(void*, int32_t, float) noexcept {
    return 1;
}

void PLUGIN_DISPATCHER_CALLBACK(void* instance, int32_t request, void*, void* reply) noexcept {
    if (request != kProbeRequestDraw) return;
    draw_numbers(probe_at(instance), 0, 8);
    *static_cast<int32_t*>(reply) = 1;
}
