#include <gtest/gtest.h>

#include <cmath>
#include <deque>
#include <numbers>
#include <vector>

#include "dsp/mixer/effect_mixer.hpp"
#include "dsp/mixer/mixer.hpp"
#include "dsp/mixer/static_mixer.hpp"
#include "tests/support/element_rig.hpp"
#include "tests/support/instruction_sets.hpp"
#include "tests/support/signals.hpp"

namespace vanta::test {
namespace {

constexpr int kBlock = 128;

/// Any number of sources in front of one mixer.
class Mixers : public testing::Test {
protected:
    Mixers() { environment.setSampleRate(48000.0f); }

    VectorSource& play(Signal signal) {
        return sources.emplace_back(environment, std::move(signal), ConstantFlag::WhereTrue);
    }
    VectorSource& playNoise(std::uint64_t seed) { return play(whiteNoise(seed, kBlock)); }
    Signal runBlock(wave::Producer& mixer) { return runElement(environment, mixer, {kBlock}); }

    wave::Environment environment{kBlock};
    std::deque<VectorSource> sources;
};

// --- Mixer ---

/// What each operation makes of the result so far, in the order of Mixer::Operation.
double combine(int operation, double result, double x, double g, double& held) {
    const double v = std::abs(x * g);
    const double all[] = {result + x * g,
                          result - x * g,
                          std::max(result, std::abs(x) * g),
                          result * x * g,
                          v == 0 ? 0.0 : std::clamp(result / v, 0.0, 1.0),
                          std::max(result, 1e-9) / std::max(v, 1e-9),
                          v > 1e-9 ? result / v : held,
                          std::max(result, x * g),
                          std::min(result, x * g),
                          result};
    if (operation == Mixer::DivideHolding) held = all[operation];
    return all[operation];
}

/// Signals and gains of the inputs, and what the mixer must make of them.
struct MixCase {
    std::vector<Signal> signals, gains;

