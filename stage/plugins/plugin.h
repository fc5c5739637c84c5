// Plug-in libraries: loading, and what they registered. A library is loaded once and stays loaded until the process
// ends, since plug-ins have process-wide state; instances belong to a Stage.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "stage/call_log.h"
#include "stage/result.h"
#include "stage/stage_export.h"

namespace stage {

struct Stage;

enum class ParameterKind { kInt, kFloat, kBool, kRadio, kString, kContainer, kImage };

/// "Int", "Float" and so on.
STAGE_EXPORT const char* to_string(ParameterKind kind);

/// A parameter's value as apps and tests handle it: int for Int; double (or int) for Float; bool for Bool; the choice's
/// text or its position (int) for Radio; text for String, Container and Image. Reading gives int, double, bool and text
/// (of a Radio the choice, or the position where it is outside the list).
using ParameterValue = std::variant<int, double, bool, std::string>;

struct ParameterInfo {
    int32_t index = 0;  // position in the order of registration, and of its 32-bit slot
    std::string name;
    std::string label;
    ParameterKind kind = ParameterKind::kInt;
    ParameterValue initial;            // as reading gives it
    double minimum = 0;                // Int and Float
    double maximum = 0;                // Int and Float
    std::vector<std::string> choices;  // Radio
    int32_t columns = 0;               // String: width of the field in characters
    int32_t max_length = 0;            // String, Container, Image: bytes, without the closing NUL
};

/// Longest name of a container or image that a parameter takes, bytes.
constexpr int32_t kMaxObjectNameBytes = 4095;

struct InfoText {
    std::string name;
    std::string text;
};
struct PushButton {
    std::string name;
    std::string label;
    int32_t action = 0;
};
struct ProfilingEvent {
    std::string name;
    int32_t flags = 0;
    int32_t handle = 0;
};

/// The entry points of a loaded library.
struct EntryPoints {
    int32_t (*init)() = nullptr;
    void (*init_function)(void* instance) = nullptr;
    void (*cleanup_function)(void* instance) = nullptr;
    void (*changed_callback)(void* instance, int32_t parameter_index) = nullptr;
    void (*exec_action)(void* instance, int32_t action) = nullptr;
    uint8_t (*new_geom)(void* instance, int32_t unused) = nullptr;
    uint8_t (*render_opengl)(void* instance, int32_t render_flags, float opacity) = nullptr;
    void (*dispatcher_callback)(void* instance, int32_t request, void* data, void* reply) = nullptr;
};

/// A loaded plug-in and all that it registered.
struct Plugin {
    std::string path;  // as it was loaded
    std::string name;
    int32_t type = 0;
    std::vector<ParameterInfo> parameters;  // by index
    std::vector<InfoText> info_texts;
    std::vector<PushButton> buttons;
    std::vector<ProfilingEvent> events;
    int32_t total_size = 0;  // bytes of an instance's block
    bool uses_lod = false;
    bool uses_events = false;
    std::vector<Call> registration_calls;  // calls of registration services in PLUGIN_INIT, in order
    EntryPoints entry_points;
    void* library = nullptr;
};

/// Position in loaded_plugins().
using PluginId = int32_t;

/// Loads a plug-in library and calls its PLUGIN_INIT. A library that is already loaded, also from another path, is not
/// loaded again. Violations of the contract inside PLUGIN_INIT are errors, not complaints. Errors: no library, an entry
/// point missing, PLUGIN_INIT not 0, name, type or size not registered or registered twice, a type other than 1
/// (geometry), a size below four bytes a parameter, parameters with contradictory limits or a name used twice, a
/// plug-in name that another library has. The message names the file and all mistakes, a line each.
STAGE_EXPORT Result<PluginId> load_plugin(Stage& stage, const std::string& path);

/// All loaded plug-ins, in the order of loading. References to elements stay valid.
STAGE_EXPORT const std::vector<std::unique_ptr<Plugin>>& loaded_plugins();
STAGE_EXPORT const Plugin& plugin(PluginId id);

/// Null if the plug-in has no such parameter or button.
STAGE_EXPORT const ParameterInfo* find_parameter(const Plugin& plugin, std::string_view name);
STAGE_EXPORT const PushButton* find_button(const Plugin& plugin, std::string_view name);

}  // namespace stage
