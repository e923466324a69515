#pragma once

#include <array>
#include <cstddef>
#include <optional>

#include <travesty/audio_processor.h>

#include "host/common/host_block.hpp"
#include "host/vst3/block_automation.hpp"
#include "host/vst3/parameter_list.hpp"

namespace vanta::vst3 {

/// What a host hands over with a block, all its queues merged in the order of time. It keeps no more than the
/// next point of each queue. Audio thread.
class BlockEvents final : public HostEventSource {
public:
    BlockEvents(const ParameterList& parameters, Programs& programs, BlockAutomation& automation)
        : parameters_(parameters), programs_(programs), automation_(automation) {}

    /// Both may be null.
    VANTA_REALTIME void begin(v3_param_changes** changes, v3_event_list** events);
    bool next(HostEvent& event) override;

private:
    /// More than there are parameters; a host has one queue for each.
    static constexpr std::size_t kMaxQueues = 256;

    struct Queue {
        v3_param_value_queue** points;
        v3_param_id id;
        int count;
        int taken;       ///< of them
        int offset = 0;  ///< of the next one, as `position`
        double position = 0.0;
    };

    void open(v3_param_value_queue** points);
    static bool advance(Queue& queue);
    Queue* earliest();
    bool take(const Queue& queue, HostEvent& event);
    void advanceMidi();

    const ParameterList& parameters_;
    Programs& programs_;
    BlockAutomation& automation_;
    std::array<Queue, kMaxQueues> queues_;
    std::size_t queueCount_ = 0;
    v3_event_list** midi_ = nullptr;
    int midiCount_ = 0;
    int midiTaken_ = 0;
    std::optional<HostEvent> nextMidi_;
};

}  // namespace vanta::vst3
