#include "container_reader.h"

#include <fmt/format.h>

#include <algorithm>
#include <iterator>
#include <limits>
#include <span>

#include "geometry_reader.h"
#include "look_layers.h"
#include "stage/names.h"

namespace stage {

namespace {

// A container before its parent is resolved, since the parent may follow later in the file.
struct WrittenContainer {
    ContainerDescription container;
    int32_t nested_in = -1;  // index of the enclosing container in the list of written containers
    std::string parent_name;
    Place parent_place;
    const toml::node* children = nullptr;
    const toml::table* table = nullptr;
    const toml::node* layers = nullptr;
    Place look_place;
};

const KeyRow<LightDescription> kLightKeys[] = {
    {"image",
     [](KeyReader& r, const KeyedNode& e, LightDescription& l) {
         read_text(r, e, l.image);
         l.image_place = place_of(r, e.node.source());
     }},
    {"position", [](KeyReader& r, const KeyedNode& e, LightDescription& l) { read_pair(r, e, l.position); }},
    {"size",
     [](KeyReader& r, const KeyedNode& e, LightDescription& l) {
         if (read_pair(r, e, l.size) && !(l.size[0] > 0.0f && l.size[1] > 0.0f))
             report(r, e.node.source(), "size must be [width, height], both above 0");
     }},
};

void read_light(KeyReader& reader, const KeyedNode& entry, WrittenContainer& written) {
    const toml::table* table = read_table(reader, entry);
    if (table == nullptr) return;
    LightDescription light;
    read_keys(reader, *table, "a light", kLightKeys, light);
    for (const char* key : {"image", "size"}) {
        if (!table->contains(key)) report(reader, table->source(), fmt::format("a light needs {}", key));
    }
    written.container.light = light;
}

// Reads a name or an array of names.
void read_textures(KeyReader& reader, const KeyedNode& entry, ContainerDescription& container) {
    container.more_textures.clear();
    const toml::array* array = entry.node.as_array();
    if (array == nullptr) {
        read_text(reader, entry, container.texture);
        return;
    }
    if (array->empty())
        report(reader, entry.node.source(), "texture must be a name or an array of names, not an empty one");
    for (size_t i = 0; i < array->size(); ++i) {
        std::string& name = i == 0 ? container.texture : container.more_textures.emplace_back();
        read_text(reader, {entry.key, *array->get(i)}, name);
    }
}

const KeyRow<WrittenContainer> kContainerKeys[] = {
    {"name",
     [](KeyReader& r, const KeyedNode& e, WrittenContainer& w) {
         read_text(r, e, w.container.name);
         w.container.place = place_of(r, e.node.source());
     }},
    {"parent",
     [](KeyReader& r, const KeyedNode& e, WrittenContainer& w) {
         read_text(r, e, w.parent_name);
         w.parent_place = place_of(r, e.node.source());
         if (w.nested_in >= 0)
             report(r, e.node.source(), "a nested container has its parent already: leave 'parent' out");
     }},
    {"position",
     [](KeyReader& r, const KeyedNode& e, WrittenContainer& w) { read_triple(r, e, w.container.position); }},
    {"rotation",
     [](KeyReader& r, const KeyedNode& e, WrittenContainer& w) { read_triple(r, e, w.container.rotation); }},
    {"scale", [](KeyReader& r, const KeyedNode& e, WrittenContainer& w) { read_triple(r, e, w.container.scale); }},
    {"plugin",
     [](KeyReader& r, const KeyedNode& e, WrittenContainer& w) {
         w.container.has_plugin = read_text(r, e, w.container.plugin);
         w.container.plugin_place = place_of(r, e.node.source());
     }},
    {"parameters",
     [](KeyReader& r, const KeyedNode& e, WrittenContainer& w) {
         w.container.has_plugin = true;
         if (w.container.plugin_place.empty()) w.container.plugin_place = place_of(r, e.node.source());
         read_settings(r, e, w.container.parameters);
     }},
    {"texture",
     [](KeyReader& r, const KeyedNode& e, WrittenContainer& w) {
         read_textures(r, e, w.container);
         w.container.texture_place = place_of(r, e.node.source());
     }},
    {"depth_test",
     [](KeyReader& r, const KeyedNode& e, WrittenContainer& w) { read_flag(r, e, w.container.depth_test); }},
    {"blend",
     [](KeyReader& r, const KeyedNode& e, WrittenContainer& w) {
         size_t choice = 0;
         if (read_choice(r, e, {"alpha", "additive"}, choice)) w.container.blend = static_cast<Blend>(choice);
     }},
    {"opacity",
     [](KeyReader& r, const KeyedNode& e, WrittenContainer& w) { read_number(r, e, 0.0, 1.0, w.container.opacity); }},
    {"pulses", [](KeyReader& r, const KeyedNode& e, WrittenContainer& w) { read_flag(r, e, w.container.pulses); }},
    {"light", read_light},
    {"geometry",
     [](KeyReader& r, const KeyedNode& e, WrittenContainer& w) { read_geometry(r, e, w.container.geometry); }},
    {"look",
     [](KeyReader& r, const KeyedNode& e, WrittenContainer& w) {
         read_text(r, e, w.container.look);
         w.look_place = place_of(r, e.node.source());
     }},
    {"layers", [](KeyReader&, const KeyedNode& e, WrittenContainer& w) { w.layers = &e.node; }},
    {"container", [](KeyReader&, const KeyedNode& e, WrittenContainer& w) { w.children = &e.node; }},
};

// Keys about a container's place in the tree. Layers of a look do not have them.
constexpr std::array<std::string_view, 4> kTreeKeys = {"parent", "look", "layers", "container"};

// Keys of a container with a look that apply to each of its layers. Layers inherit the other keys as children.
constexpr std::array<std::string_view, 5> kLayerWideKeys = {"parameters", "texture", "depth_test", "blend", "light"};

bool is_among(std::span<const std::string_view> keys, std::string_view key) {
    return std::find(keys.begin(), keys.end(), key) != keys.end();
}

template <class Predicate>
std::vector<KeyRow<WrittenContainer>> keys_that(Predicate predicate) {
    std::vector<KeyRow<WrittenContainer>> rows;
    std::copy_if(std::begin(kContainerKeys), std::end(kContainerKeys), std::back_inserter(rows),
                 [predicate](const KeyRow<WrittenContainer>& row) { return predicate(row.key); });
    return rows;
}

// A container with a look has no plug-in of its own. Its layers have, and its parameters apply to them.
void check_look(KeyReader& reader, WrittenContainer& written) {
    if (written.container.look.empty()) {
        if (written.layers != nullptr)
            report(reader, written.layers->source(), "layers changes layers of a look: give the container a look");
        return;
    }
    if (const toml::node* plugin = written.table->get("plugin"))
        report(reader, plugin->source(), "the layers of a look have plug-ins of their own: leave 'plugin' out");
    written.container.has_plugin = false;
    written.container.parameters.clear();
}

void read_written(KeyReader& reader, const KeyedNode& entry, int32_t nested_in,
                  std::vector<WrittenContainer>& written) {
    for (const toml::table* table : read_tables(reader, entry)) {
        WrittenContainer one;
        one.nested_in = nested_in;
        one.container.place = place_of(reader, table->source());
        one.table = table;
        read_keys(reader, *table, "[[container]]", kContainerKeys, one);
        check_look(reader, one);
        if (!table->contains("name"))
            report(reader, table->source(), "a container needs a name, such as name = \"smoke\"");
        if (one.container.has_plugin && one.container.geometry)
            report_at(reader, one.container.geometry->place,
                      fmt::format("container '{}' carries a plug-in already: give the shape a container of its own",
                                  one.container.name));
        written.push_back(one);
        if (one.children != nullptr)
            read_written(reader, {"container", *one.children}, static_cast<int32_t>(written.size()) - 1, written);
    }
}

int32_t index_of(const std::vector<WrittenContainer>& written, const std::string& name) {
    for (size_t i = 0; i < written.size(); ++i) {
        if (written[i].container.name == name) return static_cast<int32_t>(i);
    }
    return -1;
}

void check_names(KeyReader& reader, const std::vector<WrittenContainer>& written) {
    std::vector<std::string> names;
    names.reserve(written.size());
    for (const WrittenContainer& one : written) names.push_back(one.container.name);
    for (size_t i = 0; i < written.size(); ++i) {
        const WrittenContainer& one = written[i];
        if (!one.container.name.empty() && index_of(written, one.container.name) < static_cast<int32_t>(i))
            report_at(reader, one.container.place,
                      fmt::format("there is a container '{}' already: names are used once", one.container.name));
        if (!one.parent_name.empty() && index_of(written, one.parent_name) < 0)
            report_at(reader, one.parent_place,
                      fmt::format("unknown container '{}': {}", one.parent_name, name_hint(one.parent_name, names)));
    }
}

void check_layer_names(KeyReader& reader, const std::vector<ContainerDescription>& containers) {
    for (const ContainerDescription& one : containers) {
        const auto is_taken = [&one](const ContainerDescription& layer) {
            return layer.look_container >= 0 && layer.name == one.name && &layer != &one;
        };
        if (std::any_of(containers.begin(), containers.end(), is_taken))
            report_at(reader, one.place, fmt::format("a look has a layer '{}' already: names are used once", one.name));
    }
}

ParameterValue value_of(int64_t whole) {
    const bool fits = whole >= std::numeric_limits<int>::min() && whole <= std::numeric_limits<int>::max();
    return fits ? ParameterValue(static_cast<int>(whole)) : ParameterValue(static_cast<double>(whole));
}

}  // namespace

bool read_value(KeyReader& reader, const KeyedNode& entry, ParameterValue& out) {
    if (const auto* flag = entry.node.as_boolean())
        out = flag->get();
    else if (const auto* whole = entry.node.as_integer())
        out = value_of(whole->get());
    else if (const auto* number = entry.node.as_floating_point())
        out = number->get();
    else if (const auto* text = entry.node.as_string())
        out = text->get();
    else {
        report(reader, entry.node.source(),
               fmt::format("{} must be a number, true, false or a text, not {}", entry.key, describe(entry.node)));
        return false;
    }
    return true;
}

void read_settings(KeyReader& reader, const KeyedNode& entry, std::vector<ParameterSetting>& settings) {
    const toml::table* table = read_table(reader, entry);
    if (table == nullptr) return;
    for (const auto& [key, node] : entries_as_written(*table)) {
        ParameterSetting setting{std::string(key->str()), false, place_of(reader, node->source())};
        if (read_value(reader, {setting.name.c_str(), *node}, setting.value)) settings.push_back(setting);
    }
}

void read_layer(KeyReader& reader, const toml::table& table, const std::string& section, ContainerDescription& layer) {
    WrittenContainer written;
    written.container = layer;
    read_keys(reader, table, section, keys_that([](std::string_view key) { return !is_among(kTreeKeys, key); }),
              written);
    layer = std::move(written.container);
}

void read_layer_wide_keys(KeyReader& reader, const toml::table& table, ContainerDescription& layer) {
    WrittenContainer written;
    written.container = layer;
    for (const auto& row : keys_that([](std::string_view key) { return is_among(kLayerWideKeys, key); })) {
        if (const toml::node* node = table.get(row.key)) row.read(reader, {row.key, *node}, written);
    }
    layer = std::move(written.container);
}

void read_containers(KeyReader& reader, const KeyedNode& entry, SceneDescription& scene) {
    std::vector<ContainerDescription>& containers = scene.containers;
    std::vector<WrittenContainer> written;
    read_written(reader, entry, -1, written);
    check_names(reader, written);
    std::vector<int32_t> placed(written.size(), -1);  // index among the finished containers
    bool grew = true;
    while (grew) {
        grew = false;
        for (size_t i = 0; i < written.size(); ++i) {
            if (placed[i] >= 0) continue;
            const int32_t named = written[i].parent_name.empty() ? -1 : index_of(written, written[i].parent_name);
            const int32_t parent = written[i].nested_in >= 0 ? written[i].nested_in : named;
            if (parent >= 0 && placed[static_cast<size_t>(parent)] < 0) continue;
            written[i].container.parent = parent < 0 ? -1 : placed[static_cast<size_t>(parent)];
            placed[i] = static_cast<int32_t>(containers.size());
            containers.push_back(written[i].container);
            grew = true;
            if (!written[i].container.look.empty())
                add_look_layers(reader, {written[i].look_place, *written[i].table, written[i].layers}, scene);
        }
    }
    check_layer_names(reader, containers);
    for (size_t i = 0; i < written.size(); ++i) {
        if (placed[i] < 0 && !written[i].parent_name.empty())
            report_at(reader, written[i].parent_place,
                      fmt::format("'{}' cannot be the parent of '{}': the parents form a circle",
                                  written[i].parent_name, written[i].container.name));
    }
}

int32_t read_container_name(KeyReader& reader, const KeyedNode& entry,
                            const std::vector<ContainerDescription>& containers) {
    std::string name;
    if (!read_text(reader, entry, name)) return -1;
    std::vector<std::string> names;
    for (size_t i = 0; i < containers.size(); ++i) {
        if (containers[i].name == name) return static_cast<int32_t>(i);
        names.push_back(containers[i].name);
    }
    report(reader, entry.node.source(), fmt::format("unknown container '{}': {}", name, name_hint(name, names)));
    return -1;
}

void append_container_keys(std::vector<std::string>& keys) {
    for (const std::string& key : key_names(kContainerKeys)) keys.push_back("container." + key);
    for (const std::string& key : key_names(kLightKeys)) keys.push_back("container.light." + key);
    append_geometry_keys(keys);
}

}  // namespace stage
