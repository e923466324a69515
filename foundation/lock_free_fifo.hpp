#pragma once

#include <atomic>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <memory>

#include "foundation/realtime.hpp"

namespace vanta {

/// A queue of 64-bit items for any number of producers and consumers on any threads. Items of one producer
/// arrive in order. Neither end locks, allocates or calls the system; both spin only on a lost exchange.
///
/// The queue of Michael and Scott, "Simple, Fast, and Practical Non-Blocking and Blocking Concurrent Queue
/// Algorithms" (PODC 1996), over a pool whose nodes are named by index. Every change of a link adds 1 to
/// a count beside the index, so that a node that was reused between a read and an exchange is told from
/// the one that was read.
class LockFreeFifo {
public:
    static constexpr std::uint32_t kMaxNodes = 65536;

    struct Item {
        std::uint32_t first;
        std::uint32_t second;

        /// The pair that parameter changes travel as.
        static Item of(std::int32_t index, float value) {
            return {static_cast<std::uint32_t>(index), std::bit_cast<std::uint32_t>(value)};
        }
        std::int32_t index() const { return static_cast<std::int32_t>(first); }
        float value() const { return std::bit_cast<float>(second); }
        bool operator==(const Item&) const = default;
    };

    /// Holds up to `maxNodes` items, limited to 1 up to kMaxNodes. The whole pool is reserved here and
    /// never moves; the memory of the first `initialNodes` is touched as well, so that a push which stays
    /// within them meets no page fault.
    explicit LockFreeFifo(std::uint32_t initialNodes = 4096, std::uint32_t maxNodes = kMaxNodes);
    LockFreeFifo(const LockFreeFifo&) = delete;
    LockFreeFifo& operator=(const LockFreeFifo&) = delete;

    /// False when the pool is used up; the item is then dropped.
    VANTA_REALTIME bool push(Item item);
    /// False when the queue is empty; `item` is then left alone.
    VANTA_REALTIME bool pop(Item& item);

    /// Never less than what finished pushes have left in the queue; pushes and pops that are under way may
    /// add to it. A drain that takes at most this many ends, however fast others push.
    VANTA_REALTIME std::uint32_t sizeEstimate() const { return count_.load(std::memory_order_acquire); }

private:
    struct Node {
        std::atomic<std::uint64_t> link{0};
        std::atomic<std::uint64_t> item{0};
    };
    struct FreeStorage {
        void operator()(Node* storage) const { ::operator delete(storage); }
    };
    static constexpr std::size_t kCacheLine = 64;

    std::uint32_t takeNode();
    void giveBack(std::uint32_t index);
    void setNext(Node& node, std::uint32_t next);

    std::uint32_t nodeCount_;  ///< with the end mark at index 0 and the queue's own dummy node
    std::unique_ptr<Node[], FreeStorage> nodes_;
    alignas(kCacheLine) std::atomic<std::uint64_t> head_;
    alignas(kCacheLine) std::atomic<std::uint64_t> tail_;
    alignas(kCacheLine) std::atomic<std::uint64_t> freeNodes_{0};
    std::atomic<std::uint32_t> untouched_;  ///< the nodes from here on have never been used
    alignas(kCacheLine) std::atomic<std::uint32_t> count_{0};
};

}  // namespace vanta
