#include "foundation/whole_file.hpp"

#include <fmt/format.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <fstream>

#include "foundation/failure.hpp"

namespace vanta {

std::string readWholeFile(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    std::string content;
    std::array<char, 65536> piece;
    while (file.read(piece.data(), piece.size()) || file.gcount() > 0)
        content.append(piece.data(), static_cast<std::size_t>(file.gcount()));
    // A folder opens like a file; only reading it fails.
    if (!file.eof() || file.bad())
        throw Failure(fmt::format("cannot read {}: {}", path.string(), std::strerror(errno)));
    return content;
}

}  // namespace vanta
