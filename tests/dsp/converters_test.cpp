#include <gtest/gtest.h>

#include <cmath>
#include <memory>
#include <numbers>
#include <vector>

#include "dsp/sr/converter_filter.hpp"
#include "dsp/sr/converter_style.hpp"
#include "dsp/sr/decimator.hpp"
#include "dsp/sr/interpolator.hpp"
#include "dsp/sr/true_peak_exposer.hpp"
#include "tests/dsp/spectrum.hpp"
#include "tests/support/element_rig.hpp"
#include "tests/support/realtime_trap.hpp"
#include "tests/support/signals.hpp"

namespace vanta {
namespace {

using sr::ConverterStyle;
using test::Signal;

constexpr int kBlock = 256;
constexpr int kFactors[] = {2, 4, 8, 16, 32};
constexpr float kRates[] = {8000.0f,   11025.0f,  16000.0f,   22050.0f,   32000.0f,  44100.0f,
                            48000.0f,  64000.0f,  88200.0f,   96000.0f,   176400.0f, 192000.0f,
                            352800.0f, 384000.0f, 1411200.0f, 12288000.0f};

struct Design {
    float attenuation;
    const char* name;
};
constexpr Design kDesigns[] = {{90.0f, "signal path"}, {60.0f, "peak detection"}};

std::size_t samples(int count) {
    return static_cast<std::size_t>(count);
}

/// Runs a converter over a whole signal in blocks.
Signal convertAll(sr::ConverterBase& converter, const Signal& in, std::size_t inPer, std::size_t outPer,
                  std::span<const int> blocks) {
    Signal out(in.size() / inPer * outPer);
    std::size_t at = 0;
    for (const int block : blocks) {
        EXPECT_TRUE(converter.convert(in.data() + at * inPer, out.data() + at * outPer, block));
        at += samples(block);
    }
    return out;
}

Signal upsample(sr::ConverterBase& up, const Signal& in, int factor) {
    return convertAll(up, in, 1, samples(factor), test::evenBlocks(static_cast<int>(in.size()), kBlock));
}
Signal downsample(sr::ConverterBase& down, const Signal& in, int factor) {
    const int count = static_cast<int>(in.size()) / factor;
    return convertAll(down, in, samples(factor), 1, test::evenBlocks(count, kBlock));
}

/// A tone through an oversampled pair: source, up, down.
struct Pair {
    explicit Pair(int factor, float rate = 44100.0f) : Pair(factor, test::whiteNoise(7, 6000), rate) {}
    Pair(int factor, Signal signal, float rate)
        : source(base, std::move(signal)), up(oversampled, style), down(style) {
        up.source = &source;
        down.source = &up;
        base.setSampleRate(rate);
        oversampled.setFactor(factor);
    }

    Signal run(std::span<const int> blocks) { return test::runElement(base, down, blocks); }

