#include "container.h"

#include <algorithm>

#include "stage.h"

namespace stage {
namespace {

void list_below(const Stage& stage, const std::vector<int32_t>& handles, std::vector<int32_t>& list) {
    for (const int32_t handle : handles) {
        list.push_back(handle);
        list_below(stage, stage.containers.at(handle).child_handles, list);
    }
}

bool is_running_below(const Stage& stage, int32_t container_handle) {
    const auto is_below = [&](int32_t handle) {
        for (const Container* c = find_container(stage, handle); c; c = find_container(stage, c->parent_handle))
            if (c->handle == container_handle) return true;
        return false;
    };
    return std::any_of(stage.running.begin(), stage.running.end(),
                       [&](const RunningCall& call) { return is_below(call.container_handle); });
}

void destroy_below(Stage& stage, int32_t container_handle) {
    const std::vector<int32_t> children = find_container(stage, container_handle)->child_handles;
    for (auto child = children.rbegin(); child != children.rend(); ++child) destroy_below(stage, *child);
    remove_geometry(stage, container_handle);
    stage.containers.erase(container_handle);
}

}  // namespace

int32_t add_container(Stage& stage, std::string name, int32_t parent_handle) {
    Container* parent = find_container(stage, parent_handle);
    if (!parent && parent_handle != kNoObject) return kNoObject;
    const int32_t handle = new_handle(stage, ObjectKind::kContainer);
    if (handle == kNoObject) return kNoObject;
    (parent ? parent->child_handles : stage.root_handles).push_back(handle);
    Container& container = stage.containers[handle];
    container.handle = handle;
    container.name = std::move(name);
    container.parent_handle = parent_handle;
    return handle;
}

bool remove_container(Stage& stage, int32_t container_handle) {
    const Container* container = find_container(stage, container_handle);
    if (!container || is_running_below(stage, container_handle)) return false;
    Container* parent = find_container(stage, container->parent_handle);
    std::erase(parent ? parent->child_handles : stage.root_handles, container_handle);
    destroy_below(stage, container_handle);
    return true;
}

const Container* find_container(const Stage& stage, int32_t container_handle) {
    const auto found = stage.containers.find(container_handle);
    return found == stage.containers.end() ? nullptr : &found->second;
}

Container* find_container(Stage& stage, int32_t container_handle) {
    return const_cast<Container*>(find_container(std::as_const(stage), container_handle));
}

int32_t find_container_by_name(const Stage& stage, std::string_view name) {
    for (const int32_t handle : containers_in_tree_order(stage))
        if (stage.containers.at(handle).name == name) return handle;
    return kNoObject;
}

std::vector<int32_t> containers_in_tree_order(const Stage& stage) {
    std::vector<int32_t> list;
    list_below(stage, stage.root_handles, list);
    return list;
}

Matrix world_matrix(const Stage& stage, int32_t container_handle) {
    const Container* container = find_container(stage, container_handle);
    if (!container) return kIdentity;
    const Matrix local = local_matrix(container->placement);
    return container->parent_handle == kNoObject ? local
                                                 : multiply(world_matrix(stage, container->parent_handle), local);
}

bool is_shown(const Stage& stage, int32_t container_handle) {
    const Container* container = find_container(stage, container_handle);
    if (!container || !container->visible) return false;
    return container->parent_handle == kNoObject || is_shown(stage, container->parent_handle);
}

float total_opacity(const Stage& stage, int32_t container_handle) {
    const Container* container = find_container(stage, container_handle);
    return container ? container->opacity * total_opacity(stage, container->parent_handle) : 1.0f;
}

}  // namespace stage
