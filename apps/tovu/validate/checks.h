// The checks: what each is called, what it needs, and the function that runs it.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "elf_file.h"

namespace tovu::validate {

/// What is checked.
struct Subject {
    std::string name;  // of the file, as it was given
    std::string path;  // absolute: a plug-in may change the current folder
    ElfFile file;      // empty where the file is no library
    uint32_t seed = 1;
};

enum class Group { kFile, kLoad, kRegister, kLive, kMemory, kDraw, kExchange, kHostile };
const char* to_string(Group group);

struct Check {
    const char* name;
    const char* does;                // one line for --list
    std::vector<const char*> after;  // checks that must hold first
    void (*run)(const Subject& subject);
    Group group;
    bool ends_by_exit = false;  // its process ends as a host does, with exit()
};

/// All, in the order in which they run.
std::span<const Check> all_checks();

/// For a check that finds while it runs that it does not apply: why not.
void skip(const std::string& reason);

// By group, a file each.
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
void check_by_tour(const Subject& subject);  // what the watch finds while all parameters are tried
void check_dispatch_quiet(const Subject& subject);
void check_consumer_lists(const Subject& subject);
void check_consumer_manners(const Subject& subject);
void check_spawn_answers(const Subject& subject);
void check_host_lies(const Subject& subject);
void check_fuzz_slots(const Subject& subject);

}  // namespace tovu::validate
