#pragma once

#include <atomic>

namespace vanta {

/// Merges the changes of a block into one update. Blocks nest. Any thread, without a lock.
class ChangeBlocks {
public:
    enum class Update { None, All, AllWithReset };

    void begin() { depth_.fetch_add(1); }
    /// What has to be reported now that a block has ended.
    Update end() {
        if (depth_.fetch_sub(1) != 1) return Update::None;
        const bool reset = replaced_.exchange(false);
        if (!changed_.exchange(false)) return Update::None;
        return reset ? Update::AllWithReset : Update::All;
    }
    /// A parameter has changed. False: an open block will report it when it ends.
    bool note() {
        if (depth_.load() == 0) return true;
        changed_.store(true);
        // A block that ended in between may not have seen the mark.
        return depth_.load() == 0;
    }
    /// The values of the open block have nothing to do with those before: its update asks for a reset.
    void markReplaced() { replaced_.store(true); }

private:
    std::atomic<int> depth_{0};
    std::atomic<bool> changed_{false};
    std::atomic<bool> replaced_{false};
};

}  // namespace vanta
