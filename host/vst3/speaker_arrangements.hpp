#pragma once

#include <optional>

#include <travesty/audio_processor.h>

#include "host/common/speakers.hpp"

namespace vanta::vst3 {

/// No channels.
inline constexpr v3_speaker_arrangement kNoSpeakers = 0;

/// The bit of a speaker. The channels of a bus stand in rising order of their bits.
int speakerBit(Speaker speaker);

v3_speaker_arrangement arrangementOf(ChannelLayout layout);
/// Our heights are those at the sides; heights at the front, of which many hosts know nothing else, will do.
std::optional<ChannelLayout> layoutOf(v3_speaker_arrangement arrangement);
int channelsOf(v3_speaker_arrangement arrangement);

}  // namespace vanta::vst3
