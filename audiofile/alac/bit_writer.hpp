#pragma once

#include <cstdint>
#include <string>
#include <utility>

namespace vanta {

/// Collects bits, the highest first.
class BitWriter {
public:
    /// The lowest `count` bits of a value, at most 32.
    void put(std::uint32_t value, int count) {
        held_ = held_ << count | (value & ((std::uint64_t{1} << count) - 1));
        for (heldBits_ += count; heldBits_ >= 8; heldBits_ -= 8)
            bytes_ += static_cast<char>(held_ >> (heldBits_ - 8) & 0xFF);
    }
    void append(const BitWriter& other) {
        for (const char byte : other.bytes_) put(static_cast<unsigned char>(byte), 8);
        put(static_cast<std::uint32_t>(other.held_), other.heldBits_);
    }
    /// All of them, filled up with zeros.
    std::string take() {
        if (heldBits_ > 0) put(0, 8 - heldBits_);
        return std::move(bytes_);
    }

private:
    std::string bytes_;
    std::uint64_t held_ = 0;
    int heldBits_ = 0;
};

}  // namespace vanta
