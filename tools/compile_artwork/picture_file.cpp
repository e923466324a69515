#include "tools/compile_artwork/picture_file.hpp"

#include <fmt/format.h>
#include <zlib.h>

#include <cstdint>
#include <stdexcept>

namespace vanta {
namespace {

constexpr std::string_view kSignature = "\x89PNG\r\n\x1a\n";
/// 1 / 2.2 in units of 1 / 100,000.
constexpr std::uint32_t kGamma = 45455;
constexpr std::size_t kHeaderSize = 13;

/// Length, type and check sum around the data of a chunk.
constexpr std::size_t kChunkFrame = 12;

std::uint32_t integerAt(std::string_view bytes, std::size_t offset) {
    std::uint32_t value = 0;
    for (std::size_t i = 0; i < 4; ++i) value = value << 8 | static_cast<unsigned char>(bytes[offset + i]);
    return value;
}

std::string integerBytes(std::uint32_t value) {
    std::string bytes;
    for (int shift = 24; shift >= 0; shift -= 8) bytes += static_cast<char>(value >> shift & 0xFF);
    return bytes;
}

std::string gammaChunk() {
    const std::string body = "gAMA" + integerBytes(kGamma);
    const auto sum = ::crc32(0, reinterpret_cast<const Bytef*>(body.data()), static_cast<uInt>(body.size()));
    return integerBytes(4) + body + integerBytes(static_cast<std::uint32_t>(sum));
}

void checkHeader(std::string_view header, int width, int height) {
    const std::uint32_t w = integerAt(header, 0);
    const std::uint32_t h = integerAt(header, 4);
    const int colourType = header[9];
    if (header[8] != 8 || (colourType != 2 && colourType != 6) || header[12] != 0)
        throw std::runtime_error("must have 8 bits a channel as RGB or RGBA, not interlaced");
    if (w != static_cast<std::uint32_t>(width) || h != static_cast<std::uint32_t>(height))
        throw std::runtime_error(
            fmt::format("is {} x {} pixels, its line in the table makes it {} x {}", w, h, width, height));
    if (w % 4 != 0 || h % 4 != 0)
        throw std::runtime_error(fmt::format("is {} x {} pixels, both must be divisible by 4", w, h));
}

}  // namespace

std::string pictureFile(std::string_view content, int width, int height) {
    if (!content.starts_with(kSignature)) throw std::runtime_error("is not a PNG file");
    std::string result(kSignature);
    std::size_t position = kSignature.size();
    std::string_view type;
    while (type != "IEND") {
        if (content.size() - position < kChunkFrame) throw std::runtime_error("ends within a chunk");
        const std::size_t size = integerAt(content, position);
        if (content.size() - position - kChunkFrame < size) throw std::runtime_error("ends within a chunk");
        const std::string_view chunk = content.substr(position, kChunkFrame + size);
        type = chunk.substr(4, 4);
        if (type == "IHDR") {
            if (size != kHeaderSize) throw std::runtime_error("has a header of another length than 13");
            checkHeader(chunk.substr(8, size), width, height);
            result += std::string(chunk) + gammaChunk();
        } else if (type == "IDAT" || type == "IEND") {
            result += chunk;
        }
        position += chunk.size();
    }
    return result;
}

}  // namespace vanta
