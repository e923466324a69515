#pragma once

#include <atomic>
#include <cstdint>
#include <vector>

#include "foundation/realtime.hpp"

namespace vanta::vst3 {

/// Which parameters a host moves with its blocks. Hosts show the controller what they play, some time later:
/// a parameter that blocks move must not be put back by that.
class BlockAutomation {
public:
    explicit BlockAutomation(int parameterCount) : lastMoved_(static_cast<std::size_t>(parameterCount)) {
        for (auto& moved : lastMoved_) moved.store(kNever);
    }

    // Audio thread.

    VANTA_REALTIME void moved(int index) {
        lastMoved_[static_cast<std::size_t>(index)].store(played_.load());
    }
    VANTA_REALTIME void played(int samples) {
        played_.fetch_add(samples);
        running_.store(true);
    }
    VANTA_REALTIME void stopped() { running_.store(false); }

    // Any thread.

    /// Within the last `samples`, and it goes on.
    bool moves(int index, double samples) const {
        const std::int64_t last = lastMoved_[static_cast<std::size_t>(index)].load();
        return running_.load() && last != kNever && static_cast<double>(played_.load() - last) < samples;
    }

private:
    static constexpr std::int64_t kNever = -1;

    std::vector<std::atomic<std::int64_t>> lastMoved_;
    std::atomic<std::int64_t> played_{0};
    std::atomic<bool> running_{false};
};

}  // namespace vanta::vst3
