#include "stage.h"

#include <algorithm>
#include <cstdlib>

namespace stage {
namespace {

Stage* the_current_stage = nullptr;  // global, since services cannot receive it as an argument

}  // namespace

StagePtr make_stage(const StageOptions& options) {
    StagePtr stage(new Stage);
    stage->options = options;
    stage->clock.frame_period_seconds = options.frame_period_seconds;
    stage->camera_handle = make_handle(ObjectKind::kCamera, kCameraNumber);
    if (options.shared_random) std::srand(options.seed);
    make_current(stage.get());
    return stage;
}

void remove_instances(Stage& stage) {
    while (!stage.instance_handles.empty() &&
           remove_geometry(stage, find_geometry(stage, stage.instance_handles.back())->container_handle)) {
    }
}

void DestroyStage::operator()(Stage* stage) const {
    remove_instances(*stage);
    if (the_current_stage == stage) the_current_stage = nullptr;
    delete stage;
}

Stage* current_stage() {
    return the_current_stage;
}

void make_current(Stage* stage) {
    the_current_stage = stage;
}

bool is_running(const Stage& stage, const Instance& instance) {
    return std::any_of(stage.running.begin(), stage.running.end(),
                       [&](const RunningCall& call) { return call.instance == &instance; });
}

bool is_alive(const Stage& stage, int32_t handle) {
    return find_container(stage, handle) || find_geometry(stage, handle) || find_image(stage, handle) ||
           handle == stage.camera_handle || handle == make_handle(ObjectKind::kCameraPosition, kCameraNumber) ||
           handle == make_handle(ObjectKind::kCameraDirection, kCameraNumber);
}

int32_t find_object_by_number(const Stage& stage, int32_t number) {
    if (number < 1 || number > kMaxObjectNumber) return kNoObject;
    for (const ObjectKind kind : {ObjectKind::kContainer, ObjectKind::kGeometry, ObjectKind::kImage}) {
        const int32_t handle = make_handle(kind, number);
        if (is_alive(stage, handle)) return handle;
    }
    return kNoObject;
}

int32_t new_handle(Stage& stage, ObjectKind kind) {
    if (stage.last_number == kMaxObjectNumber) return kNoObject;
    return make_handle(kind, ++stage.last_number);
}

}  // namespace stage
