#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include "tests/support/limiter_rig.hpp"

namespace vanta::test {
namespace {

constexpr int kRates[] = {44100, 48000, 88200, 96000, 176400, 192000};
constexpr int kPassbandHz = 20000;

// The delays of the signal path once more, worked out in whole numbers where the limiter works in floating
// point: one second of R samples holds R * 5 / 1000 of 5 ms.

/// Taps of a half-band filter after Kaiser, for a transition width as a share of the lower rate.
int halfBandTaps(double transition, double attenuationDb) {
    const int order = static_cast<int>(2.0 * (attenuationDb - 7.95) / 14.36 / transition) + 2;
    return std::max(order - order % 4 + 1, 5);
}

/// Up by `factor` and down again, in samples of `rate`. Each stage is padded to whole samples of that rate.
int roundTrip(int factor, long rate, double attenuationDb) {
    const double narrow = static_cast<double>(rate - 2 * kPassbandHz) / static_cast<double>(rate);
    int total = 0;
    for (int ratio = 2; ratio <= factor; ratio *= 2) {
        const int taps = halfBandTaps(ratio == 2 ? std::max(narrow, 0.09) : 0.5, attenuationDb);
        total += 2 * ((taps / 2 + ratio - 1) / ratio);
    }
    return total;
}

/// One half of the round trip that looks for peaks between the samples.
int peakSearchDelay(long rate) {
    int factor = 8;
    while (factor > 2 && factor * rate > 384001) factor /= 2;
    return roundTrip(factor, rate, 60.0) / 2;
}

struct Stages {
    int lookAheads, convolvers, clippers;
};
constexpr Stages stagesOf(Style style) {
    switch (style) {
        case Style::Dynamic:
            return {2, 2, 0};
        case Style::Aggressive:
        case Style::Bus:
            return {1, 1, 1};
        case Style::Modern:
            return {2, 0, 1};
        case Style::Safe:
            return {1, 0, 1};
        default:
            return {1, 1, 0};
    }
}

int overshootDelay(long base, int factor, bool truePeak) {
    if (factor < 2 && !truePeak) return 0;
    return 128 + static_cast<int>(base * 133 / 100000) + (truePeak ? peakSearchDelay(base) : 0);
}

int expectedLatency(Style style, long base, int factor, bool truePeak) {
    const long rate = base * factor;
    const Stages stages = stagesOf(style);
    const long engine = rate * 50 / 1000 * stages.clippers + rate * 5 / 1000 * stages.lookAheads +
                        256 * stages.convolvers + (truePeak ? peakSearchDelay(rate) : 0);
    const long whole = (engine + factor - 1) / factor;
    return roundTrip(factor, base, 90.0) + overshootDelay(base, factor, truePeak) + static_cast<int>(whole);
}

/// Calls `body(setup)` for every rate, style, factor and state of True Peak Limiting.
template <typename Body>
void forEverySetup(Body&& body) {
    for (const double rate : kRates) {
        for (const Style style : kStyles) {
            for (int index = 0; index <= 5; ++index) {
                for (const bool truePeak : {false, true}) {
                    LimiterSetup setup{.style = style,
                                       .oversamplingIndex = index,
                                       .truePeak = truePeak,
                                       .rate = rate,
                                       .layout = kMonoLayout};
                    body(setup);
                }
            }
        }
    }
}

int expectedLatency(const LimiterSetup& setup) {
    return expectedLatency(setup.style, static_cast<long>(setup.rate), setup.factor(), setup.truePeak);
}

TEST(Latency, IsTheSumOfItsParts) {
    EXPECT_EQ(expectedLatency(Style::Transparent, 44100, 1, false), 476);
    EXPECT_EQ(expectedLatency(Style::Safe, 44100, 1, false), 2425);
    EXPECT_EQ(overshootDelay(44100, 2, false), 186);
    EXPECT_EQ(roundTrip(2, 44100, 90.0), 62);
    EXPECT_EQ(roundTrip(32, 44100, 90.0), 76);
}

/// Where an impulse comes out. The whole path is of linear phase: what surrounds the peak is symmetric.
void expectImpulseAt(const Signal& out, std::size_t place) {
    const auto largest = std::max_element(out.begin(), out.end());
    ASSERT_EQ(static_cast<std::size_t>(largest - out.begin()), place);
    for (std::size_t k = 1; k < 64; ++k) ASSERT_NEAR(out[place + k], out[place - k], 1e-6) << k;
}

TEST(Latency, IsReportedBeforeTheFirstBlockAndIsTheDelayOfTheAudio) {
    forEverySetup([&](const LimiterSetup& setup) {
        SCOPED_TRACE(describe(setup));
        constexpr std::size_t kStart = 100;
        const auto late = static_cast<std::size_t>(expectedLatency(setup));
        LimiterRig rig(setup);
        ASSERT_EQ(rig.latency(), late);
        expectImpulseAt(rig.process({impulse(kStart + late + 128, kStart, 0.25)}, 256)[0], kStart + late);
    });
}

TEST(Latency, FollowsEveryChangeOfTheSettings) {
    LimiterSetup setup{.layout = kMonoLayout};
    LimiterRig rig(setup);
    Random random(17);
    for (int i = 0; i < 24; ++i) {
        setup.style = static_cast<Style>(random.between(0, kStyleCount - 1));
        setup.oversamplingIndex = random.between(0, 3);
        setup.truePeak = random.between(0, 1) == 1;
        SCOPED_TRACE(describe(setup));
        rig.limiter().style.setMapped(setup.style);
        rig.limiter().oversampling.setValue(static_cast<float>(setup.oversamplingIndex), 0);
        rig.limiter().truePeakLimiting.setMapped(setup.truePeak);
        // On the thread that sets a parameter: a host reads the latency right afterwards.
        ASSERT_EQ(rig.limiter().latency(), expectedLatency(setup));
        const auto late = static_cast<std::size_t>(expectedLatency(setup));
        // Filters and fades of the new path have settled before the impulse.
        const std::size_t start = late + 20000;
        expectImpulseAt(rig.process({impulse(start + late + 128, start, 0.25)}, 300)[0], start + late);
    }
}

}  // namespace
}  // namespace vanta::test
