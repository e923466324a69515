#include "host/vst3/block_events.hpp"

#include <algorithm>
#include <cmath>
#include <limits>

namespace vanta::vst3 {
namespace {

constexpr std::uint8_t kControlChange = 0xB0;
constexpr std::uint8_t kProgramChange = 0xC0;
/// The number that the list of events gives a program change.
constexpr int kProgramChangeNumber = 130;
constexpr double kLargestMidiValue = 127.0;

std::uint8_t dataByte(int value) {
    return static_cast<std::uint8_t>(std::clamp(value, 0, 127));
}

HostEvent midiEvent(int offset, const MidiMessage& message) {
    return {.offset = offset, .kind = HostEvent::Kind::Midi, .midi = message};
}

/// Hosts deliver controllers as parameters; some hand over the messages as well.
std::optional<HostEvent> messageOf(const v3_event& event) {
    if (event.type != V3_EVENT_LEGACY_MIDI_CC_OUT) return {};
    const v3_event_legacy_midi_cc_out& source = event.midi_cc_out;
    const auto channel = static_cast<std::uint8_t>(source.channel & 0x0F);
    const auto status = [channel](std::uint8_t kind) { return static_cast<std::uint8_t>(kind | channel); };
    if (source.cc_number < ParameterList::kControllers) {
        return midiEvent(event.sample_offset,
                         {status(kControlChange), source.cc_number, dataByte(source.value)});
    }
    if (source.cc_number == kProgramChangeNumber) {
        return midiEvent(event.sample_offset, {status(kProgramChange), dataByte(source.value), 0});
    }
    return {};
}

}  // namespace

void BlockEvents::begin(v3_param_changes** changes, v3_event_list** events) {
    queueCount_ = 0;
    const int queues = changes ? v3_cpp_obj(changes)->get_param_count(changes) : 0;
    for (int i = 0; i < queues; ++i) open(v3_cpp_obj(changes)->get_param_data(changes, i));
    constexpr std::uint32_t kMost = std::numeric_limits<int>::max();
    midi_ = events;
    midiCount_ = events ? static_cast<int>(std::min(v3_cpp_obj(events)->get_event_count(events), kMost)) : 0;
    midiTaken_ = 0;
    advanceMidi();
}

void BlockEvents::open(v3_param_value_queue** points) {
    if (!points || queueCount_ == queues_.size()) return;
    Queue queue{points, v3_cpp_obj(points)->get_param_id(points), v3_cpp_obj(points)->get_point_count(points),
                0};
    if (parameters_.has(queue.id) && advance(queue)) queues_[queueCount_++] = queue;
}

/// False at the end.
bool BlockEvents::advance(Queue& queue) {
    while (queue.taken < queue.count) {
        std::int32_t offset = 0;
        double position = 0.0;
        const v3_result result =
            v3_cpp_obj(queue.points)->get_point(queue.points, queue.taken++, &offset, &position);
        if (result != V3_OK || std::isnan(position)) continue;
        queue.offset = offset;
        queue.position = std::clamp(position, 0.0, 1.0);
        return true;
    }
    return false;
}

void BlockEvents::advanceMidi() {
    nextMidi_.reset();
    while (!nextMidi_ && midiTaken_ < midiCount_) {
        v3_event event{};
        if (v3_cpp_obj(midi_)->get_event(midi_, midiTaken_++, &event) == V3_OK) nextMidi_ = messageOf(event);
    }
}

BlockEvents::Queue* BlockEvents::earliest() {
    if (queueCount_ == 0) return nullptr;
    const auto end = queues_.begin() + static_cast<std::ptrdiff_t>(queueCount_);
    return &*std::min_element(queues_.begin(), end,
                              [](const Queue& a, const Queue& b) { return a.offset < b.offset; });
}

bool BlockEvents::next(HostEvent& event) {
    for (;;) {
        Queue* queue = earliest();
        if (nextMidi_ && (!queue || nextMidi_->offset < queue->offset)) {
            event = *nextMidi_;
            advanceMidi();
            return true;
        }
        if (!queue) return false;
        const bool isEvent = take(*queue, event);
        // The last one fills the gap: queues need no order, as the earliest is looked for.
        if (!advance(*queue)) *queue = queues_[--queueCount_];
        if (isEvent) return true;
    }
}

/// False for what does not concern the sound.
bool BlockEvents::take(const Queue& queue, HostEvent& event) {
    if (parameters_.isOwn(queue.id)) {
        const int index = static_cast<int>(queue.id);
        automation_.moved(index);
        event = {.offset = queue.offset,
                 .index = index,
                 .value = parameters_.range(index).valueAt(queue.position)};
        return true;
    }
    if (ParameterList::isController(queue.id)) {
        const auto controller = static_cast<std::uint8_t>(queue.id - ParameterList::kFirstController);
        const auto value = static_cast<std::uint8_t>(std::lround(queue.position * kLargestMidiValue));
        event = midiEvent(queue.offset, {kControlChange, controller, value});
        return true;
    }
    programs_.request(programs_.at(queue.position));
    return false;
}

}  // namespace vanta::vst3
