#pragma once

#include <atomic>
#include <vector>

#include "foundation/atomic_bit_set.hpp"
#include "foundation/realtime.hpp"

namespace vanta {

/// Which parameters have changed on the audio side and wait for the owner thread, and what the host was told
/// of such changes. The processor's own value is the newest, so a mark is all that needs to travel.
class AudioSideChanges {
public:
    explicit AudioSideChanges(int parameterCount);

    // Audio thread.

    VANTA_REALTIME void markForModel(int index) { dueToModel_.set(index); }
    VANTA_REALTIME void markForModelAndHost(int index);

    // Any thread.

    /// Whether a host's position only answers what it was told, while a newer change is already on its way:
    /// to take it would move a controller back.
    bool isStale(int index, double position) const;

    // Owner thread.

    /// Calls `carry(index)` for each change that the model lacks. The result is their number.
    template <typename Carry>
    int takeForModel(Carry carry);
    /// Calls `report(index, told)` for each change that the host lacks, which puts into `told` what position
    /// it tells, before it does.
    template <typename Report>
    void takeForHost(Report report);

private:
    AtomicBitSet dueToModel_;
    AtomicBitSet dueToHost_;
    std::vector<std::atomic<double>> told_;  ///< positions; NaN where the host was told nothing
};

template <typename Carry>
int AudioSideChanges::takeForModel(Carry carry) {
    int count = 0;
    dueToModel_.takeEach([&](int index) {
        carry(index);
        ++count;
    });
    return count;
}

template <typename Report>
void AudioSideChanges::takeForHost(Report report) {
    dueToHost_.takeEach([&](int index) { report(index, told_[static_cast<std::size_t>(index)]); });
}

}  // namespace vanta
