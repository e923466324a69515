#include "cli/output_file.hpp"

#include <fmt/format.h>

#include <cerrno>
#include <cstdio>
#include <cstring>

#include "foundation/failure.hpp"
#include "foundation/file_replacement.hpp"

namespace vanta {

namespace fs = std::filesystem;

void writeOutput(const fs::path& file, const std::function<void(const fs::path&)>& write) {
    FileReplacement replacement(file);
    write(replacement.temporary());
    if (!replacement.commit())
        throw Failure(
            fmt::format("{}: cannot be replaced: check that its folder is writable", file.string()));
}

void writeOutput(const fs::path& file, std::string_view content) {
    writeOutput(file, [&](const fs::path& temporary) {
        std::FILE* out = std::fopen(temporary.c_str(), "wb");
        const bool written = out && std::fwrite(content.data(), 1, content.size(), out) == content.size();
        const bool closed = out && std::fclose(out) == 0;
        if (!written || !closed)
            throw Failure(fmt::format("{}: cannot be written: {}", file.string(), std::strerror(errno)));
    });
}

}  // namespace vanta
