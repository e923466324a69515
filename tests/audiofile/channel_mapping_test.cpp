#include "audiofile/channel_mapping.hpp"

#include <gtest/gtest.h>
#include <sndfile.h>

#include "foundation/failure.hpp"

namespace vanta::test {
namespace {

constexpr int M = SF_CHANNEL_MAP_MONO, L = SF_CHANNEL_MAP_LEFT, R = SF_CHANNEL_MAP_RIGHT,
              C = SF_CHANNEL_MAP_CENTER, Lfe = SF_CHANNEL_MAP_LFE, Lb = SF_CHANNEL_MAP_REAR_LEFT,
              Rb = SF_CHANNEL_MAP_REAR_RIGHT, Cb = SF_CHANNEL_MAP_REAR_CENTER, Ls = SF_CHANNEL_MAP_SIDE_LEFT,
              Rs = SF_CHANNEL_MAP_SIDE_RIGHT, Lc = SF_CHANNEL_MAP_FRONT_LEFT_OF_CENTER,
              Rc = SF_CHANNEL_MAP_FRONT_RIGHT_OF_CENTER, Lh = SF_CHANNEL_MAP_TOP_FRONT_LEFT,
              Rh = SF_CHANNEL_MAP_TOP_FRONT_RIGHT, Lt = SF_CHANNEL_MAP_TOP_REAR_LEFT,
              Rt = SF_CHANNEL_MAP_TOP_REAR_RIGHT;

struct PositionCase {
    std::vector<int> speakers;     // in file order
    std::string_view layout;       // found
    std::vector<int> fileChannel;  // of each channel of the layout
};

TEST(ChannelMapping, FindsTheLayoutByTheSpeakersOfTheFile) {
    const PositionCase cases[] = {
        {{M}, "mono", {0}},
        {{C}, "mono", {0}},
        {{L, R}, "stereo", {0, 1}},
        {{L, R, C}, "LCR", {0, 1, 2}},
        {{L, C, R}, "LCR", {0, 2, 1}},
        {{L, R, Lb, Rb}, "quad", {0, 1, 2, 3}},
        {{L, R, Ls, Rs}, "quad", {0, 1, 2, 3}},
        {{L, R, C, Cb}, "LCRS", {0, 1, 2, 3}},
        {{L, R, C, Ls, Rs}, "5.0", {0, 1, 3, 4, 2}},
        {{L, R, C, Lfe, Lb, Rb}, "5.1", {0, 1, 4, 5, 2, 3}},
        {{L, R, C, Lfe, Ls, Rs}, "5.1", {0, 1, 4, 5, 2, 3}},
        {{L, C, R, Ls, Rs, Lfe}, "5.1", {0, 2, 3, 4, 1, 5}},
        {{L, R, C, Cb, Ls, Rs}, "6.0", {0, 1, 4, 5, 2, 3}},
        {{L, R, C, Lfe, Cb, Ls, Rs}, "6.1", {0, 1, 5, 6, 2, 4, 3}},
        {{L, R, C, Lb, Rb, Lc, Rc}, "7.0 SDDS", {0, 1, 5, 6, 3, 4, 2}},
        {{L, R, C, Lb, Rb, Ls, Rs}, "7.0", {0, 1, 5, 6, 3, 4, 2}},
        {{L, R, C, Lfe, Lb, Rb, Lc, Rc}, "7.1 SDDS", {0, 1, 6, 7, 4, 5, 2, 3}},
        {{L, R, C, Lfe, Lb, Rb, Ls, Rs}, "7.1", {0, 1, 6, 7, 4, 5, 2, 3}},
        {{L, R, C, Lb, Rb, Ls, Rs, Lh, Rh}, "7.0.2", {0, 1, 5, 6, 3, 4, 7, 8, 2}},
        {{L, R, C, Lfe, Lb, Rb, Ls, Rs, Lt, Rt}, "7.1.2", {0, 1, 6, 7, 4, 5, 8, 9, 2, 3}},
    };
    for (const PositionCase& each : cases) {
        const auto found =
            mapChannels(each.speakers, static_cast<int>(each.speakers.size()), SpeakerOrder::Wave, {});
        EXPECT_EQ(channelLayoutName(found.layout), each.layout);
        EXPECT_EQ(found.fileChannel, each.fileChannel) << each.layout;
        EXPECT_FALSE(found.positionsIgnored) << each.layout;
    }
}

TEST(ChannelMapping, TakesTheUsualOrderWhereAFileNamesNoSpeakers) {
    // Vorbis I specification, 4.3.9; Microsoft, WAVEFORMATEXTENSIBLE.
    const std::pair<SpeakerOrder, std::vector<int>> cases[] = {
        {SpeakerOrder::Wave, {L, R, C, Lfe, Lb, Rb}},
        {SpeakerOrder::Wave, {L, R, C, Lfe, Cb, Ls, Rs}},
        {SpeakerOrder::Wave, {L, R, C, Lfe, Lb, Rb, Ls, Rs}},
        {SpeakerOrder::Vorbis, {L, C, R}},
        {SpeakerOrder::Vorbis, {L, R, Lb, Rb}},
        {SpeakerOrder::Vorbis, {L, C, R, Lb, Rb}},
        {SpeakerOrder::Vorbis, {L, C, R, Lb, Rb, Lfe}},
        {SpeakerOrder::Vorbis, {L, C, R, Ls, Rs, Cb, Lfe}},
        {SpeakerOrder::Vorbis, {L, C, R, Ls, Rs, Lb, Rb, Lfe}}};
    for (const auto& [order, speakers] : cases)
        EXPECT_EQ(mapChannels({}, static_cast<int>(speakers.size()), order, {}).speakers, speakers);
}

TEST(ChannelMapping, EveryLayoutIsFoundAgainInItsOwnStandardOrder) {
    for (ChannelLayout layout = 0; layout < kChannelLayoutCount; ++layout) {
        for (const auto order : {SpeakerOrder::Wave, SpeakerOrder::Vorbis}) {
            const auto speakers = standardSpeakers(layout, order);
            ASSERT_EQ(static_cast<int>(speakers.size()), channelCount(layout));
            const auto found = mapChannels(speakers, channelCount(layout), order, {});
            EXPECT_EQ(found.layout, layout) << channelLayoutName(layout);
            // To another order and back.
            const auto other = sortSpeakers(speakers, SpeakerOrder::Vorbis);
            const auto moved = fileOrder(found, other);
            for (std::size_t i = 0; i < moved.size(); ++i) {
                EXPECT_EQ(other[static_cast<std::size_t>(moved[i])],
                          speakers[static_cast<std::size_t>(found.fileChannel[i])]);
            }
        }
    }
}

TEST(ChannelMapping, TheUserDecidesWhatAFileLeavesOpenAndOverrulesIt) {
    const auto sdds = *findLayout("7.1-sdds");
    EXPECT_EQ(mapChannels({}, 8, SpeakerOrder::Wave, sdds).layout, sdds);
    const std::vector<int> surround{L, R, C, Lfe, Lb, Rb, Ls, Rs};
    const auto overruled = mapChannels(surround, 8, SpeakerOrder::Wave, sdds);
    EXPECT_EQ(overruled.layout, sdds);
    EXPECT_TRUE(overruled.positionsIgnored);
    const std::vector<int> ambisonic{SF_CHANNEL_MAP_AMBISONIC_B_W, SF_CHANNEL_MAP_AMBISONIC_B_X,
                                     SF_CHANNEL_MAP_AMBISONIC_B_Y, SF_CHANNEL_MAP_AMBISONIC_B_Z};
    EXPECT_TRUE(mapChannels(ambisonic, 4, SpeakerOrder::Wave, {}).positionsIgnored);
    const std::vector<int> doubled{L, R, C, L};
    EXPECT_TRUE(mapChannels(doubled, 4, SpeakerOrder::Wave, {}).positionsIgnored);
}

TEST(ChannelMapping, RefusesCountsThatNoLayoutHas) {
    EXPECT_THROW(mapChannels({}, 11, SpeakerOrder::Wave, {}), Failure);
    EXPECT_THROW(mapChannels({}, 2, SpeakerOrder::Wave, findLayout("5.1")), Failure);
    EXPECT_FALSE(findLayout("5.3"));
    EXPECT_TRUE(findLayout("lcr"));
}

}  // namespace
}  // namespace vanta::test
