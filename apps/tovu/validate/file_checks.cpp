// Checks of group file, which read the library without running it.
#include <dlfcn.h>
#include <fmt/format.h>
#include <fmt/ranges.h>
#include <link.h>

#include <algorithm>
#include <array>
#include <set>

#include <tovu/host_services.h>
#include "checks.h"
#include "stage/names.h"
#include "watch.h"

namespace tovu::validate {
namespace {

constexpr std::array kEntryPoints = {
    "PLUGIN_INIT",        "PLUGIN_INIT_FUNCTION", "PLUGIN_CLEANUP_FUNCTION", "PLUGIN_CHANGED_CALLBACK",
    "PLUGIN_EXEC_ACTION", "PLUGIN_NEW_GEOM",      "PLUGIN_RENDER_OPENGL",    "PLUGIN_DISPATCHER_CALLBACK"};

bool is_entry_point(const std::string& name) {
    return std::find(kEntryPoints.begin(), kEntryPoints.end(), name) != kEntryPoints.end();
}

bool starts_with_any(const std::string& name, std::initializer_list<const char*> starts) {
    return std::any_of(starts.begin(), starts.end(), [&](const char* start) { return name.rfind(start, 0) == 0; });
}

/// The file of the library that contains this function.
std::string own_library_file() {
    Dl_info info{};
    dladdr(reinterpret_cast<const void*>(&_api__object_valid), &info);
    return info.dli_fname ? info.dli_fname : "";
}

std::vector<std::string> host_functions() {
    std::vector<std::string> names;
    if (const auto library = read_elf(own_library_file()))
        for (const ElfSymbol& symbol : library->exports)
            if (starts_with_any(symbol.name, {"pel", "_api__", "ormixGL_"})) names.push_back(symbol.name);
    return names;
}

std::string folder_of(const std::string& path) {
    const size_t slash = path.rfind('/');
    return slash == std::string::npos ? "." : path.substr(0, slash);
}

/// Loads a library that the plug-in needs, from the same places as the plug-in; null if it is not found.
void* open_needed(const Subject& subject, const std::string& name) {
    for (std::string folders : subject.file.library_folders) {
        const std::string mark = "$ORIGIN";
        for (size_t at = folders.find(mark); at != std::string::npos; at = folders.find(mark))
            folders.replace(at, mark.size(), folder_of(subject.path));
        for (size_t start = 0; start <= folders.size();) {
            const size_t end = std::min(folders.find(':', start), folders.size());
            if (void* library =
                    dlopen((folders.substr(start, end - start) + "/" + name).c_str(), RTLD_LAZY | RTLD_LOCAL))
                return library;
            start = end + 1;
        }
    }
    return dlopen(name.c_str(), RTLD_LAZY | RTLD_LOCAL);
}

void add_exports(void* library, std::set<std::string>& names) {
    link_map* map = nullptr;
    if (dlinfo(library, RTLD_DI_LINKMAP, &map) != 0) return;
    if (const auto file = read_elf(map->l_name))
        for (const ElfSymbol& symbol : file->exports) names.insert(symbol.name);
}

/// The exports of the needed libraries, and handles to look up symbols of the libraries that they need in turn.
struct Provided {
    std::set<std::string> names;
    std::vector<void*> libraries;
};

Provided provided_by_needed(const Subject& subject) {
    Provided provided;
    for (const std::string& name : subject.file.needed) {
        if (name.rfind("libtovu_stage", 0) == 0) {
            fail("file.imports", fmt::format("needs {}, the library of this host", name),
                 "leave host functions undefined: any host provides them");
            continue;
        }
        if (name.rfind("libGL.so", 0) == 0 || name.rfind("libOpenGL.so", 0) == 0)
            found("file.imports", Weight::kWarning, fmt::format("needs {} itself", name),
                  "draw through the ormixGL_ functions, which the host provides");
        void* library = open_needed(subject, name);
        if (!library) {
            const char* reason = dlerror();
            fail("file.imports",
                 fmt::format("needs {}, which is not found ({})", name, reason ? reason : "no reason given"),
                 "install it, or link without it");
            continue;
        }
        provided.libraries.push_back(library);
        add_exports(library, provided.names);
    }
    return provided;
}

bool is_optional(const ElfSymbol& import) {
    return import.is_weak || starts_with_any(import.name, {"__asan_", "__ubsan_", "__tsan_"});
}

void check_import(const ElfSymbol& import, const std::vector<std::string>& host, const Provided& provided) {
    const std::string name = plain_name(import.name);
    if (starts_with_any(import.name, {"pel", "_api__", "ormixGL_"})) {
        return fail("file.imports", fmt::format("imports {}, which is no function of a host", import.name),
                    "the functions of host_services.h and opengl.h: " + stage::name_hint(import.name, host));
    }
    if (starts_with_any(name, {"pelRegister", "_api__", "ormixGL_", "pelEvent"}))
        return fail("file.imports", fmt::format("imports {}, a C++ function", name),
                    "declare host functions extern \"C\", as host_services.h does");
    const bool is_below = std::any_of(provided.libraries.begin(), provided.libraries.end(),
                                      [&](void* library) { return dlsym(library, import.name.c_str()) != nullptr; });
    if (is_below)
        return found("file.imports", Weight::kWarning,
                     fmt::format("imports {} from a library that only one of its own libraries needs", name),
                     "link with that library");
    const bool is_in_process = dlsym(RTLD_DEFAULT, import.name.c_str()) != nullptr;
    fail("file.imports", fmt::format("imports {}, which neither a host nor one of its needed libraries has", name),
         is_in_process
             ? "link with the library that has it (-lm for mathematics): other hosts do not load that by chance"
             : "define it, or link with the library that has it");
}

}  // namespace

void check_file_format(const Subject& subject) {
    const std::string words = wrong_format(subject.path);
    if (!words.empty()) return fail("file.format", words, "a shared library for this machine");
    if (subject.file.needs_executable_stack)
        found("file.format", Weight::kWarning, "it asks for an executable stack", "link with -z noexecstack");
    if (subject.file.has_text_relocations)
        found("file.format", Weight::kWarning, "its code is changed when it is loaded", "compile with -fPIC");
}

void check_file_exports(const Subject& subject) {
    const auto& exports = subject.file.exports;
    for (const char* name : kEntryPoints) {
        const auto same = [name](const ElfSymbol& symbol) { return symbol.name == name; };
        const auto is = std::find_if(exports.begin(), exports.end(), same);
        if (is != exports.end() && is->is_function) continue;
        const bool as_cpp = std::any_of(exports.begin(), exports.end(), [name](const ElfSymbol& symbol) {
            return plain_name(symbol.name).rfind(std::string(name) + "(", 0) == 0;
        });
        const bool is_hidden = std::any_of(subject.file.symbols.begin(), subject.file.symbols.end(), same);
        if (is != exports.end())
            fail("file.exports", fmt::format("{} is no function", name), "a function");
        else
            fail("file.exports", fmt::format("{} is missing", name),
                 as_cpp      ? "extern \"C\": include entry_points.h, which declares it so"
                 : is_hidden ? "visibility: it is there, but hidden"
                             : "all eight entry points, empty ones where there is nothing to do");
    }
    std::vector<std::string> leaked;
    for (const ElfSymbol& symbol : exports)
        if (!is_entry_point(symbol.name)) leaked.push_back(plain_name(symbol.name));
    if (leaked.empty()) return;
    const size_t count = leaked.size();
    std::sort(leaked.begin(), leaked.end());
    leaked.resize(std::min<size_t>(count, 4));
    fail("file.exports",
         fmt::format("exports {} symbol{} more: {}{}", count, count == 1 ? "" : "s", fmt::join(leaked, ", "),
                     count > 4 ? ", …" : ""),
         "the eight entry points alone: hide the rest, as tovu_add_plugin does");
}

void check_file_imports(const Subject& subject) {
    const std::vector<std::string> host = host_functions();
    const Provided provided = provided_by_needed(subject);
    for (const ElfSymbol& import : subject.file.imports) {
        const bool is_host = std::find(host.begin(), host.end(), import.name) != host.end();
        if (!is_host && !is_optional(import) && provided.names.count(import.name) == 0)
            check_import(import, host, provided);
    }
}

}  // namespace tovu::validate
