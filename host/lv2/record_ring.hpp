#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "foundation/realtime.hpp"

namespace vanta {

/// Records of bytes on their way from one thread to one other, in order. Neither end locks, allocates or
/// calls the system.
class RecordRing {
public:
    /// Bytes that each record takes beyond its own.
    static constexpr std::size_t kRecordHead = 4;

    /// Bytes.
    explicit RecordRing(std::size_t capacity) : bytes_(capacity) {}

    // The thread that writes.

    std::size_t room() const;
    /// False if it does not fit; then nothing has changed.
    VANTA_REALTIME bool push(std::span<const std::byte> record);

    // The thread that reads.

    /// Of the oldest record; 0 if there is none.
    VANTA_REALTIME std::size_t nextSize() const;
    /// Copies the oldest record, of which `target` has the size, and drops it.
    VANTA_REALTIME void pop(std::span<std::byte> target);
    VANTA_REALTIME void clear() { read_.store(written_.load(std::memory_order_acquire)); }

private:
    void copyIn(std::size_t at, std::span<const std::byte> from);
    void copyOut(std::size_t at, std::span<std::byte> to) const;

    std::vector<std::byte> bytes_;
    // Of all time, in bytes.
    std::atomic<std::size_t> written_{0};
    std::atomic<std::size_t> read_{0};
};

}  // namespace vanta
