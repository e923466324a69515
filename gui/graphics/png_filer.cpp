#include "gui/graphics/png_filer.hpp"

#include <zlib.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <istream>
#include <limits>
#include <optional>
#include <string_view>
#include <vector>

#include "gui/graphics/bitmap.hpp"
#include "gui/graphics/bitmap_error.hpp"

namespace vanta::gui {
namespace {

using Byte = unsigned char;

constexpr std::array<Byte, 8> kSignature{0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'};
constexpr std::uint32_t kLargestSide = 32767;
/// Deflate makes at most this many bytes of one (a match of 258 bytes in two bits).
constexpr std::int64_t kLargestExpansion = 1032;
/// What files without gAMA were made for, as displays are.
constexpr double kUsualExponent = 1.0101;
constexpr double kDisplayGamma = 1.0;

[[noreturn]] void throwInvalid() {
    throw EBitmap("Invalid PNG image");
}

void readBytes(std::istream& file, void* target, std::size_t count) {
    file.read(static_cast<char*>(target), static_cast<std::streamsize>(count));
    if (!file) throwInvalid();
}

std::uint32_t bigEndian(const Byte* bytes) {
    return static_cast<std::uint32_t>(bytes[0]) << 24 | static_cast<std::uint32_t>(bytes[1]) << 16 |
           static_cast<std::uint32_t>(bytes[2]) << 8 | bytes[3];
}

struct Chunk {
    std::array<char, 4> type{};
    std::uint32_t length = 0;
    std::streamoff dataAt = 0;

    bool is(std::string_view name) const { return std::string_view(type.data(), type.size()) == name; }
    std::streamoff next() const { return dataAt + static_cast<std::streamoff>(length) + 4; }
};

/// The chunk whose header stands at a place of the file, which then stands at its data.
Chunk chunkAt(std::istream& file, std::streamoff at) {
    file.seekg(at);
    std::array<Byte, 8> header;
    readBytes(file, header.data(), header.size());
    Chunk chunk;
    chunk.length = bigEndian(header.data());
    std::memcpy(chunk.type.data(), header.data() + 4, 4);
    chunk.dataAt = at + 8;
    return chunk;
}

struct Header {
    int width = 0;
    int height = 0;
    std::size_t bytesPerPixel = 0;

    std::size_t rowBytes() const { return static_cast<std::size_t>(width) * bytesPerPixel; }
};

Header readHeader(std::istream& file) {
    std::array<Byte, 13> data;
    readBytes(file, data.data(), data.size());
    const std::uint32_t width = bigEndian(data.data());
    const std::uint32_t height = bigEndian(data.data() + 4);
    const int depth = data[8], colorType = data[9], compression = data[10], filter = data[11],
              interlace = data[12];
    const bool isSupported = width > 0 && width <= kLargestSide && height > 0 && height <= kLargestSide &&
                             depth == 8 && (colorType == 2 || colorType == 6) && compression == 0 &&
                             filter == 0 && interlace == 0;
    if (!isSupported) throw EBitmap("Unsupported PNG format");
    return {static_cast<int>(width), static_cast<int>(height), colorType == 6 ? 4u : 3u};
}

/// By how much the file's values have to be raised, as its gAMA says.
double displayExponent(std::istream& file, std::streamoff at) {
    for (Chunk chunk = chunkAt(file, at); !chunk.is("IDAT") && !chunk.is("IEND");
         chunk = chunkAt(file, chunk.next())) {
        if (!chunk.is("gAMA") || chunk.length < 4) continue;
        std::array<Byte, 4> value;
        readBytes(file, value.data(), value.size());
        const std::uint32_t gamma = bigEndian(value.data());
        return gamma > 0 ? 0.45454544 / (gamma * 1e-05) : kUsualExponent;
    }
    return kUsualExponent;
}

using GammaTable = std::array<Byte, 256>;

/// Artwork is of one gamma, so the last table is nearly always the next.
const GammaTable& gammaTable(double exponent) {
    thread_local double builtFor = -1.0;
    thread_local GammaTable table;
    if (std::abs(exponent - builtFor) > std::numeric_limits<float>::epsilon()) {
        for (std::size_t i = 0; i < table.size(); ++i) {
            table[i] = static_cast<Byte>(std::pow(static_cast<double>(i) / 255.0, exponent) * 255.0);
        }
        builtFor = exponent;
    }
    return table;
}

/// The data of all IDAT chunks in a row, inflated piece by piece.
class ImageData {
public:
    ImageData(std::istream& file, const Chunk& first) : file_(file), chunk_(first), left_(first.length) {
        if (inflateInit(&zlib_) != Z_OK) throwInvalid();
    }
    ~ImageData() { inflateEnd(&zlib_); }
    ImageData(const ImageData&) = delete;
    ImageData& operator=(const ImageData&) = delete;

    void read(Byte* target, std::size_t count) {
        zlib_.next_out = target;
        zlib_.avail_out = static_cast<uInt>(count);
        while (zlib_.avail_out > 0) {
            if (zlib_.avail_in == 0) refill();
            const int result = inflate(&zlib_, Z_SYNC_FLUSH);
            const bool isComplete = result == Z_STREAM_END && zlib_.avail_out == 0;
            if (result != Z_OK && !isComplete) throwInvalid();
        }
    }

private:
    void refill() {
        while (left_ == 0) {
            chunk_ = chunkAt(file_, chunk_.next());
            if (!chunk_.is("IDAT")) throwInvalid();
            left_ = chunk_.length;
        }
        const std::size_t count = std::min<std::size_t>(left_, block_.size());
        readBytes(file_, block_.data(), count);
        left_ -= static_cast<std::uint32_t>(count);
        zlib_.next_in = block_.data();
        zlib_.avail_in = static_cast<uInt>(count);
    }

    std::istream& file_;
    Chunk chunk_;
    std::uint32_t left_;
    std::array<Byte, 1024> block_;
    z_stream zlib_{};
};

int paeth(int left, int up, int upLeft) {
    const int estimate = left + up - upLeft;
    const int a = std::abs(estimate - left), b = std::abs(estimate - up), c = std::abs(estimate - upLeft);
    if (a <= b && a <= c) return left;
    return b <= c ? up : upLeft;
}

/// One row of the file, with a pixel of zeros before it that stands for what lies left of the picture.
class Row {
public:
    explicit Row(const Header& header) : step_(header.bytesPerPixel), bytes_(step_ + header.rowBytes()) {}

    Byte* data() { return bytes_.data() + step_; }
    const Byte* data() const { return bytes_.data() + step_; }
    std::size_t size() const { return bytes_.size() - step_; }
    std::size_t step() const { return step_; }
    void swap(Row& other) { bytes_.swap(other.bytes_); }

private:
    std::size_t step_;
    std::vector<Byte> bytes_;
};

/// `predict` computes a byte's expected value from those around it.
template <typename Predict>
void unfilterWith(Row& row, const Row& above, Predict predict) {
    Byte* const bytes = row.data();
    const Byte* const left = bytes - row.step();
    const Byte* const up = above.data();
    const Byte* const upLeft = up - row.step();
    for (std::size_t i = 0; i < row.size(); ++i) {
        bytes[i] = static_cast<Byte>(bytes[i] + predict(left[i], up[i], upLeft[i]));
    }
}

void unfilter(int filter, Row& row, const Row& above) {
    switch (filter) {
        case 1:
            return unfilterWith(row, above, [](int left, int, int) { return left; });
        case 2:
            return unfilterWith(row, above, [](int, int up, int) { return up; });
        case 3:
            return unfilterWith(row, above, [](int left, int up, int) { return (left + up) / 2; });
        case 4:
            return unfilterWith(row, above, paeth);
        default:
            return;
    }
}

/// True if some pixel is not opaque.
bool storeRow(const Row& row, const GammaTable& table, Pixel* target) {
    const Byte* const end = row.data() + row.size();
    bool hasAlpha = false;
    for (const Byte* pixel = row.data(); pixel != end; pixel += row.step()) {
        const Byte opacity = row.step() == 4 ? pixel[3] : Byte{255};
        hasAlpha |= opacity != 255;
        *target++ = toPixel({table[pixel[0]], table[pixel[1]], table[pixel[2]], opacity});
    }
    return hasAlpha;
}

std::int64_t bytesFrom(std::istream& file, std::streamoff at) {
    file.seekg(0, std::ios::end);
    return static_cast<std::int64_t>(file.tellg()) - at;
}

}  // namespace

std::unique_ptr<BitmapFiler> PNGFilerFactory::create(Bitmap& bitmap, std::istream& file) const {
    std::array<Byte, 8> start{};
    file.read(reinterpret_cast<char*>(start.data()), start.size());
    if (!file || start != kSignature) return nullptr;
    return std::make_unique<PNGFiler>(bitmap);
}

void PNGFiler::read(std::istream& file) {
    const std::streamoff start = file.tellg();
    std::array<Byte, 8> signature{};
    file.read(reinterpret_cast<char*>(signature.data()), signature.size());
    if (!file || signature != kSignature) throw EBitmap("Invalid PNG signature");

    const Chunk headerChunk = chunkAt(file, start + 8);
    if (!headerChunk.is("IHDR")) throwInvalid();
    const Header header = readHeader(file);
    const GammaTable& table = gammaTable(displayExponent(file, headerChunk.next()) * kDisplayGamma);

    Chunk chunk = chunkAt(file, headerChunk.next());
    while (!chunk.is("IDAT")) chunk = chunkAt(file, chunk.next());
    // A file too short for the size that it claims gets no memory for it.
    const auto inflated = static_cast<std::int64_t>(header.rowBytes() + 1) * header.height;
    if (inflated / kLargestExpansion > bytesFrom(file, chunk.dataAt)) throwInvalid();
    file.seekg(chunk.dataAt);

    bitmap_.setPixelSize(header.width, header.height);
    ImageData data(file, chunk);
    Row row(header), above(header);
    bool hasAlpha = false;
    for (int y = 0; y < header.height; ++y) {
        Byte filter = 0;
        data.read(&filter, 1);
        data.read(row.data(), row.size());
        unfilter(filter, row, above);
        hasAlpha |= storeRow(row, table, bitmap_.row(y));
        row.swap(above);
    }
    bitmap_.hasAlpha = hasAlpha;
}

}  // namespace vanta::gui
