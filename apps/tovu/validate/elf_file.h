// What a shared library's file says about itself, read without running it. ELF: System V Application Binary Interface,
// chapters 4 and 5.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "stage/result.h"

namespace tovu::validate {

struct ElfSymbol {
    std::string name;
    uint64_t value;    // address from the start of the library
    uint64_t bytes;    // 0 where it is not known
    bool is_function;  // or it is data
    bool is_weak;
};

struct ElfFile {
    std::vector<std::string> needed;           // libraries, as DT_NEEDED names them
    std::vector<std::string> library_folders;  // DT_RUNPATH or DT_RPATH, as they stand there
    std::vector<ElfSymbol> exports;
    std::vector<ElfSymbol> imports;
    std::vector<ElfSymbol> symbols;  // local ones included, where the library was not stripped; by ascending value
    bool needs_executable_stack = false;
    bool has_text_relocations = false;
};

/// What keeps this file from being a shared library of this machine, as a sentence without its full stop; empty when it
/// is one.
std::string wrong_format(const std::string& path);

/// Reads a file for which wrong_format is empty. The error says what is damaged.
stage::Result<ElfFile> read_elf(const std::string& path);

/// The symbol that covers the address, or null.
const ElfSymbol* symbol_at(const ElfFile& file, uint64_t address);

bool imports(const ElfFile& file, std::string_view name);

/// "draw_rim" for "_ZN6spiral8draw_rimE…"; other names as they are.
std::string plain_name(const std::string& name);

}  // namespace tovu::validate
