#include "host/vst3/speaker_arrangements.hpp"

#include <bit>

namespace vanta::vst3 {
namespace {

constexpr int kTopSideLeftBit = 24;
constexpr int kTopSideRightBit = 25;
constexpr v3_speaker_arrangement kSideHeights = 1u << kTopSideLeftBit | 1u << kTopSideRightBit;
constexpr v3_speaker_arrangement kFrontHeights = V3_SPEAKER_TFL | V3_SPEAKER_TFR;

constexpr int bitOf(unsigned speaker) {
    return std::countr_zero(speaker);
}

}  // namespace

int speakerBit(Speaker speaker) {
    switch (speaker) {
        case Speaker::Mono:
            return bitOf(V3_SPEAKER_M);
        case Speaker::Left:
            return bitOf(V3_SPEAKER_L);
        case Speaker::Right:
            return bitOf(V3_SPEAKER_R);
        case Speaker::LeftOfCenter:
            return bitOf(V3_SPEAKER_LC);
        case Speaker::RightOfCenter:
            return bitOf(V3_SPEAKER_RC);
        case Speaker::Center:
            return bitOf(V3_SPEAKER_C);
        case Speaker::Lfe:
            return bitOf(V3_SPEAKER_LFE);
        case Speaker::SideLeft:
            return bitOf(V3_SPEAKER_SL);
        case Speaker::SideRight:
            return bitOf(V3_SPEAKER_SR);
        case Speaker::SurroundLeft:
        case Speaker::RearLeft:
            return bitOf(V3_SPEAKER_LS);
        case Speaker::SurroundRight:
        case Speaker::RearRight:
            return bitOf(V3_SPEAKER_RS);
        case Speaker::RearCenter:
            return bitOf(V3_SPEAKER_S);
        case Speaker::TopLeft:
            return kTopSideLeftBit;
        case Speaker::TopRight:
            return kTopSideRightBit;
    }
    return 0;
}

v3_speaker_arrangement arrangementOf(ChannelLayout layout) {
    return speakerMask(layout, speakerBit);
}

std::optional<ChannelLayout> layoutOf(v3_speaker_arrangement arrangement) {
    if ((arrangement & (kFrontHeights | kSideHeights)) == kFrontHeights)
        arrangement ^= kFrontHeights | kSideHeights;
    return layoutOfMask(arrangement, speakerBit);
}

int channelsOf(v3_speaker_arrangement arrangement) {
    return std::popcount(arrangement);
}

}  // namespace vanta::vst3
