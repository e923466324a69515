#include "foundation/binary_data.hpp"

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>

#include "foundation/resource.hpp"

namespace vanta {
namespace {

using Word = std::array<char, 4>;

static_assert(std::endian::native == std::endian::little, "runs of values are read and written as they lie");

std::uint32_t fromLittleEndian(const Word& bytes) {
    std::uint32_t value = 0;
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        value |= static_cast<std::uint32_t>(static_cast<unsigned char>(bytes[i])) << (8 * i);
    }
    return value;
}

Word toLittleEndian(std::uint32_t value) {
    Word bytes{};
    for (std::size_t i = 0; i < bytes.size(); ++i) bytes[i] = static_cast<char>(value >> (8 * i));
    return bytes;
}

std::uint32_t readWord(std::istream& stream) {
    Word bytes{};
    return stream.read(bytes.data(), bytes.size()) ? fromLittleEndian(bytes) : 0;
}

void writeWord(std::ostream& stream, const Word& bytes) {
    stream.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
}

bool isDirectory(const std::filesystem::path& path) {
    std::error_code ignored;
    return std::filesystem::is_directory(path, ignored);
}

bool isThere(const std::filesystem::path& path) {
    std::error_code ignored;
    return std::filesystem::exists(path, ignored);
}

}  // namespace

std::string BinaryDataReader::readHeader() {
    Word tag{};
    stream_->read(tag.data(), tag.size());
    const std::uint32_t version = readWord(*stream_);
    if (failed()) return {};
    version_ = static_cast<int>(version);
    return {tag.data(), tag.size()};
}

bool BinaryDataReader::expectHeader(const std::string& tag) {
    const std::string found = readHeader();
    return !failed() && found == tag;
}

int BinaryDataReader::readInt() {
    return static_cast<int>(readWord(*stream_));
}

float BinaryDataReader::readFloat() {
    return std::bit_cast<float>(readWord(*stream_));
}

void BinaryDataReader::readFloats(std::span<float> values) {
    const std::span<std::byte> bytes = std::as_writable_bytes(values);
    stream_->read(reinterpret_cast<char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    const auto whole = static_cast<std::size_t>(stream_->gcount()) / sizeof(float);
    std::fill(values.begin() + static_cast<std::ptrdiff_t>(whole), values.end(), 0.0f);
}

void BinaryDataWriter::writeHeader(const std::string& tag, int version) {
    Word bytes{};
    tag.copy(bytes.data(), bytes.size());
    writeWord(*stream_, bytes);
    writeInt(version);
}

void BinaryDataWriter::writeInt(int value) {
    writeWord(*stream_, toLittleEndian(static_cast<std::uint32_t>(value)));
}

void BinaryDataWriter::writeFloat(float value) {
    writeWord(*stream_, toLittleEndian(std::bit_cast<std::uint32_t>(value)));
}

void BinaryDataWriter::writeFloats(std::span<const float> values) {
    const std::span<const std::byte> bytes = std::as_bytes(values);
    stream_->write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
}

void BinaryDataWriter::skip() {
    stream_->seekp(sizeof(Word), std::ios::cur);
}

bool BinaryDataWriter::flush() {
    stream_->flush();
    return !failed();
}

BinaryFileReader::BinaryFileReader(const std::filesystem::path& path) : file_(path, std::ios::binary) {
    // A directory opens like a file here, and only its reads would fail.
    if (isDirectory(path)) file_.setstate(std::ios::failbit);
    setStream(file_);
}

BinaryFileWriter::BinaryFileWriter(const std::filesystem::path& path) {
    const auto update = isThere(path) && !isDirectory(path) ? std::ios::in : std::ios::openmode{};
    file_.open(path, std::ios::out | std::ios::binary | update);
    setStream(file_);
}

BinaryMemoryReader::SpanBuffer::SpanBuffer(std::span<const std::byte> bytes) {
    // The get area is only ever read; its type knows no const.
    char* begin = const_cast<char*>(reinterpret_cast<const char*>(bytes.data()));
    setg(begin, begin, begin + bytes.size());
}

std::streambuf::pos_type BinaryMemoryReader::SpanBuffer::seekoff(off_type offset, std::ios_base::seekdir from,
                                                                 std::ios_base::openmode which) {
    const off_type size = egptr() - eback();
    if (from == std::ios_base::cur) offset += gptr() - eback();
    if (from == std::ios_base::end) offset += size;
    if (!(which & std::ios_base::in) || offset < 0 || offset > size) return off_type(-1);
    setg(eback(), eback() + offset, egptr());
    return offset;
}

std::streambuf::pos_type BinaryMemoryReader::SpanBuffer::seekpos(pos_type position,
                                                                 std::ios_base::openmode which) {
    return seekoff(position, std::ios_base::beg, which);
}

BinaryMemoryReader::BinaryMemoryReader(std::span<const std::byte> bytes) : buffer_(bytes), source_(&buffer_) {
    setStream(source_);
}

BinaryResourceReader::BinaryResourceReader(std::string_view name)
    : BinaryResourceReader(findResource(name)) {}

BinaryResourceReader::BinaryResourceReader(std::optional<std::span<const std::byte>> found)
    : BinaryMemoryReader(found.value_or(std::span<const std::byte>{})) {
    if (!found) stream().setstate(std::ios::failbit);
}

}  // namespace vanta
