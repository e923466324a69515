#pragma once

#include <atomic>

#include "foundation/async_event_queue.hpp"
#include "foundation/atomic_bit_set.hpp"

namespace vanta {

/// What a model has to do on its owner thread. Everything but program changes says no more than that
/// something is to be looked at, and so is a mark that cannot be lost; program changes keep their order and
/// the newest are dropped if nobody delivers.
class ModelEventQueue final : public AsyncEventQueue {
public:
    enum Kind : int {
        Latency,            ///< to be reported
        Program,            ///< value: bank << 8 | program
        Parameter,          ///< value: index, kAll or kAllWithReset
        LearnedController,  ///< value: its number
        PresetName,         ///< to be told
    };
    static constexpr int kAll = -1;
    static constexpr int kAllWithReset = -2;
    static constexpr int kMaxPrograms = 64;

    explicit ModelEventQueue(int parameterCount);

    VANTA_REALTIME void post(int postedKind, int postedValue) override;
    /// Raises `event` for all that is due. One thread at a time. The result is the number of events.
    int deliver();

private:
    enum FullUpdate : int { None, Plain, WithReset };
    static constexpr int kNoController = -1;

    void postParameter(int index);
    void raise(int raisedKind, int raisedValue);
    void deliverParameters();
    void deliverPrograms();

    AtomicBitSet parameters_;
    std::atomic<int> fullUpdate_{None};
    std::atomic<bool> latency_{false};
    std::atomic<bool> presetName_{false};
    std::atomic<int> learnedController_{kNoController};
    LockFreeFifo programs_;
    int delivered_ = 0;
};

}  // namespace vanta