    wave::Environment base{kBlock};
    wave::SubEnvironment oversampled{base};
    ConverterStyle style{oversampled};
    test::VectorSource source;
    sr::InterpolatorFilter up;
    sr::DecimatorFilter down;
};

TEST(HalfBandDesign, givesTheLengthsOfItsWindow) {
    const auto narrow = [](float rate, double attenuation) {
        return sr::halfBandLength(sr::narrowTransition(rate, 20000.0f), attenuation);
    };
    EXPECT_EQ(sr::halfBandLength(sr::kWideTransition, 90.0), 25);
    EXPECT_EQ(narrow(44100.0f, 90.0), 125);
    EXPECT_EQ(narrow(48000.0f, 90.0), 69);
    EXPECT_EQ(narrow(96000.0f, 90.0), 21);
    EXPECT_EQ(sr::halfBandLength(sr::kWideTransition, 60.0), 17);
    EXPECT_EQ(narrow(44100.0f, 60.0), 77);
    // A passband that no filter of sensible length could keep.
    EXPECT_EQ(sr::narrowTransition(8000.0f, 20000.0f), sr::kNarrowestTransition);
    EXPECT_EQ(sr::narrowTransition(44000.0f, 20000.0f), 4000.0f / 44000.0f);
    EXPECT_EQ(sr::narrowTransition(43000.0f, 20000.0f), sr::kNarrowestTransition);
}

struct Response {
    float attenuation;
    float width;
    int length;
    double stopDb;    ///< the least attenuation beyond the transition
    double rippleDb;  ///< the largest deviation from 1 before it
};

// Worked out separately, in double precision with the series of I0 summed to its end. Kaiser's formula errs
// on short filters, and rounding to 4 k + 1 taps moves the edge a little: this is what the lengths really
// give.
constexpr Response kResponses[] = {
    {90.0f, 8000.0f / 48000.0f, 69, -85.64, -84.73},
    {90.0f, 0.168f, 69, -89.83, -89.08},
    {90.0f, 0.5f, 25, -87.80, -83.49},
    {90.0f, 56000.0f / 96000.0f, 21, -87.30, -81.47},
    {60.0f, 4100.0f / 44100.0f, 77, -54.21, -53.51},
    {60.0f, 152000.0f / 192000.0f, 9, -40.67, -38.92},
};

TEST(HalfBandDesign, keepsRippleAndAttenuation) {
    for (const Response& r : kResponses) {
        const auto attenuation = static_cast<double>(r.attenuation);
        const auto set = sr::designHalfBand(sr::halfBandLength(r.width, attenuation), attenuation);
        ASSERT_EQ(set.length, r.length);
        const std::span taps(set.taps.data(), samples(set.length));
        double ripple = 0.0;
        double stop = 0.0;
        for (int i = 0; i <= 800; ++i) {
            // Cycles per sample of the higher rate; the band edge of the lower one is at 0.25.
            const double f = 0.25 * (1.0 - static_cast<double>(r.width)) * i / 800.0;
            const double centre = 2.0 * std::numbers::pi * f * (set.length - 1) / 2;
            ripple = std::max(ripple, std::abs(test::transformAt(taps, f) - std::polar(1.0, -centre)));
            stop = std::max(stop, std::abs(test::transformAt(taps, 0.5 - f)));
        }
        EXPECT_NEAR(test::db(stop), r.stopDb, 0.1) << r.length;
        EXPECT_NEAR(test::db(ripple), r.rippleDb, 0.1) << r.length;
    }
}

TEST(HalfBandDesign, passesDcAtUnityAndSkipsEveryOtherTap) {
    const auto set = sr::designHalfBand(125, 90.0);
    const auto branch = sr::polyphaseBranch(set);
    double full = 0.0;
    double odd = 0.0;
    for (int i = 0; i < set.length; ++i) {
        full += static_cast<double>(set.taps[i]);
        EXPECT_EQ(set.taps[i], set.taps[set.length - 1 - i]);
        EXPECT_EQ(set.taps[i] == 0.0f, i % 2 == 0 && i != 62) << i;
    }
    for (int i = 0; i < branch.length; ++i) odd += static_cast<double>(branch.taps[i]);
    EXPECT_NEAR(full, 1.0, 1e-6);
    EXPECT_EQ(branch.length, 62);
    EXPECT_NEAR(odd, 1.0, 3e-5);  // the ripple of the design
}

TEST(FilterLatency, isWhatTheDesignCosts) {
    const int expected[] = {62, 68, 72, 74, 76};
    for (std::size_t i = 0; i < 5; ++i) {
        EXPECT_EQ(sr::filterLatency(kFactors[i], 44100.0, 90.0, 20000.0), expected[i]);
    }
    EXPECT_EQ(sr::filterLatency(1, 44100.0, 90.0, 20000.0), 0);
}

struct Lag {
    int place;       ///< of the largest sample
    bool symmetric;  ///< around it
};

Lag lagOf(const Signal& response) {
    std::size_t place = 0;
    for (std::size_t i = 0; i < response.size(); ++i) {
        if (std::abs(response[i]) > std::abs(response[place])) place = i;
    }
    bool symmetric = true;
    for (std::size_t k = 1; k <= place && place + k < response.size(); ++k) {
        symmetric = symmetric && std::abs(response[place - k] - response[place + k]) < 1e-6f;
    }
    return {static_cast<int>(place), symmetric};
}

// Other delays rely on it: the way up takes one half of the round trip, the way down the other.
TEST(FilterLatency, isMeasuredInBothDirections) {
    for (const auto& [attenuation, name] : kDesigns) {
        for (const float rate : kRates) {
            for (const int factor : kFactors) {
                SCOPED_TRACE(testing::Message() << name << ", " << rate << " Hz, factor " << factor);
                wave::Environment environment(kBlock);
                environment.setSampleRate(rate);
                ConverterStyle style(environment, factor, attenuation);
                const int latency = style.latency(factor);
                ASSERT_EQ(latency, sr::filterLatency(factor, static_cast<double>(rate),
                                                     static_cast<double>(attenuation), 20000.0));
                ASSERT_EQ(latency % 2, 0);

                sr::Interpolator up(style);
                sr::Decimator down(style);
                const Signal high = upsample(up, test::impulse(samples(2 * latency + 40)), factor);
                const Lag rise = lagOf(high);
                EXPECT_EQ(rise.place, factor * latency / 2);
                EXPECT_TRUE(rise.symmetric);
                EXPECT_EQ(high[samples(rise.place)], 1.0f) << "the input's own samples pass as they are";

                const Lag trip = lagOf(downsample(down, high, factor));
                EXPECT_EQ(trip.place, latency);
                EXPECT_TRUE(trip.symmetric);

                down.update();
                const std::size_t whole = samples(factor * (2 * latency + 40));
                EXPECT_EQ(lagOf(downsample(down, test::impulse(whole), factor)).place, latency / 2);
            }
        }
    }
}

TEST(Converters, keepTheAudioBand) {
    for (const int factor : kFactors) {
        Signal signal(8000);
        for (const double f : {20.0, 440.0, 5000.0, 12000.0, 19500.0}) {
            const Signal tone = test::sine(f, 44100.0, signal.size(), 0.19);
            for (std::size_t i = 0; i < signal.size(); ++i) signal[i] += tone[i];
        }
        Pair pair(factor, signal, 44100.0f);
        const Signal out = pair.run(test::evenBlocks(8000, kBlock));
        const auto latency = samples(pair.style.latency(factor));
        const std::span settled(out.data() + 2 * latency, out.size() - 2 * latency);
        EXPECT_LT(test::nullDb(settled, std::span(signal.data() + latency, settled.size())), -78.0)
            << "factor " << factor;
    }
}

TEST(Converters, rejectImagesAndAliases) {
    for (const int factor : kFactors) {
        wave::Environment environment(kBlock);
        ConverterStyle style(environment, factor);
        sr::Interpolator up(style);
        sr::Decimator down(style);
        const double rate = 44100.0;
        const std::size_t skip = 200;
        const Signal high = upsample(up, test::sine(19000.0, rate, 4200), factor);
        const std::span settled(high.data() + skip * samples(factor), high.size() - skip * samples(factor));
        for (int image = 1; image <= factor / 2; ++image) {
            const double f = image * rate - 19000.0;
            EXPECT_LT(test::db(test::amplitudeAt(settled, f / (rate * factor))), -85.0)
                << "image at " << f << ", factor " << factor;
        }
        for (const double f : {25000.0, 40000.0, 63000.0, 150000.0, 333000.0}) {
            if (f > rate * factor / 2) continue;
            down.update();
            const Signal low = downsample(down, test::sine(f, rate * factor, 4200 * samples(factor)), factor);
            EXPECT_LT(test::db(test::peak(std::span(low.data() + skip, low.size() - skip))), -85.0)
                << "alias of " << f << ", factor " << factor;
        }
    }
}

TEST(Converters, doNotDependOnBlocks) {
    for (const int factor : kFactors) {
        const Signal even = Pair(factor).run(test::evenBlocks(6000, kBlock));
        EXPECT_EQ(even, Pair(factor).run(test::randomBlocks(6000, kBlock, 3))) << "factor " << factor;
        EXPECT_EQ(even, Pair(factor).run(test::evenBlocks(6000, 1))) << "factor " << factor;
    }
}

TEST(Converters, startAfreshAfterResetAndChanges) {
    const auto blocks = test::evenBlocks(3000, 100);
    for (const int factor : kFactors) {
        const Signal fresh = Pair(factor).run(blocks);
        Pair pair(factor);
        pair.run(blocks);
        pair.source.rewind();
        pair.base.resetGraph(wave::ResetMode::ResetActive);
        EXPECT_EQ(pair.run(blocks), fresh);

        // Another factor and back, another rate and back.
        pair.oversampled.setFactor(factor == 4 ? 8 : 4);
        pair.run(blocks);
        pair.base.setSampleRate(96000.0f);
        pair.run(blocks);
        pair.base.setSampleRate(44100.0f);
        pair.oversampled.setFactor(factor);
        pair.source.rewind();
        EXPECT_EQ(pair.run(blocks), fresh);
    }
}

// A side chain that was switched away must not come back with what it heard then.
TEST(Converters, forgetAStreamThatWasInterrupted) {
    const auto blocks = test::evenBlocks(1000, 100);
    Pair pair(4);
    pair.run(blocks);
    pair.base.advanceTick();
    pair.base.run(100, 0);
    pair.source.rewind();
    EXPECT_EQ(pair.run(blocks), Pair(4).run(blocks));
}

TEST(Converters, handOnTheirInputAtFactorOne) {
    Pair pair(1);
    test::runElement(pair.base, pair.down, {64, 64});
    EXPECT_EQ(&pair.up.current(), &pair.source.current());
    EXPECT_EQ(&pair.down.current(), &pair.source.current());
    EXPECT_EQ(pair.style.latency(1), 0);
}

TEST(Converters, followAStyleOfTheirOwn) {
    wave::Environment environment(kBlock);
    ConverterStyle style(environment, 2);
    test::VectorSource source(environment, test::whiteNoise(1, 500));
    sr::DecimatorFilter down(style);
    down.source = &source;
    style.update();
    const float* taps = style.set(ConverterStyle::NarrowFull).taps.data();
    environment.setSampleRate(44100.0f);
    style.update();
    EXPECT_EQ(style.set(ConverterStyle::NarrowFull).taps.data(), taps) << "the same rate designs nothing";
    style.setFactor(8);
    EXPECT_EQ(style.factor(), 8);
    EXPECT_EQ(style.maxFactor(), 32);
    style.attenuation = 60.0f;
    style.update();
    EXPECT_EQ(style.set(ConverterStyle::NarrowFull).length, 77);
    EXPECT_EQ(style.set(ConverterStyle::WideBranch).length, 8);
}

TEST(Converters, leaveTheSystemAloneWhileTheyRun) {
    Pair pair(32);
    sr::TruePeakExposer::Style style(pair.oversampled);
    sr::TruePeakExposer exposer(pair.oversampled, style);
    exposer.source = &pair.up;
    wave::Producer* const elements[] = {&pair.down, &exposer};
    test::RealtimeTrap trap;
    for (int block = 0; block < 20; ++block) {
        test::runBlock(pair.base, elements, 1 + 13 * block, [](int) {});
        const RealtimeScope audio;
        if (block % 5 == 0) pair.base.resetGraph(wave::ResetMode::ResetActive);
    }
    EXPECT_EQ(trap.total(), 0) << trap.report();
}

TEST(SkipDecimator, takesOneOfEachGroup) {
    for (const int factor : kFactors) {
        wave::Environment base(kBlock);
        wave::SubEnvironment oversampled(base);
        ConverterStyle style(oversampled);
        const Signal signal = test::whiteNoise(3, samples(300 * factor));
        test::VectorSource source(oversampled, signal);
        sr::SkipDecimatorFilter first(style), largest(style, sr::SkipDecimator::LargestMagnitude),
            smallest(style);
        smallest.mode = sr::SkipDecimator::Smallest;
        first.source = largest.source = smallest.source = &source;
        oversampled.setFactor(factor);
        wave::Producer* const elements[] = {&first, &largest, &smallest};
        const auto out = test::runElements(base, elements, test::evenBlocks(300, 100));
        for (std::size_t i = 0; i < 300; ++i) {
            const std::span group(signal.data() + i * samples(factor), samples(factor));
            ASSERT_EQ(out[0][i], group[0]);
            ASSERT_EQ(out[1][i], static_cast<float>(test::peak(group)));
            ASSERT_EQ(out[2][i], *std::min_element(group.begin(), group.end()));
        }
    }
}

TEST(SkipDecimator, keepsAConstantConstant) {
    wave::Environment base(kBlock);
    wave::SubEnvironment oversampled(base);
    oversampled.setFactor(8);
    ConverterStyle style(oversampled);
    test::VectorSource source(oversampled, Signal(800, 1.0f), test::ConstantFlag::WhereTrue);
    sr::SkipDecimatorFilter smallest(style, sr::SkipDecimator::Smallest);
    smallest.source = &source;
    const Signal out = test::runElement(base, smallest, {100});
    EXPECT_TRUE(smallest.isConstant());
    EXPECT_EQ(out, Signal(100, 1.0f));
}

}  // namespace
}  // namespace vanta
