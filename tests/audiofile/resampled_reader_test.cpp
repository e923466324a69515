#include "audiofile/resampled_reader.hpp"

#include <gtest/gtest.h>

#include <limits>

#include "tests/support/memory_audio.hpp"

namespace vanta::test {
namespace {

Signal converted(const Signal& signal, double from, double to, std::int64_t* notFinite = nullptr) {
    MemoryReader source({signal});
    ResampledReader reader(source, static_cast<std::int64_t>(signal.size()), from, to);
    Signal result;
    Signal piece(777);
    float* const pointer = piece.data();
    for (std::size_t got = piece.size(); got == piece.size();) {
        got = reader.read(std::span(&pointer, 1), piece.size());
        result.insert(result.end(), piece.begin(), piece.begin() + static_cast<std::ptrdiff_t>(got));
    }
    if (notFinite) *notFinite = reader.notFinite();
    return result;
}

/// Without the ends, where a filter meets the silence around a signal.
std::span<const float> middle(const Signal& signal) {
    return std::span(signal).subspan(signal.size() / 8, signal.size() * 3 / 4);
}

TEST(ResampledReader, KeepsPlaceLevelAndLengthAtAnyRate) {
    constexpr std::size_t kFrames = 96000;
    for (const double from : {8000.0, 44100.0, 48000.0, 96000.0}) {
        for (const double to : {8000.0, 22050.0, 44100.0, 48000.0, 88200.0, 192000.0}) {
            const double hertz = 0.4 * std::min(from, to);
            const Signal result = converted(sine(hertz, from, kFrames, 0.5, 1.0), from, to);
            ASSERT_EQ(static_cast<std::int64_t>(result.size()), ResampledReader::framesAt(kFrames, from, to));
            const Signal ideal = sine(hertz, to, result.size(), 0.5, 1.0);
            EXPECT_LT(nullDb(middle(result), middle(ideal)), -110.0) << from << " to " << to;
        }
    }
}

TEST(ResampledReader, LeavesNothingOfWhatTheLowerRateCannotHold) {
    for (const double hertz : {22100.0, 23000.0, 23900.0}) {
        const Signal result = converted(sine(hertz, 48000, 96000, 0.5), 48000, 44100);
        EXPECT_LT(db(rms(middle(result))), -120.0) << hertz;
    }
}

TEST(ResampledReader, CountsWhatIsNoNumberAndKeepsItFromTheRest) {
    Signal signal = sine(997, 48000, 48000, 0.5);
    signal[20000] = std::numeric_limits<float>::quiet_NaN();
    signal[20001] = std::numeric_limits<float>::infinity();
    std::int64_t notFinite = 0;
    const Signal result = converted(signal, 48000, 44100, &notFinite);
    EXPECT_EQ(notFinite, 2);
    for (const float sample : result) ASSERT_TRUE(std::isfinite(sample));
}

}  // namespace
}  // namespace vanta::test
