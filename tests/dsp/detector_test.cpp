#include "dsp/detector/detector.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "tests/support/element_rig.hpp"
#include "tests/support/instruction_sets.hpp"
#include "tests/support/signals.hpp"

namespace vanta::test {
namespace {

constexpr int kBlock = 256;
constexpr int kTotal = 2000;

struct Settings {
    int domain, purpose, kneeStyle;
};

/// One value a sample for each control.
struct Curves {
    Signal knee, threshold, hysteresis, ratio, limit;
};

double soft(double d, double k) {
    return k > 1.1920929e-7 && std::abs(d) <= k / 2 ? std::pow((k / 2 + d) / k, 2) * (k / 2) : d;
}

/// The gain computer sample by sample, as its curves are defined.
std::vector<double> reference(const Settings& s, const Curves& c, const Signal& in) {
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
struct Rig : ElementRig<Detector> {
    Rig(const Settings& s, Signal in, const Curves& c) : ElementRig(std::move(in)) {
        element.domain = s.domain;
        element.purpose = s.purpose;
        element.kneeStyle = s.kneeStyle;
        play(element.knee, c.knee);
        play(element.threshold, c.threshold);
        play(element.hysteresis, c.hysteresis);
        play(element.ratio, c.ratio);
        play(element.limit, c.limit);
    }
};

Signal constant(float value) {
    return Signal(kTotal, value);
}

Signal wandering(double low, double high, std::uint64_t seed) {
    return spread(seed, kTotal, low, high);
}

Signal inputFor(int domain) {
    Signal in = wandering(-100.0, 10.0, 7);
    if (domain != GainChangeDomain::Amplitude) return in;
    for (std::size_t i = 0; i < in.size(); ++i) {
        in[i] = std::pow(10.0f, in[i] / 20.0f) * (i % 3 ? 1.0f : -1.0f);
        if (i % 50 == 0) in[i] = 0.0f;
    }
    return in;
}

std::vector<Settings> allSettings() {
    std::vector<Settings> all;
    for (int i = 0; i < 12; ++i) all.push_back({i / 6, i / 2 % 3, i % 2});
    return all;
}

// Ratio and slope of an expander multiply the rounding of a level of up to 180 dB.
void expectReference(const Settings& s, const Curves& c) {
    const auto in = inputFor(s.domain);
    const auto expected = reference(s, c, in);
    forEachInstructionSet([&](const char* name) {
        const auto out = Rig(s, in, c).run(randomBlocks(kTotal, kBlock, 3));
        for (std::size_t i = 0; i < out.size(); ++i) {
            const double scale = std::max(1.0, std::abs(expected[i]));
            const double slope = s.purpose == Detector::Compress ? 1.0 : c.ratio[i];
            const double tolerance =
                s.domain == GainChangeDomain::Amplitude ? 4e-6 * slope * scale : 6.5e-5 * slope;
            ASSERT_NEAR(out[i], expected[i], tolerance)
                << "sample " << i << " of " << in[i] << ", domain " << s.domain << ", purpose " << s.purpose
                << ", knee style " << s.kneeStyle << ", " << name;
        }
    });
}

TEST(Detector, FollowsItsCurvesInEverySettingAndOnEveryInstructionSet) {
    const Signal moving = wandering(-60.0, 0.0, 8);
    for (const Settings& s : allSettings()) {
        for (const float knee : {0.0f, 12.0f}) {
            for (const float ratio : {1.5f, 4.0f, 100.0f}) {
                for (const float limit : {180.0f, 18.0f}) {
                    // An upward expander of 100:1 reaches beyond what a float can hold.
                    if (ratio > 50.0f && s.purpose != Detector::Compress) continue;
                    for (const Signal& threshold : {constant(-30.0f), moving}) {
                        expectReference(
                            s, {constant(knee), threshold, constant(5.0f), constant(ratio), constant(limit)});
                    }
                }
            }
        }
        expectReference(s, {wandering(0.0, 20.0, 1), wandering(-60.0, 3.0, 2), wandering(0.0, 9.0, 3),
                            wandering(1.0, 5.0, 4), wandering(0.0, 40.0, 5)});
    }
}

/// What a detector with steady controls makes of a few samples.
struct Steady {
    Settings settings;
    float threshold, ratio;
    Signal in, out;
    bool constant = false;
};

constexpr int kAmplitude = GainChangeDomain::Amplitude, kDecibels = GainChangeDomain::Decibels;
constexpr int kCompress = Detector::Compress, kDown = Detector::ExpandDown, kUp = Detector::ExpandUp;
constexpr int kNormal = Detector::Normal, kClipping = Detector::Clipping;

TEST(Detector, IsExactAtItsCorners) {
    const Steady cases[] = {
        // Ratio 1 is neutral: nothing is taken away, or a gain is 1.
        {{kAmplitude, kCompress, kNormal}, -40, 1, {1, 0.5, 0}, {0, 0, 0}, true},
        {{kAmplitude, kDown, kNormal}, -40, 1, {1, 0.5, 0}, {1, 1, 1}, true},
        {{kAmplitude, kUp, kNormal}, -40, 1, {1, 0.5, 0}, {1, 1, 1}, true},
        {{kDecibels, kCompress, kNormal}, -40, 1, {1, 0.5, 0}, {0, 0, 0}, true},
        {{kDecibels, kDown, kNormal}, -40, 1, {1, 0.5, 0}, {0, 0, 0}, true},
        {{kDecibels, kUp, kNormal}, -40, 1, {1, 0.5, 0}, {0, 0, 0}, true},
        // Clipping takes full scale down by its threshold, whatever ratio and purpose.
        {{kDecibels, kCompress, kClipping}, -9, 1, {0, -200}, {9, 0}},
        {{kDecibels, kDown, kClipping}, -9, 5, {0, -200}, {9, 0}},
        {{kAmplitude, kCompress, kClipping}, 0, 1, {1, 100}, {0, 0}},
        {{kAmplitude, kCompress, kClipping}, 20, 1, {1, 100}, {0, 0}},
        // Silence has -180 dB.
        {{kAmplitude, kCompress, kNormal}, -20, 100, {0, 1}, {0, 0.9f}},
        {{kAmplitude, kDown, kNormal}, -60, 2, {0}, {1e-6f}},
        // Below, at, above, at, below the threshold, then at it again: without hysteresis there is no memory.
        {{kDecibels, kDown, kNormal}, -20, 2, {-30, -20, -19, -20, -21, -20, -25}, {10, 0, 0, 0, 1, 0, 5}},
    };
    for (const Steady& c : cases) {
        Rig rig(c.settings, c.in,
                {constant(0.0f), constant(c.threshold), constant(0.0f), constant(c.ratio), constant(180.0f)});
        const auto out = rig.run(static_cast<int>(c.in.size()));
        for (std::size_t i = 0; i < out.size(); ++i) {
            EXPECT_NEAR(out[i], c.out[i], 1e-6f + 1e-6f * c.out[i]) << &c - cases << ", sample " << i;
        }
        EXPECT_EQ(rig.element.isConstant(), c.constant) << &c - cases;
    }
}

TEST(Detector, HysteresisHoldsOverNeutralBlocksUntilReset) {
    // It opens, is neutral, and still open 5 dB below the threshold.
    Rig rig({kDecibels, kDown, kNormal}, {0.0f, -25.0f, -25.0f, -25.0f},
            {constant(0.0f), constant(-20.0f), constant(10.0f), {2.0f, 1.0f, 2.0f, 2.0f}, constant(180.0f)});
    EXPECT_EQ(rig.run(3, 1), Signal(3, 0.0f));
    rig.element.reset();
    EXPECT_EQ(rig.run(1)[0], 5.0f);
}

TEST(Detector, NoControlMakesItInfinite) {
    // What a controller delivers is not bound to the ranges of the controls.
    const float extremes[] = {0.0f, 1.0f, -1.0f, 1e-30f, 100.0f, -180.0f, 1e6f, -1e6f, 1e18f, -1e18f};
    Random random(99);
    const auto pick = [&] {
        Signal values;
        for (int i = 0; i < kTotal; ++i) values.push_back(extremes[random.next() % std::size(extremes)]);
        return values;
    };
    for (const Settings& s : allSettings()) {
        for (const bool steady : {false, true}) {
            Curves c = {pick(), pick(), pick(), pick(), constant(180.0f)};
            if (steady)
                c = {constant(0.0f), constant(-1e6f), constant(0.0f), constant(0.0f), constant(180.0f)};
            Rig rig(s, pick(), c);
            for (const float y : rig.run(kTotal)) {
                ASSERT_TRUE(std::isfinite(y)) << s.domain << s.purpose << s.kneeStyle << steady;
                ASSERT_GE(y, 0.0f);
            }
        }
    }
}

}  // namespace
}  // namespace vanta::test
