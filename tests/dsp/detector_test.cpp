#include "dsp/detector.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <memory>
#include <random>
#include <vector>

#include "tests/support/element_rig.hpp"

namespace vanta {
namespace {

using test::ConstantFlag;
using test::VectorSource;

constexpr int kBlock = 256;
constexpr int kTotal = 2000;

struct Settings {
    int domain, purpose, kneeStyle;
};

/// One value a sample for each control.
struct Curves {
    std::vector<float> knee, threshold, hysteresis, ratio, limit;
};

double soft(double d, double k) {
    return k > 1.1920929e-7 && std::abs(d) <= k / 2 ? std::pow((k / 2 + d) / k, 2) * (k / 2) : d;
}

/// The gain computer sample by sample, as its curves are defined.
std::vector<double> reference(const Settings& s, const Curves& c, const std::vector<float>& in) {
    std::vector<double> out;
    bool open = false;
    for (std::size_t i = 0; i < in.size(); ++i) {
        const bool amplitude = s.domain == GainChangeDomain::Amplitude;
        const double x = in[i], t = c.threshold[i], k = c.knee[i], r = c.ratio[i];
        const auto levelOf = [](double a) {
            return std::abs(a) <= 1e-10 ? -180.0 : std::max(20 * std::log10(std::abs(a)), -180.0);
        };
        const double level = amplitude ? levelOf(x) : x;
        double g = 0.0;
        if (s.kneeStyle == Detector::Clipping) {
            const double a = amplitude ? x : std::pow(10, x / 20);
            g = t < -1.1920929e-7 ? levelOf(1 + std::abs(a * (std::pow(10, -t / 20) - 1))) : 0.0;
        } else if (s.purpose == Detector::Compress) {
            g = soft(level - t, k) * (r < 100 ? 1 - 1 / r : 1.0);
        } else if (s.purpose == Detector::ExpandUp) {
            g = soft(level - t, k) * (r - 1);
        } else {
            const double d = t - level;
            if (!open && d < 0) {
                open = true;
            } else if (open && d > c.hysteresis[i]) {
                open = false;
            }
            g = open ? 0.0 : soft(d - k / 2, k) * (r - 1);
        }
        g = std::max(std::min<double>(g, c.limit[i]), 0.0);
        if (amplitude) {
            const bool takesAway = s.kneeStyle == Detector::Clipping || s.purpose == Detector::Compress;
            const double e = std::pow(10, (!takesAway && s.purpose == Detector::ExpandUp ? g : -g) / 20);
            g = takesAway ? 1 - e : e;
        }
        out.push_back(g);
    }
    return out;
}

/// A detector whose controls play vectors.
struct Rig {
    explicit Rig(const Settings& s, std::vector<float> in, const Curves& c,
                 ConstantFlag flag = ConstantFlag::WhereTrue)
        : input(environment, std::move(in)),
          controls{{environment, c.knee, flag},
                   {environment, c.threshold, flag},
                   {environment, c.hysteresis, flag},
                   {environment, c.ratio, flag},
                   {environment, c.limit, flag}},
          detector(environment) {
        detector.source = &input;
        detector.domain = s.domain;
        detector.purpose = s.purpose;
        detector.kneeStyle = s.kneeStyle;
        FloatParameterBus* const buses[] = {&detector.knee, &detector.threshold, &detector.hysteresis,
                                            &detector.ratio, &detector.limit};
        for (std::size_t i = 0; i < std::size(buses); ++i) buses[i]->setSource(&controls[i]);
    }
    std::vector<float> run(const std::vector<int>& blocks) {
        return test::runElement(environment, detector, blocks);
    }

