#include "foundation/lock_free_fifo.hpp"

#include <algorithm>
#include <new>

namespace vanta {
namespace {

using std::memory_order_acq_rel;
using std::memory_order_acquire;
using std::memory_order_relaxed;
using std::memory_order_release;

/// A word is an index (low half) and the count of changes (high half). Index 0 ends a list.
constexpr std::uint32_t indexOf(std::uint64_t word) {
    return static_cast<std::uint32_t>(word);
}

/// What a word that read `old` becomes when it is to name `index`.
constexpr std::uint64_t successor(std::uint64_t old, std::uint32_t index) {
    return (((old >> 32) + 1) << 32) | index;
}

constexpr std::uint64_t pack(LockFreeFifo::Item item) {
    return (static_cast<std::uint64_t>(item.second) << 32) | item.first;
}

constexpr LockFreeFifo::Item unpack(std::uint64_t word) {
    return {static_cast<std::uint32_t>(word), static_cast<std::uint32_t>(word >> 32)};
}

bool exchange(std::atomic<std::uint64_t>& word, std::uint64_t& old, std::uint32_t index) {
    return word.compare_exchange_weak(old, successor(old, index), memory_order_acq_rel, memory_order_acquire);
}

}  // namespace

LockFreeFifo::LockFreeFifo(std::uint32_t initialNodes, std::uint32_t maxNodes)
    : nodeCount_(std::clamp(maxNodes, 1u, kMaxNodes) + 2),
      nodes_(static_cast<Node*>(::operator new(nodeCount_ * sizeof(Node)))) {
    constexpr std::uint32_t kDummy = 1;
    const std::uint32_t touched = std::min(kDummy + 1 + initialNodes, nodeCount_);
    for (std::uint32_t i = 0; i < touched; ++i) std::construct_at(&nodes_[i]);
    for (std::uint32_t i = touched; i-- > kDummy + 1;) giveBack(i);
    untouched_.store(touched, memory_order_relaxed);
    head_.store(kDummy, memory_order_relaxed);
    tail_.store(kDummy, memory_order_release);
}

/// Only for a node that no list holds. The count survives the reuse: whoever still remembers the link from
/// an earlier life of the node fails its exchange.
void LockFreeFifo::setNext(Node& node, std::uint32_t next) {
    node.link.store(successor(node.link.load(memory_order_relaxed), next), memory_order_release);
}

std::uint32_t LockFreeFifo::takeNode() {
    std::uint64_t top = freeNodes_.load(memory_order_acquire);
    while (indexOf(top)) {
        const std::uint32_t next = indexOf(nodes_[indexOf(top)].link.load(memory_order_acquire));
        const std::uint32_t taken = indexOf(top);
        if (exchange(freeNodes_, top, next)) return taken;
    }
    std::uint32_t fresh = untouched_.load(memory_order_relaxed);
    while (fresh < nodeCount_) {
        if (!untouched_.compare_exchange_weak(fresh, fresh + 1, memory_order_relaxed)) continue;
        std::construct_at(&nodes_[fresh]);
        return fresh;
    }
    return 0;
}

void LockFreeFifo::giveBack(std::uint32_t index) {
    std::uint64_t top = freeNodes_.load(memory_order_acquire);
    do {
        setNext(nodes_[index], indexOf(top));
    } while (!exchange(freeNodes_, top, index));
}

bool LockFreeFifo::push(Item item) {
    const std::uint32_t added = takeNode();
    if (!added) return false;
    nodes_[added].item.store(pack(item), memory_order_relaxed);
    setNext(nodes_[added], 0);
    count_.fetch_add(1, memory_order_acq_rel);  // before the item can be seen, so that it never falls below 0
    for (;;) {
        std::uint64_t last = tail_.load(memory_order_acquire);
        std::atomic<std::uint64_t>& link = nodes_[indexOf(last)].link;
        std::uint64_t next = link.load(memory_order_acquire);
        if (last != tail_.load(memory_order_acquire)) continue;
        if (indexOf(next)) {
            exchange(tail_, last, indexOf(next));  // helps a push that stands between its two steps
        } else if (exchange(link, next, added)) {
            exchange(tail_, last, added);
            return true;
        }
    }
}

bool LockFreeFifo::pop(Item& item) {
    for (;;) {
        std::uint64_t first = head_.load(memory_order_acquire);
        std::uint64_t last = tail_.load(memory_order_acquire);
        const std::uint32_t next = indexOf(nodes_[indexOf(first)].link.load(memory_order_acquire));
        if (first != head_.load(memory_order_acquire)) continue;
        if (indexOf(first) == indexOf(last)) {
            if (!next) return false;
            exchange(tail_, last, next);
            continue;
        }
        // Read before the exchange: afterwards the node is the new dummy, which another pop may free.
        const std::uint64_t word = nodes_[next].item.load(memory_order_relaxed);
        const std::uint32_t freed = indexOf(first);
        if (!exchange(head_, first, next)) continue;
        count_.fetch_sub(1, memory_order_acq_rel);
        item = unpack(word);
        giveBack(freed);
        return true;
    }
}

}  // namespace vanta
