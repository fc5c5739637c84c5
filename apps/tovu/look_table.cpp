#include "look_table.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <sstream>

#include "stage/names.h"
#include "stage/scenefile/look_file.h"
#include "stage/scenefile/scene_rate.h"

namespace tovu {

namespace {

using stage::Done;
using stage::Error;
using stage::Result;

std::string text_of(const toml::node& node);

std::string key_text(std::string_view key) {
    const bool is_bare = !key.empty() && std::all_of(key.begin(), key.end(), [](unsigned char c) {
        return std::isalnum(c) != 0 || c == '_' || c == '-';
    });
    return is_bare ? std::string(key) : text_of(toml::value<std::string>(std::string(key)));
}

// The value as TOML on one line.
std::string text_of(const toml::node& node) {
    std::string text;
    if (const toml::table* table = node.as_table()) {
        for (const auto& [key, value] : *table)
            text += fmt::format("{}{} = {}", text.empty() ? "" : ", ", key_text(key.str()), text_of(value));
        return "{ " + text + " }";
    }
    if (const toml::array* array = node.as_array()) {
        for (const toml::node& value : *array) text += (text.empty() ? "" : ", ") + text_of(value);
        return "[" + text + "]";
    }
    if (const auto* number = node.as_floating_point()) return fmt::format("{}", number->get());
    std::ostringstream stream;
    stream << toml::toml_formatter(node,
                                   toml::toml_formatter::default_flags & ~toml::format_flags::allow_literal_strings);
    return stream.str();
}

// Stores the shortest text of a float; a whole number without a fraction.
void put_number(toml::table& table, std::string_view key, double number) {
    const double rounded = std::stod(fmt::format("{:.6g}", number));
    if (rounded == static_cast<double>(static_cast<int64_t>(rounded)))
        table.insert_or_assign(key, static_cast<int64_t>(rounded));
    else
        table.insert_or_assign(key, rounded);
}

bool is_built_in(const std::string& file) {
    return file.find_first_of("./%") == std::string::npos;
}

// An empty path is the current folder.
std::filesystem::path absolute_folder(const std::filesystem::path& folder) {
    std::error_code ignored;
    return std::filesystem::absolute(folder.empty() ? "." : folder, ignored).lexically_normal();
}

void move_file(toml::table& table, const char* key, const std::filesystem::path& from,
               const std::filesystem::path& to) {
    const auto file = table[key].value<std::string>();
    if (!file || is_built_in(*file) || std::filesystem::path(*file).is_absolute()) return;
    const std::filesystem::path moved = (absolute_folder(from) / *file).lexically_normal();
    table.insert_or_assign(key, moved.lexically_relative(absolute_folder(to)).string());
}

toml::array* layers_of(toml::table& look) {
    return look["layer"].as_array();
}

// Finds a container's table by its name, also in nested containers; null if there is none.
const toml::table* find_container_table(const toml::array* containers, const std::string& name) {
    if (containers == nullptr) return nullptr;
    for (const toml::node& node : *containers) {
        const toml::table* table = node.as_table();
        if (table == nullptr) continue;
        if ((*table)["name"].value<std::string>() == name) return table;
        if (const toml::table* nested = find_container_table((*table)["container"].as_array(), name)) return nested;
    }
    return nullptr;
}

// Replaces the keys of `table` by those of `over`; parameters are replaced one by one.
void merge(toml::table& table, const toml::table& over) {
    for (const auto& [key, node] : over) {
        toml::table* parameters = key.str() == "parameters" ? table["parameters"].as_table() : nullptr;
        if (parameters != nullptr && node.is_table())
            merge(*parameters, *node.as_table());
        else
            table.insert_or_assign(key, node);
    }
}

toml::table with_keys(const toml::table& table, std::initializer_list<const char*> keys) {
    toml::table picked;
    for (const char* key : keys) {
        if (const toml::node* node = table.get(key)) picked.insert(key, *node);
    }
    return picked;
}

bool is_default(const toml::node& node, const stage::ParameterInfo& parameter) {
    const stage::ParameterValue& initial = parameter.initial;
    if (const auto number = node.value<double>(); number && node.is_number()) {
        const auto* whole = std::get_if<int>(&initial);
        const auto* real = std::get_if<double>(&initial);
        return (whole != nullptr && *number == *whole) || (real != nullptr && *number == *real);
    }
    if (const auto flag = node.value<bool>()) return initial == stage::ParameterValue(*flag);
    if (const auto text = node.value<std::string>()) return initial == stage::ParameterValue(*text);
    return false;
}

void leave_out_defaults(toml::table& layer, const stage::Plugin& smoke) {
    toml::table* parameters = layer["parameters"].as_table();
    if (parameters == nullptr) return;
    for (const stage::ParameterInfo& parameter : smoke.parameters) {
        const toml::node* node = parameters->get(parameter.name);
        if (node != nullptr && is_default(*node, parameter)) parameters->erase(parameter.name);
    }
}

// Adds the scene's images that the container uses. Error: the container's look has another image of that name.
Result<Done> add_images(toml::table& look, const toml::table& scene, const toml::table& container) {
    const toml::table* images = scene["images"].as_table();
    if (images == nullptr) return Done{};
    const std::string text = text_of(container);
    toml::table named;
    for (const auto& [key, image] : *images) {
        const std::string name = text_of(toml::value<std::string>(std::string(key.str())));
        if (text.find(name) == std::string::npos) continue;
        if (look["images"][key].node() != nullptr)
            return Error{fmt::format("{}:{}: the scene and the look have an image {} each: rename the scene's",
                                     *image.source().path, image.source().begin.line, name)};
        named.insert(key, image);
    }
    if (named.empty()) return Done{};
    if (!look.contains("images")) look.insert("images", toml::table{});
    merge(*look["images"].as_table(), named);
    return Done{};
}

// Values that a nested container inherits. Layers of a look are not nested, so each layer stores them.
struct Nesting {
    int depth = 0;  // 0 for the saved container, whose place is not part of the look
    std::array<double, 3> position{};
    double opacity = 1.0;
};

Nesting nesting_in(const toml::table& container, const Nesting& outer) {
    Nesting nesting{outer.depth + 1, outer.position, outer.opacity * container["opacity"].value_or(1.0)};
    for (size_t axis = 0; axis < 3 && outer.depth > 0; ++axis)
        nesting.position[axis] += container["position"][axis].value_or(0.0);
    return nesting;
}

toml::table layer_of(const toml::table& container, const Nesting& nesting) {
    toml::table layer = container;
    for (const char* key : {"container", "parent"}) layer.erase(key);
    if (nesting.depth == 0)
        for (const char* key : {"position", "rotation", "scale"}) layer.erase(key);
    const Nesting own = nesting_in(container, nesting);
    if (nesting.opacity != 1.0) put_number(layer, "opacity", own.opacity);
    if (nesting.depth > 1)
        layer.insert_or_assign("position", toml::array{own.position[0], own.position[1], own.position[2]});
    return layer;
}

// Appends the container and its nested containers as layers. Errors: one of them has a look of its own, or rotates or
// scales its nested containers.
Result<Done> add_layers(const toml::table& container, const Nesting& nesting, toml::array& layers) {
    const std::string name = text_of(*container.get("name"));
    if (container.contains("look")) return Error{fmt::format("{} has a look of its own: save it alone", name)};
    if (container.contains("parameters") || container.contains("plugin") || container.contains("geometry"))
        layers.push_back(layer_of(container, nesting));
    const toml::array* nested = container["container"].as_array();
    if (nested == nullptr) return Done{};
    if (nesting.depth > 0 && (container.contains("rotation") || container.contains("scale")))
        return Error{
            fmt::format("{} turns or scales the containers nested in it, which layers cannot: write its "
                        "rotation and scale into them",
                        name)};
    for (const toml::node& node : *nested) {
        if (Result<Done> added = add_layers(*node.as_table(), nesting_in(container, nesting), layers); !added)
            return added;
    }
    return Done{};
}

// Error: a layer names a container of the scene that is not a layer.
Result<Done> check_names(const toml::array& layers, const stage::SceneDescription& scene, const stage::Plugin& smoke) {
    const auto is_layer = [&layers](const std::string& name) {
        return std::any_of(layers.begin(), layers.end(), [&name](const toml::node& node) {
            return (*node.as_table())["name"].value<std::string>() == name;
        });
    };
    const auto is_container = [&scene](const std::string& name) {
        return std::any_of(scene.containers.begin(), scene.containers.end(),
                           [&name](const stage::ContainerDescription& one) { return one.name == name; });
    };
    for (const toml::node& layer : layers) {
        const toml::table* parameters = (*layer.as_table())["parameters"].as_table();
        if (parameters == nullptr) continue;
        for (const auto& [key, node] : *parameters) {
            const stage::ParameterInfo* parameter = stage::find_parameter(smoke, key.str());
            if (parameter != nullptr && parameter->kind != stage::ParameterKind::kContainer) continue;
            const auto name = node.value<std::string>();
            if (name && is_container(*name) && !is_layer(*name))
                return Error{
                    fmt::format("{} names the container '{}', which is not saved with it: nest it in the "
                                "container that is saved",
                                key.str(), *name)};
        }
    }
    return Done{};
}

// The look that the container uses, at the scene's rate, with the container's changes.
Result<toml::table> changed_look(const toml::table& container, const stage::SceneDescription& scene,
                                 const std::filesystem::path& folder, const stage::Plugin& smoke,
                                 std::vector<std::string>& warnings) {
    const Result<std::filesystem::path> file =
        stage::find_look_file(*container["look"].value<std::string>(), scene.file.parent_path());
    if (!file) return file.error();
    toml::table look = parsed_file(*file);
    if (Result<Done> done = retime_look(look, *file, scene.frame_rate, smoke, warnings); !done) return done.error();
    move_files(look, file->parent_path(), folder);
    for (toml::node& node : *layers_of(look)) {
        toml::table& layer = *node.as_table();
        if (layer.contains("parameters"))
            merge(layer, with_keys(container, {"parameters", "texture", "blend", "light"}));
        const toml::table* own = container["layers"][*layer["name"].value<std::string>()].as_table();
        if (own != nullptr) merge(layer, *own);
    }
    return look;
}

// Stores the old rate in image sequences without a rate, so that they play at the same speed as before.
void keep_image_rates(toml::table& look, double frame_rate) {
    toml::table* images = look["images"].as_table();
    if (images == nullptr) return;
    for (const auto& [key, file] : flat_values(*images)) {
        if (file.find('%') == std::string::npos) continue;
        toml::table image;
        if (const toml::table* written = images->get(key)->as_table())
            image = *written;
        else
            image.insert("file", *images->get(key));
        if (image.contains("frame_rate")) continue;
        put_number(image, "frame_rate", frame_rate);
        images->insert_or_assign(key, image);
    }
}

}  // namespace

toml::table parsed_file(const std::filesystem::path& file) {
    return toml::parse_file(file.string());
}

void move_files(toml::table& look, const std::filesystem::path& from, const std::filesystem::path& to) {
    if (toml::table* images = look["images"].as_table()) {
        std::vector<std::string> names;
        for (const auto& [key, node] : *images) names.emplace_back(key.str());
        for (const std::string& name : names) {
            toml::table* image = images->get(name)->as_table();
            move_file(image != nullptr ? *image : *images, image != nullptr ? "file" : name.c_str(), from, to);
        }
    }
    if (toml::array* layers = layers_of(look)) {
        for (toml::node& layer : *layers) {
            if (toml::table* geometry = (*layer.as_table())["geometry"].as_table())
                move_file(*geometry, "file", from, to);
        }
    }
}

Result<Done> retime_look(toml::table& look, const std::filesystem::path& file, double frame_rate,
                         const stage::Plugin& smoke, std::vector<std::string>& warnings) {
    const Result<stage::LookDescription> read = stage::load_look_file(file);
    if (!read) return read.error();
    const Result<stage::PluginNotes> notes = stage::read_plugin_notes(smoke);
    if (!notes) return notes.error();
    stage::SceneDescription scene;
    scene.containers = read->layers;
    scene.frame_rate = frame_rate;
    for (size_t i = 0; i < scene.containers.size(); ++i) {
        std::vector<stage::ParameterSetting>& settings = scene.containers[i].parameters;
        const size_t written = settings.size();
        if (!scene.containers[i].has_plugin) continue;
        stage::convert_container_rate(scene, static_cast<int32_t>(i), smoke, *notes, warnings);
        toml::table& layer = *layers_of(look)->get(i)->as_table();
        if (!layer.contains("parameters")) layer.insert("parameters", toml::table{});
        for (size_t k = written; k < settings.size(); ++k)
            put_number(*layer["parameters"].as_table(), settings[k].name, std::get<double>(settings[k].value));
        leave_out_defaults(layer, smoke);
    }
    keep_image_rates(look, read->rate);
    put_number(look, "rate", frame_rate);
    return Done{};
}

Result<toml::table> look_of_container(const stage::SceneDescription& scene, const toml::table& table,
                                      const std::string& container, const stage::Plugin& smoke,
                                      std::vector<std::string>& warnings) {
    const toml::table* found = find_container_table(table["container"].as_array(), container);
    if (found == nullptr) {
        std::vector<std::string> names;
        for (const stage::ContainerDescription& one : scene.containers) {
            if (one.look_container < 0) names.push_back(one.name);
        }
        return Error{fmt::format("{}: unknown container '{}': {}", scene.file.string(), container,
                                 stage::name_hint(container, names))};
    }
    toml::table look;
    if (found->contains("look")) {
        Result<toml::table> changed = changed_look(*found, scene, scene.file.parent_path(), smoke, warnings);
        if (!changed) return changed;
        look = std::move(*changed);
    } else {
        toml::array layers;
        if (const Result<Done> added = add_layers(*found, {}, layers); !added) return added.error();
        look.insert("layer", layers);
    }
    toml::array& layers = *layers_of(look);
    const bool has_smoke = std::any_of(layers.begin(), layers.end(), [](const toml::node& node) {
        return node.as_table()->contains("parameters") || node.as_table()->contains("plugin");
    });
    if (!has_smoke)
        return Error{
            fmt::format("{}: neither '{}' nor a container nested in it carries smoke", scene.file.string(), container)};
    if (const Result<Done> checked = check_names(layers, scene, smoke); !checked)
        return Error{fmt::format("{}: {}", scene.file.string(), checked.error().message)};
    for (toml::node& layer : layers) leave_out_defaults(*layer.as_table(), smoke);
    look.insert_or_assign("purpose", fmt::format("'{}' of {}", container, scene.file.filename().string()));
    put_number(look, "rate", scene.frame_rate);
    if (const Result<Done> added = add_images(look, table, *found); !added) return added.error();
    return look;
}

std::string look_text(const toml::table& look, const stage::Plugin& smoke) {
    std::string text =
        fmt::format("purpose = {}\nrate = {}\n", text_of(*look.get("purpose")), text_of(*look.get("rate")));
    if (const toml::table* images = look["images"].as_table()) {
        text += "\n[images]\n";
        for (const auto& [key, node] : *images) text += fmt::format("{} = {}\n", key_text(key.str()), text_of(node));
    }
    for (const toml::node& node : *look["layer"].as_array()) {
        const toml::table& layer = *node.as_table();
        text += fmt::format("\n[[layer]]\nname = {}\n", text_of(*layer.get("name")));
        for (const auto& [key, value] : layer) {
            if (key.str() != "name" && key.str() != "parameters")
                text += fmt::format("{} = {}\n", key_text(key.str()), text_of(value));
        }
        const toml::table* parameters = layer["parameters"].as_table();
        if (parameters == nullptr) continue;
        text += "[layer.parameters]\n";
        for (const stage::ParameterInfo& parameter : smoke.parameters) {
            if (const toml::node* value = parameters->get(parameter.name))
                text += fmt::format("{} = {}\n", parameter.name, text_of(*value));
        }
        for (const auto& [key, value] : *parameters) {  // for layers with another plug-in
            if (stage::find_parameter(smoke, key.str()) == nullptr)
                text += fmt::format("{} = {}\n", key_text(key.str()), text_of(value));
        }
    }
    return text;
}

std::map<std::string, std::string> flat_values(const toml::table& look) {
    std::map<std::string, std::string> values;
    const auto add = [&values](const std::string& prefix, const toml::table& table, const char* without) {
        for (const auto& [key, node] : table)
            if (key.str() != without) values[prefix + std::string(key.str())] = text_of(node);
    };
    for (const auto& [key, node] : look) {
        if (const toml::array* layers = key.str() == "layer" ? node.as_array() : nullptr) {
            for (const toml::node& one : *layers) {
                const toml::table& layer = *one.as_table();
                const std::string prefix = layer["name"].value_or(std::string()) + ".";
                add(prefix, layer, "parameters");
                if (const toml::table* parameters = layer["parameters"].as_table()) add(prefix, *parameters, "");
            }
        } else if (const toml::table* images = key.str() == "images" ? node.as_table() : nullptr) {
            add("images.", *images, "");
        } else {
            values[std::string(key.str())] = text_of(node);
        }
    }
    return values;
}

}  // namespace tovu
