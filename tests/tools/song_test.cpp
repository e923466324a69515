#include "tools/song/song.hpp"

#include <ebur128.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <stdexcept>

namespace vanta::test {
using namespace song;
namespace {

double integratedLoudness(const Song& song) {
    ebur128_state* meter = ebur128_init(2, static_cast<unsigned long>(song.sampleRate), EBUR128_MODE_I);
    for (std::size_t i = 0; i < song.left.size(); ++i) {
        const float frame[]{song.left[i], song.right[i]};
        ebur128_add_frames_float(meter, frame, 1);
    }
    double result = 0;
    ebur128_loudness_global(meter, &result);
    ebur128_destroy(&meter);
    return result;
}

TEST(Song, IsAnUnmasteredMixAtEveryRate) {
    for (const int rate : {44100, 96000}) {
        const Song song = renderSong(loadDemoScore(), rate);
        float peak = 0;
        for (const auto* channel : {&song.left, &song.right}) {
            for (const float x : *channel) {
                ASSERT_TRUE(std::isfinite(x));
                peak = std::max(peak, std::abs(x));
            }
        }
        EXPECT_NEAR(20 * std::log10(peak), -3, 0.7) << "peak in dBFS at " << rate << " Hz";
        EXPECT_NEAR(integratedLoudness(song), -18.6, 0.3) << "LUFS at " << rate << " Hz";
    }
}

TEST(Song, EachRenderGivesTheSameBits) {
    const Song first = renderSong(loadDemoScore(), 44100, 3), second = renderSong(loadDemoScore(), 44100, 3);
    EXPECT_EQ(first.left, second.left);
    EXPECT_EQ(first.right, second.right);
    EXPECT_THROW(renderSong(loadDemoScore(), 7999), std::invalid_argument);
    EXPECT_THROW(renderSong(loadDemoScore(), 48000, 0), std::invalid_argument);
}

TEST(Score, FaultsAreNamedWithTheirLine) {
    const std::string keys = "tempo 60\ninstrument a keys\nsection x 1 bar\n";
    const std::pair<std::string, const char*> faults[]{
        {"", "no section"},
        {"tempo fast\n", "score:1: tempo cannot be 'fast': use a number from 20 to 400"},
        {"\ntempo 5\n", "score:2: tempo cannot be 5: use 20 to 400"},
        {"instrument a banjo\n", "score:1: unknown kind 'banjo'"},
        {keys + "a C4:3\n", "score:4: bar 1 has 3 beats instead of 4"},
        {keys + "a H4:4\n", "score:4: 'H4' is not a pitch"},
        {keys + "a C4:2~ D4:2\n", "score:4: 'D4:2' has other pitches"},
    };
    for (const auto& [text, message] : faults) {
        try {
            parseScore(text);
            ADD_FAILURE() << "accepted:\n" << text;
        } catch (const ScoreError& error) {
            EXPECT_THAT(error.what(), testing::HasSubstr(message)) << text;
        }
    }
    EXPECT_THROW(loadScore("/no/such.score"), ScoreError);
}

}  // namespace
}  // namespace vanta::test
