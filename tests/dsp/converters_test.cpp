#include <gtest/gtest.h>

#include <cmath>
#include <numbers>
#include <vector>

#include "dsp/sr/converter_filter.hpp"
#include "dsp/sr/converter_style.hpp"
#include "dsp/sr/decimator.hpp"
#include "dsp/sr/interpolator.hpp"
#include "dsp/sr/true_peak_exposer.hpp"
#include "tests/support/element_rig.hpp"
#include "tests/support/instruction_sets.hpp"
#include "tests/support/signals.hpp"

namespace vanta::test {
namespace {

using sr::ConverterStyle;

constexpr int kBlock = 256;
constexpr int kFactors[] = {2, 4, 8, 16, 32};
constexpr float kRates[] = {8000.0f,   11025.0f,  16000.0f,   22050.0f,   32000.0f,  44100.0f,
                            48000.0f,  64000.0f,  88200.0f,   96000.0f,   176400.0f, 192000.0f,
                            352800.0f, 384000.0f, 1411200.0f, 12288000.0f};

std::size_t samples(int count) {
    return static_cast<std::size_t>(count);
}

/// Runs a converter over a whole signal in blocks.
Signal convertAll(sr::ConverterBase& converter, const Signal& in, std::size_t inPer, std::size_t outPer) {
    Signal out(in.size() / inPer * outPer);
    std::size_t at = 0;
    for (const int block : evenBlocks(static_cast<int>(in.size() / inPer), kBlock)) {
        EXPECT_TRUE(converter.convert(in.data() + at * inPer, out.data() + at * outPer, block));
        at += samples(block);
    }
    return out;
}

Signal upsample(sr::ConverterBase& up, const Signal& in, int factor) {
    return convertAll(up, in, 1, samples(factor));
}
Signal downsample(sr::ConverterBase& down, const Signal& in, int factor) {
    return convertAll(down, in, samples(factor), 1);
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

TEST(HalfBandDesign, KeepsRippleAndAttenuation) {
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
            ripple = std::max(ripple, std::abs(transformAt(taps, f) - std::polar(1.0, -centre)));
            stop = std::max(stop, std::abs(transformAt(taps, 0.5 - f)));
        }
        EXPECT_NEAR(db(stop), r.stopDb, 0.1) << r.length;
        EXPECT_NEAR(db(ripple), r.rippleDb, 0.1) << r.length;
    }
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
TEST(FilterLatency, IsMeasuredInBothDirections) {
    // Of the signal path, and of the search for peaks.
    for (const float attenuation : {90.0f, 60.0f}) {
        for (const float rate : kRates) {
            for (const int factor : kFactors) {
                SCOPED_TRACE(testing::Message()
                             << attenuation << " dB, " << rate << " Hz, factor " << factor);
                wave::Environment environment(kBlock);
                environment.setSampleRate(rate);
                ConverterStyle style(environment, factor, attenuation);
                const int latency = style.latency(factor);
                ASSERT_EQ(latency, sr::filterLatency(factor, static_cast<double>(rate),
                                                     static_cast<double>(attenuation), 20000.0));
                ASSERT_EQ(latency % 2, 0);

                sr::Interpolator up(style);
                sr::Decimator down(style);
                const Signal high = upsample(up, impulse(samples(2 * latency + 40)), factor);
                const Lag rise = lagOf(high);
                EXPECT_EQ(rise.place, factor * latency / 2);
                EXPECT_TRUE(rise.symmetric);
                EXPECT_EQ(high[samples(rise.place)], 1.0f) << "the input's own samples pass as they are";

                const Lag trip = lagOf(downsample(down, high, factor));
                EXPECT_EQ(trip.place, latency);
                EXPECT_TRUE(trip.symmetric);

                down.update();
                const std::size_t whole = samples(factor * (2 * latency + 40));
                EXPECT_EQ(lagOf(downsample(down, impulse(whole), factor)).place, latency / 2);
            }
        }
    }
}

TEST(Converters, RejectImagesAndAliases) {
    for (const int factor : kFactors) {
        wave::Environment environment(kBlock);
        ConverterStyle style(environment, factor);
        sr::Interpolator up(style);
        sr::Decimator down(style);
        const double rate = 44100.0;
        const std::size_t skip = 200;
        const Signal high = upsample(up, sine(19000.0, rate, 4200), factor);
        const std::span settled(high.data() + skip * samples(factor), high.size() - skip * samples(factor));
        for (int image = 1; image <= factor / 2; ++image) {
            const double f = image * rate - 19000.0;
            EXPECT_LT(db(amplitudeAt(settled, f / (rate * factor))), -85.0)
                << "image at " << f << ", factor " << factor;
        }
        for (const double f : {25000.0, 40000.0, 63000.0, 150000.0, 333000.0}) {
            if (f > rate * factor / 2) continue;
            down.update();
            const Signal low = downsample(down, sine(f, rate * factor, 4200 * samples(factor)), factor);
            EXPECT_LT(db(peak(std::span(low.data() + skip, low.size() - skip))), -85.0)
                << "alias of " << f << ", factor " << factor;
        }
    }
}

TEST(SkipDecimator, TakesOneOfEachGroupOnEveryInstructionSet) {
    const auto check = [](int factor) {
        wave::Environment base(kBlock);
        wave::SubEnvironment oversampled(base);
        oversampled.setFactor(factor);
        ConverterStyle style(oversampled);
        const Signal signal = whiteNoise(3, samples(1000 * factor));
        VectorSource source(oversampled, signal);
        using sr::SkipDecimator;
        sr::SkipDecimatorFilter first(style), largest(style, SkipDecimator::LargestMagnitude),
            smallest(style, SkipDecimator::Smallest);
        first.source = largest.source = smallest.source = &source;
        wave::Producer* const elements[] = {&first, &largest, &smallest};
        const auto out = runElements(base, elements, randomBlocks(1000, 70, 8));
        for (std::size_t i = 0; i < 1000; ++i) {
            const std::span group(signal.data() + i * samples(factor), samples(factor));
            ASSERT_EQ(out[0][i], group[0]) << factor;
            ASSERT_EQ(out[1][i], static_cast<float>(peak(group))) << factor;
            ASSERT_EQ(out[2][i], *std::min_element(group.begin(), group.end())) << factor;
        }
    };
    forEachInstructionSet([&](const char* name) {
        SCOPED_TRACE(name);
        for (const int factor : kFactors) check(factor);
    });
}

// --- TruePeakExposer ---

struct Rig {
    Rig(float rate, Signal signal) : source(environment, std::move(signal)) {
        environment.setSampleRate(rate);
        exposer.source = &source;
    }
    Signal run(int count, int block = 256) {
        return runElement(environment, exposer, evenBlocks(count, block));
    }
    std::size_t delay() const { return static_cast<std::size_t>(style.delay()); }

