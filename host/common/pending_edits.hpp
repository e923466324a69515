#pragma once

#include <atomic>
#include <vector>

#include "host/common/host_callbacks.hpp"

namespace vanta {

/// Edits on their way from the main thread to hosts that take them with a block of audio. Of several values
/// of a parameter the last one arrives; nothing is ever lost.
class PendingEdits {
public:
    explicit PendingEdits(int parameterCount) : parameters_(static_cast<std::size_t>(parameterCount)) {}

    /// Any thread.
    void add(int index, HostCallbacks::Edit edit, float value);
    /// The host will read all values anew: those that wait are out of date.
    void forgetValues();

    /// On the thread of the block. Calls `deliver(index, edit, value)` for what waits: for each parameter
    /// its begin, value and end. What is not taken, which `deliver` says with false, waits for the next time.
    template <typename Deliver>
    void take(Deliver deliver);

private:
    struct Parameter {
        std::atomic<unsigned> edits{0};
        std::atomic<float> value{0.0f};
    };
    static constexpr HostCallbacks::Edit kOrder[] = {HostCallbacks::Edit::Begin, HostCallbacks::Edit::Value,
                                                     HostCallbacks::Edit::End};

    static unsigned bit(HostCallbacks::Edit edit) { return 1u << static_cast<unsigned>(edit); }

    std::vector<Parameter> parameters_;
    std::atomic<bool> any_{false};
};

template <typename Deliver>
void PendingEdits::take(Deliver deliver) {
    if (!any_.exchange(false)) return;
    for (int index = 0; index < static_cast<int>(parameters_.size()); ++index) {
        Parameter& parameter = parameters_[static_cast<std::size_t>(index)];
        unsigned edits = parameter.edits.exchange(0);
        for (const HostCallbacks::Edit edit : kOrder) {
            if (!(edits & bit(edit))) continue;
            if (!deliver(index, edit, parameter.value.load())) break;
            edits &= ~bit(edit);
        }
        if (edits == 0) continue;
        parameter.edits.fetch_or(edits);
        any_.store(true);
    }
}

}  // namespace vanta
