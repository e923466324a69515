#pragma once

#include <atomic>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <memory>

#include "foundation/realtime.hpp"

namespace vanta {

/// Marks that cannot be lost and of which several for one thing count once. Set on any thread, the audio
/// thread included; whoever takes a mark reads what it stands for afterwards, and so sees the newest.
class AtomicBitSet {
public:
    explicit AtomicBitSet(int bits)
        : words_(static_cast<std::size_t>(bits + kWordBits - 1) / kWordBits),
          bits_(std::make_unique<std::atomic<std::uint64_t>[]>(words_)) {}

    VANTA_REALTIME void set(int bit) { word(bit).fetch_or(mask(bit)); }
    VANTA_REALTIME bool test(int bit) const { return (word(bit).load() & mask(bit)) != 0; }
    VANTA_REALTIME bool any() const {
        for (std::size_t i = 0; i < words_; ++i) {
            if (bits_[i].load() != 0) return true;
        }
        return false;
    }
    /// Whether there was any.
    bool clear() {
        std::uint64_t any = 0;
        for (std::size_t i = 0; i < words_; ++i) any |= bits_[i].exchange(0);
        return any != 0;
    }
    /// Takes all marks that are set now and calls `visit(bit)` for each, in rising order.
    template <typename Visit>
    void takeEach(Visit&& visit) {
        for (std::size_t i = 0; i < words_; ++i) {
            for (std::uint64_t left = bits_[i].exchange(0); left != 0; left &= left - 1) {
                visit(static_cast<int>(i) * kWordBits + std::countr_zero(left));
            }
        }
    }

private:
    static constexpr int kWordBits = 64;
    static std::uint64_t mask(int bit) { return std::uint64_t{1} << (bit % kWordBits); }
    std::atomic<std::uint64_t>& word(int bit) const {
        return bits_[static_cast<std::size_t>(bit / kWordBits)];
    }

    std::size_t words_;
    std::unique_ptr<std::atomic<std::uint64_t>[]> bits_;
};

}  // namespace vanta
