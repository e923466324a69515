#pragma once

#include <atomic>
#include <cstdint>

#include "foundation/lock_free_fifo.hpp"
#include "foundation/realtime.hpp"

namespace vanta {

/// Carries changes of parameters to the audio thread, in order and without a lock. What is changed while a
/// block of changes is open arrives together. A queue that is full loses no value: the audio thread then
/// looks at all parameters.
class ParameterQueue {
public:
    struct Change {
        static constexpr int kDiscontinuity = -1;

        bool isDiscontinuity() const { return index == kDiscontinuity; }
        int index;
        float value;
    };

    ParameterQueue() : queue_(kTouchedNodes) {}

    // Any thread.

    void beginBlock();
    void endBlock() { openBlocks_.fetch_sub(1); }
    void push(Change change);

    // Audio thread.

    /// Takes note of how much is queued; what comes later is left for the next time. True if that holds only
    /// whole blocks; what is half done waits.
    VANTA_REALTIME bool settle();
    VANTA_REALTIME bool isDue() const { return noted_ > 0 || overflowed_.load(std::memory_order_relaxed); }
    /// The next of what was noted; false after the last.
    VANTA_REALTIME bool next(Change& change);
    /// True once after a change has found the queue full. To be asked after the last change, as those are
    /// older.
    VANTA_REALTIME bool takeOverflow() { return overflowed_.exchange(false); }

private:
    static constexpr std::uint32_t kTouchedNodes = 8192;

    LockFreeFifo queue_;
    std::uint32_t noted_ = 0;
    std::atomic<int> openBlocks_{0};
    std::atomic<std::uint32_t> blockCount_{0};  ///< of blocks ever opened
    std::atomic<bool> overflowed_{false};
};

}  // namespace vanta