    wave::Environment environment{kBlock};
    VectorSource input;
    VectorSource controls[5];
    Detector detector;
};

std::vector<float> constant(float value) {
    return std::vector<float>(kTotal, value);
}

std::vector<float> wandering(float low, float high, unsigned seed) {
    std::mt19937 random(seed);
    std::uniform_real_distribution<float> spread(low, high);
    std::vector<float> values(kTotal);
    for (float& value : values) value = spread(random);
    return values;
}

std::vector<float> inputFor(int domain) {
    std::vector<float> in = wandering(-100.0f, 10.0f, 7);
    if (domain != GainChangeDomain::Amplitude) return in;
    for (std::size_t i = 0; i < in.size(); ++i) {
        in[i] = std::pow(10.0f, in[i] / 20.0f) * (i % 3 ? 1.0f : -1.0f);
        if (i % 50 == 0) in[i] = 0.0f;
    }
    return in;
}

std::vector<Settings> allSettings() {
    std::vector<Settings> all;
    for (int domain : {0, 1}) {
        for (int purpose : {0, 1, 2}) {
            for (int style : {0, 1}) all.push_back({domain, purpose, style});
        }
    }
    return all;
}

// Ratio and slope of an expander multiply the rounding of a level of up to 180 dB.
void expectReference(const Settings& s, const Curves& c, ConstantFlag flag) {
    const auto in = inputFor(s.domain);
    const auto expected = reference(s, c, in);
    Rig rig(s, in, c, flag);
    const auto out = rig.run(test::randomBlocks(kTotal, kBlock, 3));
    for (std::size_t i = 0; i < out.size(); ++i) {
        const double scale = std::max(1.0, std::abs(expected[i]));
        const double slope = s.purpose == Detector::Compress ? 1.0 : c.ratio[i];
        const double tolerance =
            s.domain == GainChangeDomain::Amplitude ? 4e-6 * slope * scale : 6.5e-5 * slope;
        ASSERT_NEAR(out[i], expected[i], tolerance)
            << "sample " << i << " of " << in[i] << ", domain " << s.domain << ", purpose " << s.purpose
            << ", knee style " << s.kneeStyle;
    }
}

TEST(Detector, FollowsItsCurvesInEverySetting) {
    for (const Settings& s : allSettings()) {
        for (const float knee : {0.0f, 12.0f}) {
            for (const float ratio : {1.5f, 4.0f, 100.0f}) {
                for (const float limit : {180.0f, 18.0f}) {
                    // An upward expander of 100:1 reaches beyond what a float can hold.
                    if (ratio > 50.0f && s.purpose != Detector::Compress) continue;
                    const Curves c = {constant(knee), constant(-30.0f), constant(5.0f), constant(ratio),
                                      constant(limit)};
                    expectReference(s, c, ConstantFlag::WhereTrue);
                    // The flag selects other code, never another result.
                    expectReference(s, c, ConstantFlag::Never);
                    Curves moving = c;
                    moving.threshold = wandering(-60.0f, 0.0f, 8);
                    expectReference(s, moving, ConstantFlag::WhereTrue);
                }
            }
        }
        const Curves all = {wandering(0.0f, 20.0f, 1), wandering(-60.0f, 3.0f, 2), wandering(0.0f, 9.0f, 3),
                            wandering(1.0f, 5.0f, 4), wandering(0.0f, 40.0f, 5)};
        expectReference(s, all, ConstantFlag::WhereTrue);
    }
}

TEST(Detector, GivesTheSameForAnyBlocks) {
    for (const Settings& s : allSettings()) {
        const Curves c = {constant(6.0f), constant(-30.0f), constant(10.0f), constant(3.0f), constant(60.0f)};
        const auto in = inputFor(s.domain);
        const auto whole = Rig(s, in, c).run(test::evenBlocks(kTotal, kBlock));
        EXPECT_EQ(Rig(s, in, c).run(test::evenBlocks(kTotal, 1)), whole);
        EXPECT_EQ(Rig(s, in, c).run(test::randomBlocks(kTotal, 19, 5)), whole);
    }
}

/// A detector on its own values, run over one short block.
struct Single {
    Single(const Settings& s, std::vector<float> in)
        : count(static_cast<int>(in.size())), input(environment, std::move(in)), detector(environment) {
        detector.source = &input;
        detector.domain = s.domain;
        detector.purpose = s.purpose;
        detector.kneeStyle = s.kneeStyle;
    }
    void set(FloatParameterBus& bus, float value) { bus.parameter().setValue(value, 0.0f); }
    std::vector<float> run() { return test::runElement(environment, detector, {count}); }

