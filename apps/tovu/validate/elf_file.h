// Reads the symbols and dependencies of a shared library without running it. ELF: System V Application Binary
// Interface, chapters 4 and 5.
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
    uint64_t bytes;    // 0: unknown
    bool is_function;  // false: data
    bool is_weak;
};

struct ElfFile {
    std::vector<std::string> needed;           // libraries, as DT_NEEDED names them
    std::vector<std::string> library_folders;  // DT_RUNPATH or DT_RPATH, unchanged
    std::vector<ElfSymbol> exports;
    std::vector<ElfSymbol> imports;
    std::vector<ElfSymbol> symbols;  // by ascending value; with local ones if the library is not stripped
    bool needs_executable_stack = false;
    bool has_text_relocations = false;
};

/// The reason why this file is not a shared library for this machine, as a sentence without a full stop. Empty if it is
/// one.
std::string wrong_format(const std::string& path);

/// Reads a file whose wrong_format is empty. The error says what is damaged.
stage::Result<ElfFile> read_elf(const std::string& path);

/// The symbol that covers the address, or null.
const ElfSymbol* symbol_at(const ElfFile& file, uint64_t address);

bool imports(const ElfFile& file, std::string_view name);

/// "draw_rim" for "_ZN6spiral8draw_rimE…"; names that are not mangled stay unchanged.
std::string plain_name(const std::string& name);

}  // namespace tovu::validate
