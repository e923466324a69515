#include "limiter/styles/style_record.hpp"

#include <fmt/format.h>

#include <bit>
#include <stdexcept>

#include "limiter/styles/style_error.hpp"

namespace vanta {
namespace {

constexpr std::size_t kHeaderSize = 12;

void append(std::vector<std::byte>& bytes, std::uint32_t word) {
    for (int shift = 0; shift < 32; shift += 8) bytes.push_back(static_cast<std::byte>(word >> shift));
}

std::uint32_t wordAt(std::span<const std::byte> bytes, std::size_t offset) {
    std::uint32_t word = 0;
    for (std::size_t i = 4; i-- > 0;) word = word << 8 | std::to_integer<std::uint32_t>(bytes[offset + i]);
    return word;
}

}  // namespace

std::vector<std::byte> writeStyleRecord(std::span<const float> values) {
    if (values.size() != kStyleValueCount) {
        throw std::invalid_argument(
            fmt::format("a style has {} values, not {}", kStyleValueCount, values.size()));
    }
    std::vector<std::byte> record;
    record.reserve(kStyleRecordSize);
    for (const char c : kStyleTag) record.push_back(static_cast<std::byte>(c));
    append(record, static_cast<std::uint32_t>(kStyleVersion));
    append(record, static_cast<std::uint32_t>(kStyleValueCount));
    for (const float value : values) append(record, std::bit_cast<std::uint32_t>(value));
    return record;
}

std::vector<float> readStyleRecord(std::span<const std::byte> record) {
    if (record.size() != kStyleRecordSize) {
        throw StyleError(fmt::format("not a style record: it has {} bytes instead of {}", record.size(),
                                     kStyleRecordSize));
    }
    const std::string_view tag(reinterpret_cast<const char*>(record.data()), kStyleTag.size());
    if (tag != kStyleTag) {
        throw StyleError(fmt::format("not a style record: it does not begin with {}", kStyleTag));
    }
    const auto version = static_cast<std::int32_t>(wordAt(record, 4));
    if (version != kStyleVersion) {
        throw StyleError(fmt::format("cannot read style version {}: use version {}", version, kStyleVersion));
    }
    const auto count = static_cast<std::int32_t>(wordAt(record, 8));
    if (count != kStyleValueCount) {
        throw StyleError(
            fmt::format("not a style record: it has {} values instead of {}", count, kStyleValueCount));
    }
    std::vector<float> values;
    for (std::size_t offset = kHeaderSize; offset < record.size(); offset += 4) {
        values.push_back(std::bit_cast<float>(wordAt(record, offset)));
    }
    return values;
}

}  // namespace vanta