    wave::Environment environment{kBlock};
    int count;
    VectorSource input;
    Detector detector;
};

TEST(Detector, IsNeutralAtRatioOne) {
    for (const Settings& s : allSettings()) {
        if (s.kneeStyle == Detector::Clipping) continue;
        Single single(s, {1.0f, 0.5f, 0.0f});
        single.set(single.detector.threshold, -40.0f);
        const auto out = single.run();
        const bool isGain = s.purpose != Detector::Compress && s.domain == GainChangeDomain::Amplitude;
        EXPECT_EQ(out, std::vector<float>(3, isGain ? 1.0f : 0.0f));
        EXPECT_TRUE(single.detector.isConstant());
        EXPECT_EQ(&single.detector.current() == &single.environment.silentBlock(), !isGain);
    }
}

TEST(Detector, ClippingReducesFullScaleByItsThresholdAtAnyRatio) {
    for (const int purpose : {0, 1, 2}) {
        Single single({GainChangeDomain::Decibels, purpose, Detector::Clipping}, {0.0f, -200.0f});
        single.set(single.detector.threshold, -9.0f);
        const auto out = single.run();
        EXPECT_NEAR(out[0], 9.0f, 1e-5f);
        EXPECT_NEAR(out[1], 0.0f, 1e-5f);
    }
    for (const float threshold : {0.0f, 20.0f}) {
        Single single({GainChangeDomain::Amplitude, Detector::Compress, Detector::Clipping}, {1.0f, 100.0f});
        single.set(single.detector.threshold, threshold);
        EXPECT_EQ(single.run(), (std::vector<float>{0.0f, 0.0f}));
    }
}

TEST(Detector, SilenceCountsAsMinus180Decibels) {
    Single compressor({GainChangeDomain::Amplitude, Detector::Compress, Detector::Normal}, {0.0f, 1.0f});
    compressor.set(compressor.detector.ratio, 100.0f);
    compressor.set(compressor.detector.threshold, -20.0f);
    const auto reduction = compressor.run();
    EXPECT_EQ(reduction[0], 0.0f);
    EXPECT_NEAR(reduction[1], 0.9f, 1e-6f);

    Single expander({GainChangeDomain::Amplitude, Detector::ExpandDown, Detector::Normal}, {0.0f});
    expander.set(expander.detector.ratio, 2.0f);
    expander.set(expander.detector.threshold, -60.0f);
    EXPECT_NEAR(expander.run()[0], 1e-6f, 1e-10f);
    Single limited({GainChangeDomain::Amplitude, Detector::ExpandDown, Detector::Normal}, {0.0f});
    limited.set(limited.detector.ratio, 2.0f);
    limited.set(limited.detector.threshold, -60.0f);
    limited.set(limited.detector.limit, 20.0f);
    EXPECT_NEAR(limited.run()[0], 0.1f, 1e-6f);
}

TEST(Detector, ExactlyAtTheThresholdHysteresisChangesNothing) {
    // Below, at, above, at, below the threshold of -20 dB, then at it again.
    Single single({GainChangeDomain::Decibels, Detector::ExpandDown, Detector::Normal},
                  {-30.0f, -20.0f, -19.0f, -20.0f, -21.0f, -20.0f, -25.0f});
    single.set(single.detector.ratio, 2.0f);
    single.set(single.detector.threshold, -20.0f);
    EXPECT_EQ(single.run(), (std::vector<float>{10.0f, 0.0f, 0.0f, 0.0f, 1.0f, 0.0f, 5.0f}));
}

TEST(Detector, HysteresisHoldsOverNeutralBlocksUntilReset) {
    Single single({GainChangeDomain::Decibels, Detector::ExpandDown, Detector::Normal},
                  {0.0f, -25.0f, -25.0f, -25.0f});
    Detector& detector = single.detector;
    single.set(detector.threshold, -20.0f);
    single.set(detector.hysteresis, 10.0f);
    const auto play = [&](float ratio, int samples) {
        single.set(detector.ratio, ratio);
        single.environment.resetGraph(wave::ResetMode::MarkDiscontinuity);
        return test::runElement(single.environment, detector, {samples});
    };
    EXPECT_EQ(play(2.0f, 1)[0], 0.0f);  // opens
    EXPECT_EQ(play(1.0f, 1)[0], 0.0f);  // neutral: what is open stays so
    EXPECT_EQ(play(2.0f, 1)[0], 0.0f);  // 5 dB below, still open
    detector.reset();
    EXPECT_EQ(play(2.0f, 1)[0], 5.0f);
}

TEST(Detector, LimitOfZeroDoesNothing) {
    for (const Settings& s : allSettings()) {
        Single single(s, {0.0f, 1.0f, -90.0f, 30.0f});
        single.set(single.detector.ratio, 7.0f);
        single.set(single.detector.threshold, -50.0f);
        single.set(single.detector.limit, 0.0f);
        const bool isGain = s.purpose != Detector::Compress && s.kneeStyle == Detector::Normal &&
                            s.domain == GainChangeDomain::Amplitude;
        EXPECT_EQ(single.run(), std::vector<float>(4, isGain ? 1.0f : 0.0f));
    }
}

TEST(Detector, NoControlMakesItInfinite) {
    // What a controller delivers is not bound to the ranges of the controls.
    const float extremes[] = {0.0f, 1.0f, -1.0f, 1e-30f, 100.0f, -180.0f, 1e6f, -1e6f, 1e18f, -1e18f};
    std::mt19937 random(99);
    const auto pick = [&] {
        std::vector<float> values(kTotal);
        for (float& value : values) value = extremes[random() % std::size(extremes)];
        return values;
    };
    for (const Settings& s : allSettings()) {
        for (const bool steady : {false, true}) {
            Curves c = {pick(), pick(), pick(), pick(), constant(180.0f)};
            if (steady)
                c = {constant(0.0f), constant(-1e6f), constant(0.0f), constant(0.0f), constant(180.0f)};
            Rig rig(s, pick(), c);
            for (const float y : rig.run(test::evenBlocks(kTotal, kBlock))) {
                ASSERT_TRUE(std::isfinite(y)) << s.domain << s.purpose << s.kneeStyle << steady;
                ASSERT_GE(y, 0.0f);
            }
        }
    }
}

}  // namespace
}  // namespace vanta
