#pragma once

namespace vanta {

// What an interface reads of the limiter, in the order in which the processor writes it and the model reads
// it: the levels of the programme, those of each channel in turn; apart from these, recorded audio. A new one
// goes before Count; the switch in VantaMeters or ChannelMeters that hands out its source asks for it.

enum class ProgrammeLevel { Momentary, ShortTerm, Integrated, Count };
enum class ChannelLevel { OutputPeak, RmsOrLoudness, Gain, Count };
enum class RecordedAudio { Input, Output, Gain, Count };

template <typename Order>
inline constexpr int kCountOf = static_cast<int>(Order::Count);

/// Where a channel's level stands among all level sources.
constexpr int levelPosition(int channel, ChannelLevel level) {
    return kCountOf<ProgrammeLevel> + channel * kCountOf<ChannelLevel> + static_cast<int>(level);
}

}  // namespace vanta
