#pragma once

#include <atomic>
#include <limits>
#include <vector>

#include "foundation/realtime.hpp"

namespace vanta {

/// Which parameters have changed on the audio side and wait for the owner thread, and what the host was told
/// that the processor has anyway. The processor's own value is the newest, so a mark is all that needs to
/// travel; it says whether the host waits as well, so that model and host are told of one change together.
class AudioSideChanges {
public:
    explicit AudioSideChanges(int parameterCount) : parameters_(static_cast<std::size_t>(parameterCount)) {}

    // Any thread, the audio thread included.

    VANTA_REALTIME void markForModel(int index) { at(index).marks.fetch_or(kForModel); }
    VANTA_REALTIME void markForModelAndHost(int index) { at(index).marks.fetch_or(kForModel | kForHost); }
    /// Whether a change waits or is being delivered.
    bool isWaiting(int index) const { return at(index).marks.load() != 0; }
    VANTA_REALTIME bool isAnyWaiting() const;
    /// Whether a host's position only answers what it was told. The processor has had it and may have
    /// moved on since: to take it would move a controller back. Any other position ends this.
    VANTA_REALTIME bool isAnswer(int index, double position);

    // Any thread but the audio thread.

    /// All that waits is out of date.
    void forget();
    /// The host is about to be told a position that the processor has: to hear it again says nothing.
    void setTold(int index, double position) { at(index).told.store(position); }
    void clearTold(int index) { setTold(index, kNothing); }

    // Owner thread.

    /// Calls `deliver(index, toHost)` for each change that waits; what changes meanwhile waits anew. The
    /// result is their number.
    template <typename Deliver>
    int take(Deliver deliver);

private:
    static constexpr unsigned kForModel = 1;
    static constexpr unsigned kForHost = 2;
    static constexpr unsigned kTaken = 4;  ///< but not there yet
    static constexpr double kNothing = std::numeric_limits<double>::quiet_NaN();

    struct Parameter {
        std::atomic<unsigned> marks{0};
        std::atomic<double> told{kNothing};  ///< a position
    };

    Parameter& at(int index) { return parameters_[static_cast<std::size_t>(index)]; }
    const Parameter& at(int index) const { return parameters_[static_cast<std::size_t>(index)]; }

    std::vector<Parameter> parameters_;
};

template <typename Deliver>
int AudioSideChanges::take(Deliver deliver) {
    int count = 0;
    for (int index = 0; index < static_cast<int>(parameters_.size()); ++index) {
        if (!isWaiting(index)) continue;
        const unsigned taken = at(index).marks.exchange(kTaken);
        deliver(index, (taken & kForHost) != 0);
        at(index).marks.fetch_and(~kTaken);
        ++count;
    }
    return count;
}

}  // namespace vanta
