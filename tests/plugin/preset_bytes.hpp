#pragma once

#include <bit>
#include <cstdint>
#include <string>
#include <vector>

namespace vanta::test {

/// Builds the bytes of records, by the format's own description and not by the writer under test.
class Bytes {
public:
    Bytes& tag(const std::string& text) {
        bytes += text.substr(0, 4);
        return *this;
    }
    Bytes& number(std::int64_t value) {
        for (int shift = 0; shift < 32; shift += 8) bytes += static_cast<char>((value >> shift) & 0xFF);
        return *this;
    }
    Bytes& real(float value) { return number(std::bit_cast<std::int32_t>(value)); }
    Bytes& reals(const std::vector<float>& values) {
        for (const float value : values) real(value);
        return *this;
    }

    std::string bytes;
};

/// A whole preset record.
inline std::string presetBytes(const std::string& tag, int version, const std::vector<float>& values) {
    return Bytes().tag(tag).number(version).number(static_cast<int>(values.size())).reals(values).bytes;
}

}  // namespace vanta::test