    MixCase(int inputs, bool steady, std::size_t samples) {
        for (unsigned i = 0; i < static_cast<unsigned>(inputs); ++i) {
            signals.push_back(spread(50 + i, samples, 0.1, 1.0));
            for (std::size_t k = i; k < signals.back().size(); k += 5) signals.back()[k] *= -1.0f;
            for (std::size_t k = i; k < signals.back().size(); k += 11) signals.back()[k] = 0.0f;
            gains.push_back(steady ? Signal(samples, i % 3 ? 1.0f : 0.7f)
                                   : spread(80 + i, samples, 0.1, 1.0));
        }
    }
    std::vector<double> expected(int operation) const {
        std::vector<double> out;
        double held = 1.0;
        for (std::size_t k = 0; k < signals[0].size(); ++k) {
            double result = static_cast<double>(signals[0][k]) * gains[0][k];
            if (operation == Mixer::LargestMagnitude ||
                (operation >= Mixer::DivideLimited && operation <= Mixer::DivideHolding)) {
                result = std::abs(static_cast<double>(signals[0][k])) * gains[0][k];
            }
            for (std::size_t i = 1; i < signals.size(); ++i) {
                result = combine(operation, result, signals[i][k], gains[i][k], held);
            }
            out.push_back(result);
        }
        return out;
    }
};

TEST_F(Mixers, MixerFollowsItsTableForAnyInputsOnEveryInstructionSet) {
    constexpr int kSamples = 300;
    const auto check = [&](const MixCase& mix, int inputs, int operation) {
        Mixer mixer(environment, inputs);
        mixer.operation = operation;
        for (int i = 0; i < inputs; ++i) {
            mixer.setInput(i, &play(mix.signals[static_cast<std::size_t>(i)]));
            mixer.gain(i).setSource(&play(mix.gains[static_cast<std::size_t>(i)]));
        }
        const auto expected = mix.expected(operation);
        const Signal out = runElement(environment, mixer, randomBlocks(kSamples, 40, 6));
        for (std::size_t k = 0; k < out.size(); ++k) {
            ASSERT_NEAR(out[k], expected[k], 4e-6 * std::max(1.0, std::abs(expected[k])))
                << "operation " << operation << ", inputs " << inputs << ", sample " << k;
        }
    };
    forEachInstructionSet([&](const char* name) {
        SCOPED_TRACE(name);
        for (const int inputs : {1, 2, 3, 4, 7, 17}) {
            for (const bool steady : {false, true}) {
                const MixCase mix(inputs, steady, kSamples);
                for (int operation = 0; operation <= 9; ++operation) check(mix, inputs, operation);
            }
        }
    });
}

TEST_F(Mixers, SumRunsOnlyWhatIsHeard) {
    Mixer mixer(environment, 3);
    VectorSource& off = playNoise(1);
    VectorSource& on = playNoise(2);
    EXPECT_EQ(runBlock(mixer), Signal(kBlock, 0.0f));
    EXPECT_EQ(&mixer.current(), &environment.silentBlock());
    for (int i = 0; i < 3; ++i) {
        mixer.setInput(i, &off);
        mixer.gain(i).parameter().setValue(0.0f, 0.0f);
    }
    runBlock(mixer);
    EXPECT_EQ(&mixer.current(), &environment.silentBlock());
    EXPECT_EQ(off.blocksPlayed(), 0);
    on.rewind();
    mixer.setInput(1, &on);
    mixer.gain(1).parameter().setValue(1.0f, 0.0f);
    environment.resetGraph(wave::ResetMode::MarkDiscontinuity);
    runBlock(mixer);
    EXPECT_EQ(&mixer.current(), &on.current());
    EXPECT_EQ(off.blocksPlayed(), 0);
}

// --- StaticMixer ---

TEST_F(Mixers, StaticMixerAddsWhatItHas) {
    const auto a = whiteNoise(11, kBlock), b = whiteNoise(12, kBlock);
    struct Case {
        Signal gains;
        std::vector<int> kinds;  // 0 a, 1 b, 2 a constant 0.5, 3 empty
        bool constant;
    };
    const std::vector<Case> cases = {
        {{0.5f}, {0}, false},
        {{1.0f, 1.0f}, {0, 1}, false},
        {{1.0f, -1.0f}, {0, 1}, false},
        {{-1.0f, 1.0f, 2.0f}, {2, 2, 2}, true},
        {{2.0f, 1.0f, 3.0f}, {2, 2, 0}, false},
        {{1.0f, 0.5f, 1.0f}, {2, 0, 2}, false},
        {{1.0f, 1.0f, 0.5f}, {3, 2, 1}, false},
        {{0.25f, 1.0f}, {2, 3}, true},
    };
    for (const Case& c : cases) {
        StaticMixer mixer(environment);
        std::vector<double> expected(kBlock, 0.0);
        for (std::size_t i = 0; i < c.gains.size(); ++i) {
            if (c.kinds[i] == 3) {
                mixer.addInput(c.gains[i], nullptr);
                continue;
            }
            const auto signal = c.kinds[i] == 0 ? a : c.kinds[i] == 1 ? b : Signal(kBlock, 0.5f);
            mixer.addInput(c.gains[i], &play(signal));
            for (std::size_t k = 0; k < expected.size(); ++k) expected[k] += c.gains[i] * signal[k];
        }
        const auto out = runBlock(mixer);
        for (std::size_t k = 0; k < out.size(); ++k) ASSERT_NEAR(out[k], expected[k], 4e-7);
        EXPECT_EQ(mixer.isConstant(), c.constant);
    }
}

// --- EffectMixer ---

TEST_F(Mixers, EffectMixerFollowsItsLaws) {
    const auto a = whiteNoise(14, kBlock), b = whiteNoise(15, kBlock);
    const auto check = [&](int law, const Signal& position) {
        EffectMixer mixer(environment, play(a), play(b));
        mixer.panningLaw = law;
        mixer.mix.setSource(&play(position));
        const auto out = runBlock(mixer);
        for (std::size_t i = 0; i < out.size(); ++i) {
            const double m = position[i], angle = (1 + m) * std::numbers::pi / 4;
            const double gainA = law == 0 ? 1 - std::max(m, 0.0) : law == 1 ? (1 - m) / 2 : std::cos(angle);
            const double gainB = law == 0 ? 1 + std::min(m, 0.0) : law == 1 ? (1 + m) / 2 : std::sin(angle);
            ASSERT_NEAR(out[i], gainA * a[i] + gainB * b[i], 6e-7) << "law " << law << " at " << m;
        }
    };
    forEachInstructionSet([&](const char* name) {
        SCOPED_TRACE(name);
        for (const int law : {EffectMixer::BothFull, EffectMixer::Linear, EffectMixer::ConstantPower}) {
            for (const float m : {-1.0f, -0.6f, 0.0f, 0.9f, 1.0f}) check(law, Signal(kBlock, m));
            Signal moving = whiteNoise(16, kBlock);
            moving[0] = -1.0f;
            moving[1] = 1.0f;
            check(law, moving);
        }
    });
}

}  // namespace
}  // namespace vanta::test
