#include "bench/compare/symbols.hpp"

#include <cxxabi.h>
#include <dlfcn.h>
#include <elf.h>
#include <link.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <span>
#include <stdexcept>

namespace vanta::bench {

namespace {

struct Free {
    void operator()(void* memory) const { std::free(memory); }
};

std::string readable(const char* mangled) {
    int status = 0;
    const std::unique_ptr<char, Free> name(abi::__cxa_demangle(mangled, nullptr, nullptr, &status));
    return status == 0 ? name.get() : mangled;
}

/// Where the program has been loaded, which its file does not know.
std::uintptr_t loadAddress() {
    std::uintptr_t address = 0;
    // The first that is listed is the program itself.
    dl_iterate_phdr(
        [](dl_phdr_info* info, std::size_t, void* to) {
            *static_cast<std::uintptr_t*>(to) = info->dlpi_addr;
            return 1;
        },
        &address);
    return address;
}

template <typename T>
std::span<const T> section(const std::vector<char>& file, const Elf64_Shdr& header) {
    return {reinterpret_cast<const T*>(file.data() + header.sh_offset), header.sh_size / sizeof(T)};
}

}  // namespace

Symbols::Symbols() {
    std::ifstream stream("/proc/self/exe", std::ios::binary);
    const std::vector<char> file{std::istreambuf_iterator<char>(stream), {}};
    const auto& head = *reinterpret_cast<const Elf64_Ehdr*>(file.data());
    const std::span sections(reinterpret_cast<const Elf64_Shdr*>(file.data() + head.e_shoff), head.e_shnum);
    const auto table = std::ranges::find(sections, Elf64_Word{SHT_SYMTAB}, &Elf64_Shdr::sh_type);
    if (table == sections.end())
        throw std::runtime_error("the program has no names of functions: it is stripped");
    const char* names = file.data() + sections[table->sh_link].sh_offset;
    const std::uintptr_t loaded = loadAddress();
    for (const Elf64_Sym& symbol : section<Elf64_Sym>(file, *table)) {
        if (ELF64_ST_TYPE(symbol.st_info) != STT_FUNC || symbol.st_size == 0) continue;
        const std::uintptr_t begin = loaded + symbol.st_value;
        functions_.push_back({begin, begin + symbol.st_size, names + symbol.st_name});
    }
    std::ranges::sort(functions_, {}, &Function::begin);
}

std::string Symbols::nameOf(std::uintptr_t address) const {
    const auto after = std::ranges::upper_bound(functions_, address, {}, &Function::begin);
    if (after != functions_.begin() && address < std::prev(after)->end)
        return readable(std::prev(after)->name.c_str());
    Dl_info info{};
    if (!dladdr(reinterpret_cast<const void*>(address), &info) || !info.dli_fname) return "unknown";
    return std::filesystem::path(info.dli_fname).filename().string();
}

}  // namespace vanta::bench
