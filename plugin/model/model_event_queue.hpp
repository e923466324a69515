#pragma once

#include <atomic>
#include <functional>
#include <optional>
#include <variant>

#include "foundation/atomic_bit_set.hpp"
#include "foundation/lock_free_fifo.hpp"
#include "foundation/realtime.hpp"
#include "plugin/model/plugin_listener.hpp"

namespace vanta {

/// The latency is to be reported.
struct LatencyChanged {};
/// A parameter is to be carried to the host, or all of them.
struct ParameterUpdated {
    std::optional<int> index;  ///< nothing: all
};
/// The host is to hear of the current preset.
struct PresetNameChanged {};
/// A MIDI program change asks for a preset.
struct ProgramRequested {
    int bank;
    int program;
};

/// What a model has to do on its owner thread.
using ModelEvent = std::variant<LatencyChanged, ParameterUpdated, PresetNameChanged, ControllerMapChanged,
                                ControllerMoved, ProgramRequested>;

/// Brings events to a model's owner thread. All but program changes say no more than that something is to be
/// looked at, so they are marks that cannot be lost, and several of one kind become one; program changes keep
/// their order, and the oldest are dropped if nobody delivers.
class ModelEventQueue {
public:
    static constexpr int kMaxPrograms = 64;

    explicit ModelEventQueue(int parameterCount);

    /// Any thread, the audio thread included. Neither waits nor allocates.
    VANTA_REALTIME void post(const ModelEvent& event);
    /// Whether anything is due.
    VANTA_REALTIME bool isDue() const;
    /// Calls `handle` for all that is due: latency, parameters, preset name, controller map, controller,
    /// programs. One thread at a time; `handle` may deliver again, as a modal dialog does. The result is the
    /// number of events.
    int deliver(const std::function<void(const ModelEvent&)>& handle);

private:
    static constexpr int kNoController = -1;

    void mark(const LatencyChanged&) { latency_.store(true); }
    void mark(const ParameterUpdated& update);
    void mark(const PresetNameChanged&) { presetName_.store(true); }
    void mark(const ControllerMapChanged&) { controllerMap_.store(true); }
    void mark(const ControllerMoved& moved) { movedController_.store(moved.number); }
    void mark(const ProgramRequested& request);

    AtomicBitSet parameters_;
    std::atomic<bool> allParameters_{false};
    std::atomic<bool> latency_{false};
    std::atomic<bool> presetName_{false};
    std::atomic<bool> controllerMap_{false};
    std::atomic<int> movedController_{kNoController};
    LockFreeFifo programs_;
};

}  // namespace vanta
