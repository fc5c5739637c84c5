#include "elf_file.h"

#include <cxxabi.h>
#include <elf.h>
#include <fmt/format.h>
#include <link.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iterator>
#include <memory>
#include <span>
#include <stdexcept>

namespace tovu::validate {
namespace {

using Bytes = std::vector<char>;
using Header = ElfW(Ehdr);
using Section = ElfW(Shdr);
using Segment = ElfW(Phdr);
using Symbol = ElfW(Sym);
using Dynamic = ElfW(Dyn);

#if defined(__x86_64__)
constexpr int kMachine = EM_X86_64;
#elif defined(__i386__)
constexpr int kMachine = EM_386;
#elif defined(__aarch64__)
constexpr int kMachine = EM_AARCH64;
#else
constexpr int kMachine = EM_NONE;
#endif
constexpr int kClass = sizeof(void*) == 8 ? ELFCLASS64 : ELFCLASS32;

Bytes read_bytes(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

/// `count` items at an offset of the file. Throws std::runtime_error if the file is too short.
template <class Item>
std::vector<Item> items_at(std::span<const char> bytes, uint64_t offset, uint64_t count) {
    if (offset > bytes.size() || count > (bytes.size() - offset) / sizeof(Item))
        throw std::runtime_error(fmt::format("it ends at byte {}, before what it says of itself", bytes.size()));
    std::vector<Item> items(count);
    if (count > 0) std::memcpy(items.data(), bytes.data() + offset, count * sizeof(Item));
    return items;
}

template <class Item>
std::vector<Item> items_of(std::span<const char> bytes, const Section& section) {
    return items_at<Item>(bytes, section.sh_offset, section.sh_size / sizeof(Item));
}

std::string text_at(const std::vector<char>& texts, uint64_t offset) {
    if (offset >= texts.size()) return "";
    return {texts.data() + offset, strnlen(texts.data() + offset, texts.size() - offset)};
}

ElfSymbol symbol_of(const Symbol& symbol, const std::vector<char>& texts) {
    return {text_at(texts, symbol.st_name), symbol.st_value, symbol.st_size,
            ELF64_ST_TYPE(symbol.st_info) == STT_FUNC || ELF64_ST_TYPE(symbol.st_info) == STT_GNU_IFUNC,
            ELF64_ST_BIND(symbol.st_info) == STB_WEAK};
}

/// True for symbols that older linkers add to every library, and for names of versions.
bool is_linkers_own(const Symbol& symbol, const std::string& name) {
    static constexpr const char* kNames[] = {"_init",       "_fini",   "_edata",    "_end",
                                             "__bss_start", "__end__", "_bss_end__"};
    return symbol.st_shndx == SHN_ABS ||
           std::any_of(std::begin(kNames), std::end(kNames), [&](const char* own) { return name == own; });
}

void add_dynamic_symbols(ElfFile& file, const std::vector<Symbol>& symbols, const std::vector<char>& texts) {
    for (const Symbol& symbol : symbols) {
        const ElfSymbol read = symbol_of(symbol, texts);
        const int binding = ELF64_ST_BIND(symbol.st_info);
        const int visibility = ELF64_ST_VISIBILITY(symbol.st_other);
        if (read.name.empty() || binding == STB_LOCAL) continue;
        if (symbol.st_shndx == SHN_UNDEF)
            file.imports.push_back(read);
        else if (visibility != STV_HIDDEN && visibility != STV_INTERNAL && !is_linkers_own(symbol, read.name))
            file.exports.push_back(read);
    }
}

void add_dynamic_entries(ElfFile& file, const std::vector<Dynamic>& entries, const std::vector<char>& texts) {
    for (const Dynamic& entry : entries) {
        if (entry.d_tag == DT_NULL) break;
        if (entry.d_tag == DT_NEEDED) file.needed.push_back(text_at(texts, entry.d_un.d_val));
        if (entry.d_tag == DT_RUNPATH || entry.d_tag == DT_RPATH)
            file.library_folders.push_back(text_at(texts, entry.d_un.d_val));
        if (entry.d_tag == DT_TEXTREL || (entry.d_tag == DT_FLAGS && (entry.d_un.d_val & DF_TEXTREL)))
            file.has_text_relocations = true;
    }
}

void add_section(ElfFile& file, std::span<const char> bytes, const std::vector<Section>& sections,
                 const Section& section) {
    if (section.sh_type != SHT_DYNSYM && section.sh_type != SHT_SYMTAB && section.sh_type != SHT_DYNAMIC) return;
    if (section.sh_link >= sections.size()) throw std::runtime_error("a table of symbols has no names");
    const std::vector<char> texts = items_of<char>(bytes, sections[section.sh_link]);
    if (section.sh_type == SHT_DYNAMIC) return add_dynamic_entries(file, items_of<Dynamic>(bytes, section), texts);
    const std::vector<Symbol> symbols = items_of<Symbol>(bytes, section);
    if (section.sh_type == SHT_DYNSYM) add_dynamic_symbols(file, symbols, texts);
    for (const Symbol& symbol : symbols) {
        const int type = ELF64_ST_TYPE(symbol.st_info);
        if (symbol.st_shndx != SHN_UNDEF && (type == STT_FUNC || type == STT_OBJECT))
            file.symbols.push_back(symbol_of(symbol, texts));
    }
}

ElfFile read_sections(std::span<const char> bytes) {
    const Header header = items_at<Header>(bytes, 0, 1)[0];
    ElfFile file;
    for (const Segment& segment : items_at<Segment>(bytes, header.e_phoff, header.e_phnum))
        if (segment.p_type == PT_GNU_STACK && (segment.p_flags & PF_X)) file.needs_executable_stack = true;
    const std::vector<Section> sections = items_at<Section>(bytes, header.e_shoff, header.e_shnum);
    for (const Section& section : sections) add_section(file, bytes, sections, section);
    std::sort(file.symbols.begin(), file.symbols.end(),
              [](const ElfSymbol& a, const ElfSymbol& b) { return a.value < b.value; });
    return file;
}

std::string foreign_format(std::string_view start) {
    if (start.substr(0, 8) == "!<arch>\n") return "it is a static library; link it with -shared";
    return "it is no ELF file";
}

const char* machine_name(int machine) {
    switch (machine) {
        case EM_386:
            return "i386";
        case EM_X86_64:
            return "x86-64";
        case EM_ARM:
            return "32-bit Arm";
        case EM_AARCH64:
            return "aarch64";
        default:
            return "another machine";
    }
}

}  // namespace

std::string wrong_format(const std::string& path) {
    const Bytes bytes = read_bytes(path);
    const std::string_view start(bytes.data(), std::min<size_t>(bytes.size(), 16));
    if (start.substr(0, SELFMAG) != std::string_view(ELFMAG, SELFMAG)) return foreign_format(start);
    if (bytes.size() < sizeof(Header)) return fmt::format("it ends after {} bytes", bytes.size());
    if (bytes[EI_CLASS] != kClass)
        return fmt::format("it is a {}-bit library; this host takes {} bits", bytes[EI_CLASS] == ELFCLASS64 ? 64 : 32,
                           8 * sizeof(void*));
    Header header;
    std::memcpy(&header, bytes.data(), sizeof header);
    if (header.e_machine != kMachine)
        return fmt::format("it is for {}; this host takes {}", machine_name(header.e_machine), machine_name(kMachine));
    if (header.e_type == ET_REL) return "it is an object file; link it with -shared";
    if (header.e_type != ET_DYN) return "it is a program; link it with -shared";
    const stage::Result<ElfFile> file = read_elf(path);
    if (!file) return file.error().message;
    try {
        for (const Segment& segment : items_at<Segment>(bytes, header.e_phoff, header.e_phnum)) {
            if (segment.p_type == PT_INTERP) return "it is a program; link it with -shared";
            if (segment.p_type == PT_LOAD) items_at<char>(bytes, segment.p_offset, segment.p_filesz);
        }
    } catch (const std::runtime_error& error) {
        return error.what();
    }
    return "";
}

stage::Result<ElfFile> read_elf(const std::string& path) {
    try {
        return read_sections(read_bytes(path));
    } catch (const std::runtime_error& error) {
        return stage::Error{error.what()};
    }
}

const ElfSymbol* symbol_at(const ElfFile& file, uint64_t address) {
    auto next = std::upper_bound(file.symbols.begin(), file.symbols.end(), address,
                                 [](uint64_t wanted, const ElfSymbol& symbol) { return wanted < symbol.value; });
    while (next != file.symbols.begin()) {
        --next;
        if (address - next->value < next->bytes) return &*next;
        if (address - next->value > 0x1000000) break;
    }
    return nullptr;
}

bool imports(const ElfFile& file, std::string_view name) {
    return std::any_of(file.imports.begin(), file.imports.end(),
                       [name](const ElfSymbol& symbol) { return symbol.name == name; });
}

std::string plain_name(const std::string& name) {
    int status = 0;
    const std::unique_ptr<char, decltype(&std::free)> text(abi::__cxa_demangle(name.c_str(), nullptr, nullptr, &status),
                                                           &std::free);
    return status == 0 && text ? text.get() : name;
}

}  // namespace tovu::validate
