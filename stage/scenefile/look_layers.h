// Looks in a scene: a container with a look has the look's layers as its children.
#pragma once

#include "key_reader.h"

namespace stage {

/// The keys of a container with a look.
struct LookUse {
    const Place& place;           // of the key `look`
    const toml::table& table;     // of the container
    const toml::node* overrides;  // value of its key `layers`, by the layer's name; may be null
};

/// Appends a container for each layer of the last container's look, named CONTAINER.LAYER. Values of the container
/// itself, and then those of its key `layers`, override the look's. The look's images become LOOK.IMAGE. Reports an
/// unknown look or layer, mistakes in the look's file, and names that exist already.
void add_look_layers(KeyReader& reader, const LookUse& use, SceneDescription& scene);

/// Replaces each timeline entry that sets parameters, presses a button or starts a burst of a container with a look,
/// and each track of its parameters, by one copy for each of its layers with a plug-in.
void copy_changes_to_layers(SceneDescription& scene);

}  // namespace stage
