#pragma once

#include <algorithm>
#include <atomic>
#include <bit>
#include <cstdint>
#include <vector>

#include "host/common/host_callbacks.hpp"

namespace vanta {

/// Edits on their way from the main thread to hosts that take them with a block of audio. All gestures of a
/// parameter arrive, in their order; of its values that wait the last one arrives, where it stood among them.
/// Nothing waits for anything.
class PendingEdits {
public:
    explicit PendingEdits(int parameterCount) : parameters_(static_cast<std::size_t>(parameterCount)) {}

    /// Any thread. A begin within a gesture and an end outside of one say nothing new.
    void add(int index, HostCallbacks::Edit edit, float value);
    /// The host will read all values anew: those that wait are out of date.
    void forgetValues();

    // On the thread of the block, or whichever thread tells the host.

    /// Calls `deliver(index, edit, value)` for what waits. What is not taken, which `deliver` says with
    /// false, waits for the next time.
    template <typename Deliver>
    void take(Deliver deliver);
    /// Values alone: `deliver(index, value)`. Gestures wait on.
    template <typename Deliver>
    void takeValues(Deliver deliver);

private:
    /// What waits of one parameter. Begins and ends take turns, so that their number and the last of them
    /// tell them all.
    struct Waiting {
        std::uint16_t turns = 0;    ///< begins and ends
        std::uint16_t valueAt = 0;  ///< how many of them come before the value
        std::uint16_t hasValue = 0;
        std::uint16_t isHeld = 0;  ///< after all of them; stays when nothing waits
        float value = 0.0f;

        bool isEmpty() const { return turns == 0 && hasValue == 0; }
        void add(HostCallbacks::Edit edit, float newValue);
        void setValue(float newValue);
        /// A value that was not taken: a newer one stays.
        void putBack(const Waiting& former);
        /// This came before `later`.
        Waiting followedBy(const Waiting& later) const;
    };
    /// As one word for the processor.
    using Word = std::uint64_t;
    static constexpr int kCountBits = 15;
    static constexpr Word kCountMask = (Word{1} << kCountBits) - 1;
    /// More than any user does between two blocks. Beyond it whole gestures are left out.
    static constexpr std::uint16_t kMostTurns = 0x3FFE;

    static Word pack(const Waiting& waiting);
    static Waiting unpack(Word word);
    template <typename Change>
    static Waiting exchange(std::atomic<Word>& word, Change change);
    template <typename Deliver>
    static bool deliverAll(Waiting& waiting, int index, Deliver deliver);

    std::vector<std::atomic<Word>> parameters_;
    std::atomic<bool> any_{false};
};

inline PendingEdits::Word PendingEdits::pack(const Waiting& waiting) {
    return Word{std::bit_cast<std::uint32_t>(waiting.value)} | Word{waiting.turns} << 32 |
           Word{waiting.valueAt} << (32 + kCountBits) | Word{waiting.hasValue} << 62 |
           Word{waiting.isHeld} << 63;
}

inline PendingEdits::Waiting PendingEdits::unpack(Word word) {
    return {static_cast<std::uint16_t>(word >> 32 & kCountMask),
            static_cast<std::uint16_t>(word >> (32 + kCountBits) & kCountMask),
            static_cast<std::uint16_t>(word >> 62 & 1), static_cast<std::uint16_t>(word >> 63),
            std::bit_cast<float>(static_cast<std::uint32_t>(word))};
}

/// What was there before `change(waiting)`.
template <typename Change>
PendingEdits::Waiting PendingEdits::exchange(std::atomic<Word>& word, Change change) {
    Word before = word.load();
    for (;;) {
        Waiting after = unpack(before);
        change(after);
        if (word.compare_exchange_weak(before, pack(after))) return unpack(before);
    }
}

/// What is taken is gone from `waiting`. False: something was not.
template <typename Deliver>
bool PendingEdits::deliverAll(Waiting& waiting, int index, Deliver deliver) {
    while (!waiting.isEmpty()) {
        if (waiting.hasValue && waiting.valueAt == 0) {
            if (!deliver(index, HostCallbacks::Edit::Value, waiting.value)) return false;
            waiting.hasValue = 0;
            continue;
        }
        const bool begins = ((waiting.turns & 1) != 0) == (waiting.isHeld != 0);
        if (!deliver(index, begins ? HostCallbacks::Edit::Begin : HostCallbacks::Edit::End, waiting.value))
            return false;
        --waiting.turns;
        if (waiting.hasValue) --waiting.valueAt;
    }
    return true;
}

template <typename Deliver>
void PendingEdits::take(Deliver deliver) {
    if (!any_.exchange(false)) return;
    for (int index = 0; index < static_cast<int>(parameters_.size()); ++index) {
        std::atomic<Word>& parameter = parameters_[static_cast<std::size_t>(index)];
        Waiting waiting = exchange(parameter, [](Waiting& all) { all.turns = all.hasValue = 0; });
        if (deliverAll(waiting, index, deliver)) continue;
        exchange(parameter, [&](Waiting& later) { later = waiting.followedBy(later); });
        any_.store(true);
    }
}

template <typename Deliver>
void PendingEdits::takeValues(Deliver deliver) {
    if (!any_.exchange(false)) return;
    bool somethingWaits = false;
    for (int index = 0; index < static_cast<int>(parameters_.size()); ++index) {
        std::atomic<Word>& parameter = parameters_[static_cast<std::size_t>(index)];
        if (parameter.load() == 0) continue;
        const Waiting waiting = exchange(parameter, [](Waiting& all) { all.hasValue = 0; });
        somethingWaits = somethingWaits || waiting.turns > 0;
        if (!waiting.hasValue || deliver(index, waiting.value)) continue;
        exchange(parameter, [&](Waiting& later) { later.putBack(waiting); });
        somethingWaits = true;
    }
    if (somethingWaits) any_.store(true);
}

}  // namespace vanta