    wave::Environment environment{256};
    sr::TruePeakExposer::Style style{environment};
    VectorSource source;
    sr::TruePeakExposer exposer{environment, style};
};

// Output n speaks of the time from sample n - delay to the next sample: a limiter that looks ahead by the
// delay has to find each crest in its place.
TEST(TruePeakExposer, PutsEachCrestInItsPlace) {
    // The shorter the filter, the larger its ripple.
    const std::pair<float, double> cases[] = {{44100.0f, 0.003}, {96000.0f, 0.004}, {192000.0f, 0.012}};
    for (const auto& [rate, tolerance] : cases) {
        const double frequencies[] = {313.0, 4111.0, 11003.0, 18007.0};
        const auto value = [&, rate = rate](double t) {
            double sum = 0.0;
            for (const double f : frequencies)
                sum += 0.25 * std::sin(2.0 * std::numbers::pi * f * t / double{rate});
            return sum;
        };
        Signal signal;
        for (int n = 0; n < 3000; ++n) signal.push_back(static_cast<float>(value(n)));
        Rig rig(rate, signal);
        const Signal out = rig.run(3000);
        for (std::size_t n = 300; n + rig.delay() < out.size(); ++n) {
            double crest = 0.0;
            for (int k = 0; k < rig.style.factor(); ++k) {
                const double place = static_cast<double>(n) + double(k) / rig.style.factor();
                crest = std::max(crest, std::abs(value(place)));
            }
            ASSERT_NEAR(static_cast<double>(out[n + rig.delay()]), crest, tolerance) << n << " at " << rate;
        }
    }
}

TEST(TruePeakExposer, GoesOnAfterARestAsIfItHadNeverRested) {
    for (const float rate : {8000.0f, 44100.0f, 96000.0f, 384000.0f}) {
        const Signal tone = sine(0.02 * double{rate}, double{rate}, 4000, 0.95, 1.0);
        Rig always(rate, tone), switched(rate, tone);
        // The shortest rests leave less behind than the filters are long.
        for (const int rest : {1, 7, 40, 700}) {
            const Signal expected = always.run(rest + 97, 31);
            switched.exposer.enabled = false;
            const Signal plain = switched.run(rest, 31);
            EXPECT_LE(peak(plain), 0.95);
            switched.exposer.enabled = true;
            const Signal out = switched.run(97, 31);
            EXPECT_TRUE(std::equal(out.begin(), out.end(), expected.begin() + rest))
                << rest << " at " << rate;
        }
    }
}

TEST(TruePeakExposer, IsNeverBelowASample) {
    for (const float rate : {8000.0f, 44100.0f, 96000.0f, 192000.0f, 384000.0f}) {
        const Signal noise = whiteNoise(5, 3000);
        Rig rig(rate, noise);
        const Signal out = rig.run(3000, 77);
        for (std::size_t n = 0; n + rig.delay() < out.size(); ++n) {
            ASSERT_GE(out[n + rig.delay()], std::abs(noise[n]));
        }
    }
}

// What may be left out depends on the signal: all kinds, at all levels, in blocks of all lengths.
TEST(TruePeakExposer, LeavesOutOnlyWhatNobodyAskedFor) {
    for (const float rate : {8000.0f, 44100.0f, 96000.0f, 192000.0f}) {
        Signal signal = pinkNoise(3, 20000, 0.25);
        const Signal tones[] = {sine(0.01 * double{rate}, double{rate}, 5000, 0.9),
                                sine(0.249 * double{rate}, double{rate}, 5000, 0.8), whiteNoise(9, 3000),
                                square(0.004 * double{rate}, double{rate}, 5000, 0.7)};
        for (const Signal& tone : tones) signal.insert(signal.end(), tone.begin(), tone.end());
        const auto count = static_cast<int>(signal.size());
        const auto blocks = randomBlocks(count, 256, 17);
        Rig whole(rate, signal), highest(rate, signal), above(rate, signal);
        highest.exposer.detail = sr::TruePeakExposer::Highest;
        wave::FloatParameterSource floor(above.environment, 0.6f);
        above.exposer.floor = &floor;
        const Signal peaks = runElement(whole.environment, whole.exposer, blocks);
        const Signal highs = runElement(highest.environment, highest.exposer, blocks);
        const Signal heights = runElement(above.environment, above.exposer, blocks);
        std::size_t leftOut = 0;
        for (std::size_t i = 0; i < peaks.size(); ++i) {
            ASSERT_LE(highs[i], peaks[i]) << i << " at " << rate;
            if (peaks[i] > 0.6f) {
                ASSERT_EQ(heights[i], peaks[i]) << i << " at " << rate;
            } else {
                ASSERT_LE(heights[i], 0.6f) << i << " at " << rate;
            }
            leftOut += heights[i] != peaks[i] ? 1 : 0;
        }
        EXPECT_GT(leftOut, peaks.size() / 4);
        std::size_t begin = 0;
        for (const int length : blocks) {
            const std::size_t end = begin + static_cast<std::size_t>(length);
            const auto highestOf = [&](const Signal& s) {
                return *std::max_element(s.begin() + static_cast<std::ptrdiff_t>(begin),
                                         s.begin() + static_cast<std::ptrdiff_t>(end));
            };
            ASSERT_EQ(highestOf(highs), highestOf(peaks)) << begin << " at " << rate;
            begin = end;
        }
    }
}

}  // namespace
}  // namespace vanta::test
