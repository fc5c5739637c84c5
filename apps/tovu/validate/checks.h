// The list of checks: name, dependencies and function of each.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "elf_file.h"

namespace tovu::validate {

/// The plug-in under test.
struct Subject {
    std::string name;  // the file name as given
    std::string path;  // absolute, since a plug-in may change the current folder
    ElfFile file;      // empty if the file is not a library
    uint32_t seed = 1;
};

enum class Group { kFile, kLoad, kRegister, kLive, kMemory, kDraw, kExchange, kHostile };
const char* to_string(Group group);

struct Check {
    const char* name;
    const char* does;                // one line for --list
    std::vector<const char*> after;  // checks that must pass first
    void (*run)(const Subject& subject);
    Group group;
    bool ends_by_exit = false;  // the process of the check ends with exit(), as a host does
};

/// All checks, in the order in which they run.
std::span<const Check> all_checks();

/// Called by a running check that does not apply to the plug-in. reason: why not.
void skip(const std::string& reason);

// Each group has its own source file.
void check_file_format(const Subject& subject);
void check_file_exports(const Subject& subject);
void check_file_imports(const Subject& subject);
void check_load_init(const Subject& subject);
void check_register_order(const Subject& subject);
void check_register_once(const Subject& subject);
void check_register_values(const Subject& subject);
void check_register_size(const Subject& subject);
void check_life_cycle(const Subject& subject);
void check_life_orders(const Subject& subject);
void check_life_garbage(const Subject& subject);
void check_life_two(const Subject& subject);
void check_block_bounds(const Subject& subject);
void check_block_slots(const Subject& subject);
void check_text_bounds(const Subject& subject);
void check_text_moves(const Subject& subject);
void check_image_moves(const Subject& subject);
void check_heap_bounds(const Subject& subject);
void check_heap_leaks(const Subject& subject);
void check_heap_steady(const Subject& subject);
void check_thread_host(const Subject& subject);
void check_process_state(const Subject& subject);
void check_by_tour(const Subject& subject);  // reports findings of the watch while all parameters are tried
void check_dispatch_quiet(const Subject& subject);
void check_consumer_lists(const Subject& subject);
void check_consumer_manners(const Subject& subject);
void check_spawn_answers(const Subject& subject);
void check_host_lies(const Subject& subject);
void check_fuzz_slots(const Subject& subject);

}  // namespace tovu::validate
