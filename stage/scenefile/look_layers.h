// Looks in a scene: a container with a look has the look's layers as its children.
#pragma once

#include "key_reader.h"

namespace stage {

/// What a container with a look says about it.
struct LookUse {
    const Place& place;           // of the look's name
    const toml::table& table;     // of the container
    const toml::node* overrides;  // of its key `layers`, by the layer's name; may be null
};

/// Appends a container for each layer of the last container's look, named CONTAINER.LAYER. Values of the container
/// itself, and then those of its key `layers`, override the look's. The look's images become LOOK.IMAGE. Reports an
/// unknown look or layer, the mistakes in the look's file, and names that are taken.
void add_look_layers(KeyReader& reader, const LookUse& use, SceneDescription& scene);

/// Replaces each timeline entry that sets parameters of a container with a look, or presses its button, and each track
/// of its parameters, by one for each of its layers that carries a plug-in.
void hand_changes_to_layers(SceneDescription& scene);

}  // namespace stage
