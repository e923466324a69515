#include "app/text_file.hpp"

#include <fmt/format.h>

#include <cstdio>

#include "app/failure.hpp"

namespace vanta {

void writeText(const std::filesystem::path& file, const std::filesystem::path& name,
               const std::string& text) {
    std::FILE* out = std::fopen(file.c_str(), "wb");
    const bool written = out && std::fwrite(text.data(), 1, text.size(), out) == text.size();
    const bool closed = out && std::fclose(out) == 0;
    if (!written || !closed) throw Failure(fmt::format("{}: cannot be written", name.string()));
}

}  // namespace vanta
