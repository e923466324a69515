#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "foundation/realtime.hpp"

namespace vanta {

/// The peaks of a signal that are still the largest of what follows them, oldest and largest first (Lemire,
/// "Streaming maximum-minimum filter using no more than three comparisons per element", 2006). Places are
/// sample counts modulo 2^32: only distances are read, which are far smaller.
class PeakQueue {
public:
    struct Peak {
        std::uint32_t place;
        float value;
    };

    /// Room for the peaks of `window` samples; two peaks are at least two samples apart. Empties the queue,
    /// allocates when the size changes.
    void resize(int window) {
        // One more at each end: the sample before the window, and a first peak in the middle of a fall.
        const std::size_t size = std::bit_ceil(static_cast<std::size_t>(window) / 2 + 3);
        if (size != peaks_.size()) peaks_ = std::vector<Peak>(size);
        mask_ = static_cast<std::uint32_t>(size - 1);
        clear();
    }
    VANTA_REALTIME void clear() { first_ = end_ = 0; }

    bool empty() const { return first_ == end_; }
    const Peak& oldest() const { return at(first_); }
    VANTA_REALTIME float largest() const { return empty() ? 0.0f : oldest().value; }

    /// Drops what lies more than `window` samples before `now`.
    VANTA_REALTIME void expire(std::uint32_t now, std::uint32_t window) {
        while (!empty() && now - oldest().place > window) ++first_;
    }

    /// Enters the newest peak in place of all that are not larger. Mostly there are few; where there are
    /// many, the number of comparisons is logarithmic.
    VANTA_REALTIME void insert(Peak peak) {
        for (int i = 0; i < kNear; ++i) {
            if (empty() || at(end_ - 1).value > peak.value) {
                at(end_++) = peak;
                return;
            }
            --end_;
        }
        std::uint32_t low = first_;
        for (std::uint32_t count = end_ - first_; count > 0;) {
            const std::uint32_t half = count / 2;
            const bool larger = at(low + half).value > peak.value;
            low = larger ? low + half + 1 : low;
            count = larger ? count - half - 1 : half;
        }
        at(low) = peak;
        end_ = low + 1;
    }

    /// Enters a peak older than all others, if any later one leaves it a meaning.
    VANTA_REALTIME void insertOldest(Peak peak) {
        if (empty() || peak.value > oldest().value) at(--first_) = peak;
    }

private:
    static constexpr int kNear = 4;

    Peak& at(std::uint32_t index) { return peaks_[index & mask_]; }
    const Peak& at(std::uint32_t index) const { return peaks_[index & mask_]; }

    std::vector<Peak> peaks_;
    std::uint32_t mask_ = 0;
    std::uint32_t first_ = 0;  ///< both run freely and are masked when they are used
    std::uint32_t end_ = 0;
};

}  // namespace vanta
