#include "test_host.h"

#include <algorithm>
#include <stdexcept>

namespace tovu {
namespace {

template <class T>
T value_of(stage::Result<T> result) {
    if (!result) throw std::runtime_error(result.error().message);
    return std::move(*result);
}

std::vector<Particle*> listed(Particle* head) {
    std::vector<Particle*> list;
    const Particle* before = nullptr;
    for (Particle* particle = head; particle; particle = particle->next) {
        if (particle->prev != before) throw std::runtime_error("a record's prev is not the record before it");
        if (list.size() > 2 * kMaxParticles) throw std::runtime_error("a list of records has no end");
        list.push_back(particle);
        before = particle;
    }
    return list;
}

}  // namespace

stage::ParameterValues with(stage::ParameterValues values, const stage::ParameterValues& more) {
    values.insert(values.end(), more.begin(), more.end());
    return values;
}

TestHost::TestHost(uint32_t seed, double period_seconds)
    : stage_(stage::make_stage({seed, period_seconds, true})),
      plugin_(value_of(stage::load_plugin(*stage_, TOVU_SMOKE_PLUGIN))) {}

SmokeHandle TestHost::add_smoke(const stage::ParameterValues& values, const std::string& name,
                                int32_t parent_container) {
    SmokeHandle smoke;
    smoke.container = stage::add_container(*stage_, name, parent_container);
    smoke.geometry = value_of(stage::add_instance(*stage_, smoke.container, plugin_, values));
    return smoke;
}

int32_t TestHost::add_outlines(const std::string& name, std::vector<stage::Mesh> meshes, int32_t parent_container) {
    const int32_t handle = stage::add_container(*stage_, name, parent_container);
    if (stage::set_mesh_geometry(*stage_, handle, std::move(meshes)) == stage::kNoObject)
        throw std::runtime_error("no such parent container");
    return handle;
}

void TestHost::add_instance(int32_t container_handle, const char* library, const stage::ParameterValues& values) {
    const stage::PluginId plugin = value_of(stage::load_plugin(*stage_, library));
    value_of(stage::add_instance(*stage_, container_handle, plugin, values));
}

stage::Container& TestHost::container(SmokeHandle smoke) {
    return container(smoke.container);
}

stage::Container& TestHost::container(int32_t container_handle) {
    stage::Container* found = stage::find_container(*stage_, container_handle);
    if (!found) throw std::runtime_error("no such container");
    return *found;
}

void TestHost::set(SmokeHandle smoke, std::string_view parameter, const stage::ParameterValue& value) {
    set(smoke.container, parameter, value);
}

void TestHost::set(int32_t container_handle, std::string_view parameter, const stage::ParameterValue& value) {
    value_of(stage::set_parameter(*stage_, container_handle, parameter, value));
}

stage::ParameterValue TestHost::get(SmokeHandle smoke, std::string_view parameter) {
    return value_of(stage::get_parameter(*stage_, smoke.container, parameter));
}

void TestHost::press(SmokeHandle smoke, std::string_view button) {
    value_of(stage::press_button(*stage_, smoke.container, button));
}

void TestHost::run_frames(int count) {
    for (int i = 0; i < count; ++i) stage::run_frame(*stage_);
}

void TestHost::render(SmokeHandle smoke, int32_t render_flags, float opacity) {
    if (!stage::call_render(*stage_, smoke.container, render_flags, opacity)) throw std::runtime_error("no such smoke");
}

SmokeInstance& TestHost::block(SmokeHandle smoke) {
    const stage::Instance* instance = stage::instance_of(*stage_, smoke.container);
    if (!instance) throw std::runtime_error("no such smoke");
    return *static_cast<SmokeInstance*>(static_cast<void*>(instance->block));
}

int TestHost::active_count(SmokeHandle smoke) {
    return static_cast<int>(active(smoke).size());
}

std::vector<Particle*> TestHost::active(SmokeHandle smoke) {
    return listed(block(smoke).active_head);
}

std::vector<Particle*> TestHost::inactive(SmokeHandle smoke) {
    return listed(block(smoke).inactive_head);
}

std::vector<Particle*> TestHost::deleted(SmokeHandle smoke) {
    return listed(block(smoke).deleted_head);
}

bool TestHost::has_bounding_box(SmokeHandle smoke) {
    return container(smoke).bounding_box.has_value();
}

stage::BoundingBox TestHost::bounding_box(SmokeHandle smoke) {
    if (!has_bounding_box(smoke)) throw std::runtime_error("no bounding box was sent");
    return *container(smoke).bounding_box;
}

void TestHost::start_recording() {
    stage::start_recording_calls();
}

std::vector<std::string> TestHost::calls() const {
    std::vector<std::string> texts;
    for (const stage::Call& call : stage::recorded_calls()) texts.push_back(stage::to_string(call));
    return texts;
}

std::vector<std::string> TestHost::call_names() const {
    std::vector<std::string> names;
    for (const stage::Call& call : stage::recorded_calls()) names.push_back(call.name);
    return names;
}

int TestHost::count_calls(std::string_view name) const {
    const auto& calls = stage::recorded_calls();
    return static_cast<int>(
        std::count_if(calls.begin(), calls.end(), [&](const stage::Call& call) { return call.name == name; }));
}

std::vector<std::string> TestHost::complaints() const {
    std::vector<std::string> lines;
    for (const stage::Complaint& complaint : stage_->complaints.list) lines.push_back(to_string(complaint));
    return lines;
}

}  // namespace tovu
