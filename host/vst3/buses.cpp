#include "host/vst3/buses.hpp"

#include "host/vst3/utf16.hpp"

namespace vanta::vst3 {
namespace {

constexpr int kSideChainBus = 1;
constexpr int kMidiChannels = 16;

}  // namespace

void Buses::arrange(ChannelLayout layout) {
    layout_ = layout;
    main_ = arrangementOf(layout);
    sideChain_ = main_;
    channels_ = mapByNumber(layout, speakerBit);
}

bool Buses::arrange(std::span<const v3_speaker_arrangement> inputs,
                    std::span<const v3_speaker_arrangement> outputs) {
    if (inputs.empty() || inputs.size() > 2 || outputs.size() != 1) return false;
    // What comes out matters more than what goes in.
    const bool outputIsKnown = layoutOf(outputs[0]).has_value();
    const v3_speaker_arrangement wanted = outputIsKnown ? outputs[0] : inputs[0];
    const auto layout = layoutOf(wanted);
    if (!layout) return false;
    const bool sideChainFollows = sideChain_ == main_;
    layout_ = *layout;
    main_ = wanted;
    channels_ = mapByNumber(layout_, speakerBit);
    const v3_speaker_arrangement sideChain = inputs.size() > kSideChainBus ? inputs[kSideChainBus]
                                             : sideChainFollows            ? main_
                                                                           : sideChain_;
    const bool sideChainTaken = arrangeSideChain(sideChain);
    return inputs[0] == outputs[0] && sideChainTaken;
}

bool Buses::arrangeSideChain(v3_speaker_arrangement wanted) {
    const bool possible = wanted == kNoSpeakers || wanted == V3_SPEAKER_M || layoutOf(wanted) == layout_;
    sideChain_ = possible ? wanted : main_;
    return possible;
}

int Buses::count(int mediaType, int direction) const {
    if (mediaType == V3_AUDIO) return direction == V3_INPUT ? 2 : direction == V3_OUTPUT ? 1 : 0;
    return mediaType == V3_EVENT && direction == V3_INPUT ? 1 : 0;
}

bool Buses::has(int mediaType, int direction, int index) const {
    return index >= 0 && index < count(mediaType, direction);
}

bool Buses::describe(int mediaType, int direction, int index, v3_bus_info& info) const {
    if (!has(mediaType, direction, index)) return false;
    const bool audio = mediaType == V3_AUDIO;
    const bool isSideChain = audio && direction == V3_INPUT && index == kSideChainBus;
    info = {};
    info.media_type = mediaType;
    info.direction = direction;
    info.channel_count = audio ? channelsOf(isSideChain ? sideChain_ : main_) : kMidiChannels;
    info.bus_type = isSideChain ? V3_AUX : V3_MAIN;
    info.flags = isSideChain ? 0 : V3_DEFAULT_ACTIVE;
    const char* name = !audio                  ? "MIDI"
                       : isSideChain           ? "Side Chain"
                       : direction == V3_INPUT ? "Input"
                                               : "Output";
    writeUtf16(name, info.bus_name);
    return true;
}

bool Buses::arrangement(int direction, int index, v3_speaker_arrangement& arrangement) const {
    if (!has(V3_AUDIO, direction, index)) return false;
    arrangement = direction == V3_INPUT && index == kSideChainBus ? sideChain_ : main_;
    return true;
}

bool Buses::activate(int mediaType, int direction, int index, bool active) {
    if (!has(mediaType, direction, index)) return false;
    if (mediaType == V3_AUDIO && direction == V3_INPUT && index == kSideChainBus)
        sideChainActive_.store(active);
    return true;
}

}  // namespace vanta::vst3
