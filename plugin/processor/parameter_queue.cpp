#include "plugin/processor/parameter_queue.hpp"

namespace vanta {

void ParameterQueue::beginBlock() {
    openBlocks_.fetch_add(1);
    blockCount_.fetch_add(1);
}

void ParameterQueue::push(Change change) {
    const bool queued = queue_.push(LockFreeFifo::Item::of(change.index, change.value));
    if (!queued && !change.isDiscontinuity()) overflowed_.store(true);
}

bool ParameterQueue::settle() {
    // What was counted while no block was open, with none opened since, is complete.
    const std::uint32_t before = blockCount_.load();
    if (openBlocks_.load() != 0) return false;
    noted_ = queue_.sizeEstimate();
    return blockCount_.load() == before;
}

bool ParameterQueue::next(Change& change) {
    LockFreeFifo::Item item{};
    if (noted_ == 0 || !queue_.pop(item)) return false;
    --noted_;
    change = {item.index(), item.value()};
    return true;
}

}  // namespace vanta
