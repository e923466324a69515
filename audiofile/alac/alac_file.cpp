#include "audiofile/alac/alac_file.hpp"

#include <bit>
#include <cerrno>
#include <cstring>

#include "audiofile/chunks/packed_number.hpp"
#include "foundation/failure.hpp"

namespace vanta {

namespace {

std::string number(std::uint64_t value, std::size_t bytes) {
    return packed(value, bytes, Endian::Big);
}

std::string chunk(const char* name, const std::string& content) {
    return name + number(content.size(), 8) + content;
}

/// Sevens of bits, the highest first; all but the last with the top bit set.
std::string variableNumber(std::uint32_t value) {
    std::string bytes(1, static_cast<char>(value & 0x7F));
    while (value >>= 7) bytes.insert(bytes.begin(), static_cast<char>((value & 0x7F) | 0x80));
    return bytes;
}

/// The code that says how long a word was before it was encoded.
std::uint64_t wordLengthCode(int bits) {
    return bits == 32 ? 4 : bits == 24 ? 3 : bits == 20 ? 2 : 1;
}

}  // namespace

AlacFile::AlacFile(const std::filesystem::path& file, int sampleRate, int channels, int bits)
    : encoder_(channels, bits),
      width_(static_cast<std::size_t>(channels)),
      file_(std::fopen(file.c_str(), "wbx")) {
    if (!file_) throw Failure(std::strerror(errno));
    const auto rate = std::bit_cast<std::uint64_t>(static_cast<double>(sampleRate));
    put("caff" + number(1, 2) + number(0, 2));
    put(chunk("desc", number(rate, 8) + "alac" + number(wordLengthCode(bits), 4) + number(0, 4) +
                          number(AlacEncoder::kPacketFrames, 4) + number(width_, 4) + number(0, 4)));
    put(chunk("kuki", encoder_.cookie(sampleRate)));
    put("data");
    sizeAt_ = std::ftell(file_.get());
    put(number(0, 8) + number(0, 4));
}

void AlacFile::put(const std::string& bytes) {
    if (std::fwrite(bytes.data(), 1, bytes.size(), file_.get()) != bytes.size())
        throw Failure(std::strerror(errno));
}

void AlacFile::write(std::span<const std::int32_t> samples) {
    for (const std::int32_t sample : samples) {
        pending_.push_back(sample);
        if (pending_.size() == AlacEncoder::kPacketFrames * width_) putPacket();
    }
}

void AlacFile::putPacket() {
    const std::string bytes = encoder_.packet(pending_);
    put(bytes);
    packetBytes_.push_back(static_cast<std::uint32_t>(bytes.size()));
    dataBytes_ += bytes.size();
    frames_ += pending_.size() / width_;
    pending_.clear();
}

void AlacFile::finish() {
    if (!pending_.empty()) putPacket();
    const std::uint64_t remainder = packetBytes_.size() * AlacEncoder::kPacketFrames - frames_;
    std::string table =
        number(packetBytes_.size(), 8) + number(frames_, 8) + number(0, 4) + number(remainder, 4);
    for (const std::uint32_t bytes : packetBytes_) table += variableNumber(bytes);
    put(chunk("pakt", table));
    if (std::fseek(file_.get(), sizeAt_, SEEK_SET) != 0) throw Failure(std::strerror(errno));
    put(number(dataBytes_, 8));
    if (std::fclose(file_.release()) != 0) throw Failure(std::strerror(errno));
}

}  // namespace vanta
