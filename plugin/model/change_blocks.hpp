#pragma once

#include <atomic>

namespace vanta {

/// Merges the changes of a block into one update. Blocks nest. Any thread, without a lock.
class ChangeBlocks {
public:
    enum class Update {
        None,
        ToHost,  ///< the processor has been sent the values
        ToAll,
    };

    void begin() { depth_.fetch_add(1); }
    /// Who has to hear of the changes now that a block has ended.
    Update end() {
        if (depth_.fetch_sub(1) != 1) return Update::None;
        const bool sent = sent_.exchange(false);
        if (changed_.exchange(false)) return Update::ToAll;
        return sent ? Update::ToHost : Update::None;
    }
    /// A parameter has changed. False: an open block will report it when it ends.
    bool note() {
        if (depth_.load() == 0) return true;
        changed_.store(true);
        // A block that ended in between may not have seen the mark.
        return depth_.load() == 0;
    }
    /// All values as they will then be are about to be sent: what has changed so far is among them.
    void sendingAll() {
        changed_.store(false);
        sent_.store(true);
    }
    /// What of the open block was not noted has been sent.
    void markSent() { sent_.store(true); }

private:
    std::atomic<int> depth_{0};
    std::atomic<bool> changed_{false};
    std::atomic<bool> sent_{false};
};

}  // namespace vanta
