#include "audiofile/chunks/ogg_serial.hpp"

#include <array>
#include <cstdint>
#include <fstream>
#include <string>

#include "audiofile/chunks/packed_number.hpp"
#include "foundation/failure.hpp"

namespace vanta {

namespace {

constexpr std::uint32_t kSerial = 1;
constexpr std::size_t kHeaderBytes = 27;
constexpr std::size_t kSerialAt = 14;
constexpr std::size_t kChecksumAt = 22;
constexpr std::size_t kSegmentsAt = 26;

/// The polynomial 0x04C11DB7, highest bit first, from zero and without a final inversion.
constexpr std::array<std::uint32_t, 256> kChecksumTable = [] {
    std::array<std::uint32_t, 256> table{};
    for (std::uint32_t i = 0; i < 256; ++i) {
        std::uint32_t value = i << 24;
        for (int bit = 0; bit < 8; ++bit) value = value & 0x80000000U ? value << 1 ^ 0x04C11DB7U : value << 1;
        table[i] = value;
    }
    return table;
}();

std::uint32_t checksum(const std::string& page) {
    std::uint32_t value = 0;
    for (const char byte : page)
        value = value << 8 ^ kChecksumTable[value >> 24 ^ static_cast<unsigned char>(byte)];
    return value;
}

void append(std::fstream& file, std::string& page, std::size_t count) {
    const std::size_t had = page.size();
    page.resize(had + count);
    if (!file.read(page.data() + had, static_cast<std::streamsize>(count)))
        throw Failure("it ends within a page of Ogg");
}

}  // namespace

void fixOggSerial(const std::filesystem::path& path) {
    std::fstream file(path, std::ios::in | std::ios::out | std::ios::binary);
    while (file && file.peek() != std::fstream::traits_type::eof()) {
        const auto start = file.tellg();
        std::string page;
        append(file, page, kHeaderBytes);
        if (!page.starts_with("OggS")) throw Failure("it has something between its pages of Ogg");
        append(file, page, static_cast<unsigned char>(page[kSegmentsAt]));
        std::size_t content = 0;
        for (std::size_t i = kHeaderBytes; i < page.size(); ++i)
            content += static_cast<unsigned char>(page[i]);
        append(file, page, content);
        page.replace(kSerialAt, 4, packed(kSerial, 4, Endian::Little));
        page.replace(kChecksumAt, 4, 4, '\0');
        page.replace(kChecksumAt, 4, packed(checksum(page), 4, Endian::Little));
        file.seekp(start);
        file.write(page.data(), static_cast<std::streamsize>(page.size()));
        file.seekg(start + static_cast<std::streamoff>(page.size()));
    }
    file.clear(file.rdstate() & ~std::ios::eofbit);
    file.flush();
    if (!file) throw Failure("its serial number cannot be written");
}

}  // namespace vanta
