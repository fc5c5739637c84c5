// Containers: the nodes of the scene's tree. Each has a placement, an appearance and at most one geometry.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "handles.h"
#include "stage/stage_export.h"
#include "transform.h"

namespace stage {

struct Stage;

/// Blending of colours. Alpha is always blended with ONE, ONE_MINUS_SRC_ALPHA.
enum class Blend {
    kAlpha,     // SRC_ALPHA, ONE_MINUS_SRC_ALPHA
    kAdditive,  // SRC_ALPHA, ONE
};

/// An image laid over the world's XY plane that scales the colours of what is drawn there.
struct LightMap {
    int32_t image_handle = kNoObject;    // kNoObject: no light map
    std::array<float, 2> position = {};  // centre, world units
    std::array<float, 2> size = {};      // width and height, world units, above 0
};

/// How the container's geometry is drawn.
struct Appearance {
    int32_t texture_handle = kNoObject;  // an image; kNoObject draws without a texture
    Blend blend = Blend::kAlpha;
    bool depth_test = true;  // false neither tests nor writes depth
    LightMap light;
};

struct BoundingBox {
    Vector3 minimum;
    Vector3 maximum;
};

/// Callers may change placement, visible, opacity and appearance. The functions below maintain the other fields.
struct Container {
    int32_t handle = kNoObject;
    std::string name;  // several containers may have the same name
    int32_t parent_handle = kNoObject;
    std::vector<int32_t> child_handles;  // in the order they were added
    int32_t geometry_handle = kNoObject;
    std::optional<BoundingBox> bounding_box;  // in container units; the last one that its plug-in sent

    Placement placement;
    bool visible = true;  // false hides the children too; plug-ins still simulate
    float opacity = 1;    // 0 to 1, multiplied down the tree
    Appearance appearance;
};

/// Adds a container as its parent's last child, or as the last root for kNoObject. Returns its handle; kNoObject when
/// the parent is not a container, or all object numbers are used.
STAGE_EXPORT int32_t add_container(Stage& stage, std::string name, int32_t parent_handle = kNoObject);

/// Destroys the container, its geometry and its children, the newest child first. False if it is not a container, or if
/// an entry point of a plug-in in it or below it is running.
STAGE_EXPORT bool remove_container(Stage& stage, int32_t container_handle);

/// Null for anything but a live container. The pointer stays valid until the container is removed.
STAGE_EXPORT Container* find_container(Stage& stage, int32_t container_handle);
STAGE_EXPORT const Container* find_container(const Stage& stage, int32_t container_handle);

/// The first container of this name in tree order, or kNoObject.
STAGE_EXPORT int32_t find_container_by_name(const Stage& stage, std::string_view name);

/// Every container, parents before children, siblings in the order they were added: the order of drawing.
STAGE_EXPORT std::vector<int32_t> containers_in_tree_order(const Stage& stage);

/// Transforms container coordinates to world coordinates. The identity if it is not a container.
STAGE_EXPORT Matrix world_matrix(const Stage& stage, int32_t container_handle);

/// True if the container and all its parents are visible.
STAGE_EXPORT bool is_shown(const Stage& stage, int32_t container_handle);

/// The product of the opacities of the container and its parents.
STAGE_EXPORT float total_opacity(const Stage& stage, int32_t container_handle);

}  // namespace stage
