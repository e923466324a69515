#include <gtest/gtest.h>

#include <cmath>
#include <deque>
#include <functional>
#include <limits>
#include <numbers>
#include <random>
#include <vector>

#include "dsp/db_converter.hpp"
#include "dsp/effect_mixer.hpp"
#include "dsp/mixer.hpp"
#include "dsp/rms_filter.hpp"
#include "dsp/static_mixer.hpp"
#include "dsp/transfer_curve_processor.hpp"
#include "tests/support/element_rig.hpp"

namespace vanta {
namespace {

using test::ConstantFlag;
using test::evenBlocks;
using test::randomBlocks;
using test::runElement;
using test::VectorSource;

constexpr int kBlock = 128;
constexpr float kRate = 48000.0f;

std::vector<float> noise(int count, float low, float high, unsigned seed) {
    std::mt19937 random(seed);
    std::uniform_real_distribution<float> spread(low, high);
    std::vector<float> values(static_cast<std::size_t>(count));
    for (float& value : values) value = spread(random);
    return values;
}

class LevelElements : public testing::Test {
protected:
    LevelElements() { environment.setSampleRate(kRate); }

    VectorSource& play(std::vector<float> signal, ConstantFlag flag = ConstantFlag::WhereTrue) {
        return sources.emplace_back(environment, std::move(signal), flag);
    }
    VectorSource& playConstant(float value) { return play(std::vector<float>(4 * kBlock, value)); }
    std::vector<float> runBlock(wave::Producer& element) {
        return runElement(environment, element, {kBlock});
    }

    wave::Environment environment{kBlock};
    std::deque<VectorSource> sources;
};

// --- RMSFilter ---

void setWindow(RMSFilter& filter, float ms) {
    filter.window.parameter().setValue(ms, 0.0f);
}

std::vector<double> meanSquares(const std::vector<float>& in, int window, double scale) {
    std::vector<double> out;
    for (int i = 0; i < static_cast<int>(in.size()); ++i) {
        double sum = 0.0;
        for (int k = std::max(0, i - window + 1); k <= i; ++k) {
            const double x = in[static_cast<std::size_t>(k)];
            sum += x * x;
        }
        out.push_back(scale * scale * sum / window);
    }
    return out;
}

TEST_F(LevelElements, RmsIsTheMeanOfTheLastSamplesInAnyBlocks) {
    const auto in = noise(3000, -1.0f, 1.0f, 1);
    for (const float windowMs : {0.021f, 0.1f, 2.5f, 20.0f}) {
        const int window = 1 + static_cast<int>(windowMs * 48.0);
        const auto expected = meanSquares(in, window, 0.7);
        for (const auto& blocks :
             {evenBlocks(3000, kBlock), evenBlocks(3000, 1), randomBlocks(3000, 50, 2)}) {
            for (const int domain : {RMSFilter::Power, RMSFilter::Amplitude}) {
                RMSFilter filter(environment, 20.0f);
                filter.source = &play(in);
                filter.scale = 0.7f;
                filter.domain = domain;
                setWindow(filter, windowMs);
                const auto out = runElement(environment, filter, blocks);
                for (std::size_t i = 0; i < out.size(); ++i) {
                    const double y = domain == RMSFilter::Power ? expected[i] : std::sqrt(expected[i]);
                    ASSERT_NEAR(out[i], y, 1e-6 * y + 1e-12) << "window " << windowMs << " sample " << i;
                }
            }
        }
    }
}

TEST_F(LevelElements, RmsOfOneSampleHasNoMemory) {
    RMSFilter filter(environment, 10.0f);
    filter.scale = 2.0f;
    filter.source = &play({0.5f, -0.5f, 0.25f});
    EXPECT_EQ(runElement(environment, filter, {3}), (std::vector<float>{1.0f, 1.0f, 0.25f}));
    filter.domain = RMSFilter::Amplitude;
    filter.source = &play({0.5f, -0.5f, 0.25f});
    EXPECT_EQ(runElement(environment, filter, {3}), (std::vector<float>{1.0f, -1.0f, 0.5f}));
    filter.source = &playConstant(-0.5f);
    EXPECT_EQ(runBlock(filter), std::vector<float>(kBlock, -1.0f));
    EXPECT_TRUE(filter.isConstant());
}

TEST_F(LevelElements, RmsStartsOverWithAnotherWindowScaleOrReset) {
    RMSFilter filter(environment, 2.0f);
    setWindow(filter, 1.0f);
    const auto firstAfter = [&](const std::function<void()>& change) {
        filter.source = &playConstant(1.0f);
        EXPECT_FLOAT_EQ(runBlock(filter).back(), filter.scale * filter.scale);
        change();
        return runBlock(filter).front();
    };
    EXPECT_FLOAT_EQ(firstAfter([&] { setWindow(filter, 1.5f); }), 1.0f / 73.0f);
    EXPECT_FLOAT_EQ(firstAfter([&] { filter.scale = 3.0f; }), 9.0f / 73.0f);
    EXPECT_FLOAT_EQ(firstAfter([&] { filter.reset(); }), 9.0f / 73.0f);
    EXPECT_FLOAT_EQ(firstAfter([&] { filter.clear(); }), 9.0f / 73.0f);
    // Another rate, another length.
    EXPECT_FLOAT_EQ(firstAfter([&] { environment.setSampleRate(96000.0f); }), 9.0f / 145.0f);
}

TEST_F(LevelElements, RmsLeavesNothingBehindALoudSignal) {
    RMSFilter filter(environment, 5.0f);
    setWindow(filter, 5.0f);
    filter.domain = RMSFilter::Amplitude;
    std::vector<float> in = noise(20000, -1000.0f, 1000.0f, 3);
    in.resize(21000, 0.0f);
    filter.source = &play(in);
    const auto out = runElement(environment, filter, randomBlocks(21000, kBlock, 4));
    for (std::size_t i = 20300; i < out.size(); ++i) {
        ASSERT_GE(out[i], 0.0f);
        ASSERT_LT(out[i], 1e-3f);  // 120 dB below, the rounding of the sum
    }
}

TEST_F(LevelElements, RmsWindowEndsAtWhatTheHistoryHolds) {
    RMSFilter filter(environment, 1.0f);
    filter.window.setSource(&playConstant(1e9f));
    filter.source = &playConstant(1.0f);
    EXPECT_FLOAT_EQ(runBlock(filter).back(), 1.0f);
}

// --- DBConverter ---

TEST_F(LevelElements, ConvertsConstantBlocksOnceAndAlike) {
    for (int conversion = 0; conversion < 4; ++conversion) {
        for (const float x : {0.0f, 0.25f, 1.0f, -2.0f, 6.0f, 1e-11f, -180.0f, 2000.0f}) {
            DBConverter converter(environment);
            converter.conversion = conversion;
            converter.source = &playConstant(x);
            const float once = runBlock(converter).back();
            EXPECT_TRUE(converter.isConstant());
            converter.source = &play(std::vector<float>(kBlock, x), ConstantFlag::Never);
            const float moving = runBlock(converter).back();
            EXPECT_FALSE(converter.isConstant());
            EXPECT_NEAR(once, moving, 3e-6 * std::max(1.0f, std::abs(once))) << conversion << " of " << x;
        }
    }
}

TEST_F(LevelElements, ConvertsTheCornersExactly) {
    const auto convert = [&](int conversion, float x) {
        DBConverter converter(environment);
        converter.conversion = conversion;
        converter.source = &playConstant(x);
        return runBlock(converter).front();
    };
    EXPECT_EQ(convert(DBConverter::AmplitudeToDb, 0.0f), -180.0f);
    EXPECT_EQ(convert(DBConverter::AmplitudeToDb, -10.0f), 20.0f);
    EXPECT_FLOAT_EQ(convert(DBConverter::DbToAmplitude, -20.0f), 0.1f);
    EXPECT_EQ(convert(DBConverter::AmplitudeGainChangeToDb, 1.0f), 180.0f);
    EXPECT_FLOAT_EQ(convert(DBConverter::AmplitudeGainChangeToDb, 0.9f), 20.0f);
    EXPECT_EQ(convert(DBConverter::DbToAmplitudeGainChange, 0.0f), 0.0f);
    EXPECT_FLOAT_EQ(convert(DBConverter::DbToAmplitudeGainChange, 20.0f), 0.9f);
}

// --- TransferCurveProcessor ---

TEST_F(LevelElements, TransferCurvesKeepTheirEndsAndRise) {
    std::vector<float> ramp(kBlock);
    for (int i = 0; i < kBlock; ++i) ramp[static_cast<std::size_t>(i)] = static_cast<float>(i) / (kBlock - 1);
    for (const int function : {TransferCurveProcessor::Exp, TransferCurveProcessor::Power}) {
        for (const float strength : {0.0f, 0.1f, 0.3f, 1.0f}) {
            TransferCurveProcessor curve(environment);
            curve.function = function;
            curve.strength.parameter().setValue(strength, 0.0f);
            curve.source = &play(ramp);
            const auto out = runBlock(curve);
            EXPECT_EQ(out.front(), 0.0f);
            EXPECT_FLOAT_EQ(out.back(), 1.0f);
            for (std::size_t i = 1; i < out.size(); ++i) {
                ASSERT_GE(out[i], out[i - 1]);
                ASSERT_LE(out[i], ramp[i] + 1e-6f);
                ASSERT_NEAR(out[i], ramp[i], strength == 0.0f ? 0.0013f : 1.0f);
            }
        }
    }
}

TEST_F(LevelElements, PowerFiveAndHalfIsTheSameWithAndWithoutItsShortcut) {
    const auto run = [&](float strength, ConstantFlag flag) {
        TransferCurveProcessor curve(environment);
        curve.function = TransferCurveProcessor::Power;
        curve.strength.setSource(&play(std::vector<float>(kBlock, strength), flag));
        curve.source = &play(noise(kBlock, 0.0f, 1.0f, 5));
        return runBlock(curve);
    };
    const auto in = noise(kBlock, 0.0f, 1.0f, 5);
    for (const auto& out : {run(0.3f, ConstantFlag::WhereTrue), run(0.3f, ConstantFlag::Never),
                            run(0.3000002f, ConstantFlag::WhereTrue)}) {
        for (std::size_t i = 0; i < out.size(); ++i) {
            const double expected = std::pow(static_cast<double>(in[i]), 5.5);
            ASSERT_NEAR(out[i], expected, 3e-5 * expected);
        }
    }
}

TEST_F(LevelElements, TransferCurveOfConstantsIsConstant) {
    TransferCurveProcessor curve(environment);
    curve.strength.parameter().setValue(0.5f, 0.0f);
    curve.source = &playConstant(0.5f);
    const float k = 7.51f;
    EXPECT_NEAR(runBlock(curve).back(), std::expm1(0.5f * k) / std::expm1(k), 1e-6f);
    EXPECT_TRUE(curve.isConstant());
    curve.source = &playConstant(1e20f);
    EXPECT_TRUE(std::isfinite(runBlock(curve).back()));
}

// --- Mixer ---

double combine(int operation, double result, double x, double g, double& held) {
    const double v = std::abs(x * g);
    switch (operation) {
        case Mixer::Add:
            return result + x * g;
        case Mixer::Subtract:
            return result - x * g;
        case Mixer::LargestMagnitude:
            return std::max(result, std::abs(x) * g);
        case Mixer::Multiply:
            return result * x * g;
        case Mixer::DivideLimited:
            return v == 0 ? 0.0 : std::clamp(result / v, 0.0, 1.0);
        case Mixer::Divide:
            return std::max(result, 1e-9) / std::max(v, 1e-9);
        case Mixer::DivideHolding:
            return held = v > 1e-9 ? result / v : held;
        case Mixer::Maximize:
            return std::max(result, x * g);
        case Mixer::Minimize:
            return std::min(result, x * g);
        default:
            return result;
    }
}

/// Signals and gains of the inputs, and what the mixer must make of them.
struct MixCase {
    std::vector<std::vector<float>> signals, gains;

    MixCase(int inputs, bool unity, int samples) {
        for (unsigned i = 0; i < static_cast<unsigned>(inputs); ++i) {
            signals.push_back(noise(samples, 0.1f, 1.0f, 50 + i));
            for (std::size_t k = i; k < signals.back().size(); k += 5) signals.back()[k] *= -1.0f;
            for (std::size_t k = i; k < signals.back().size(); k += 11) signals.back()[k] = 0.0f;
            gains.push_back(unity ? std::vector<float>(static_cast<std::size_t>(samples), 1.0f)
                                  : noise(samples, 0.1f, 1.0f, 80 + i));
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

TEST_F(LevelElements, MixerFollowsItsTableForAnyInputsAndBlocks) {
    constexpr int kSamples = 300;
    for (const int inputs : {1, 2, 3, 4, 7, 17}) {
        for (const bool unity : {false, true}) {
            const MixCase mix(inputs, unity, kSamples);
            for (int operation = 0; operation <= 9; ++operation) {
                const auto expected = mix.expected(operation);
                for (const auto& blocks : {evenBlocks(kSamples, kBlock), randomBlocks(kSamples, 9, 6)}) {
                    Mixer mixer(environment, inputs);
                    mixer.operation = operation;
                    for (int i = 0; i < inputs; ++i) {
                        mixer.setInput(i, &play(mix.signals[static_cast<std::size_t>(i)]));
                        mixer.gain(i).setSource(&play(mix.gains[static_cast<std::size_t>(i)]));
                    }
                    const auto out = runElement(environment, mixer, blocks);
                    for (std::size_t k = 0; k < out.size(); ++k) {
                        const double tolerance = 4e-6 * std::max(1.0, std::abs(expected[k]));
                        ASSERT_NEAR(out[k], expected[k], tolerance)
                            << "operation " << operation << ", inputs " << inputs << ", sample " << k;
                    }
                }
            }
        }
    }
}

TEST_F(LevelElements, SumOfFewAndOfManyInputsIsTheSame) {
    // 17 inputs take another path than 16; the last one adds nothing.
    Mixer few(environment, 16), many(environment, 17);
    for (int i = 0; i < 16; ++i) {
        VectorSource& source = play(noise(kBlock, -1.0f, 1.0f, static_cast<unsigned>(i)));
        VectorSource& gain = play(noise(kBlock, 0.0f, 1.0f, 100 + static_cast<unsigned>(i)));
        for (Mixer* mixer : {&few, &many}) {
            mixer->setInput(i, &source);
            mixer->gain(i).setSource(&gain);
        }
    }
    many.setInput(16, &playConstant(0.0f));
    wave::Producer* const both[] = {&few, &many};
    const std::vector<int> blocks = {kBlock};
    const auto out = test::runElements(environment, both, blocks);
    EXPECT_EQ(out[0], out[1]);
}

TEST_F(LevelElements, SumRunsOnlyWhatIsHeard) {
    Mixer mixer(environment, 3);
    VectorSource& off = play(noise(kBlock, -1.0f, 1.0f, 1));
    VectorSource& on = play(noise(kBlock, -1.0f, 1.0f, 2));
    EXPECT_EQ(runBlock(mixer), std::vector<float>(kBlock, 0.0f));
    EXPECT_EQ(&mixer.current(), &environment.silentBlock());
    for (int i = 0; i < 3; ++i) {
        mixer.setInput(i, &off);
        mixer.gain(i).parameter().setValue(0.0f, 0.0f);
    }
    runBlock(mixer);
    EXPECT_EQ(&mixer.current(), &environment.silentBlock());
    EXPECT_EQ(off.blocksPlayed(), 0);
    mixer.setInput(1, &on);
    mixer.gain(1).parameter().setValue(1.0f, 0.0f);
    environment.resetGraph(wave::ResetMode::MarkDiscontinuity);
    runBlock(mixer);
    EXPECT_EQ(&mixer.current(), &on.current());
    EXPECT_EQ(off.blocksPlayed(), 0);
}

TEST_F(LevelElements, MixerOfConstantsIsConstantAndKeepsItsGainRange) {
    Mixer mixer(environment, 1);
    mixer.widenGainRange();
    mixer.inputCount = 2;
    mixer.gain(1).parameter().setValue(1.41f, 0.0f);
    mixer.setInput(0, &playConstant(0.5f));
    mixer.setInput(1, &playConstant(0.25f));
    EXPECT_FLOAT_EQ(runBlock(mixer).back(), 0.5f + 0.25f * 1.41f);
    EXPECT_TRUE(mixer.isConstant());
    mixer.inputCount = 1;
    EXPECT_FLOAT_EQ(runBlock(mixer).back(), 0.5f);
}

// --- StaticMixer ---

TEST_F(LevelElements, StaticMixerAddsWhatItHas) {
    const auto a = noise(kBlock, -1.0f, 1.0f, 11), b = noise(kBlock, -1.0f, 1.0f, 12);
    struct Case {
        std::vector<float> gains;
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
            const auto signal = c.kinds[i] == 0 ? a : c.kinds[i] == 1 ? b : std::vector<float>(kBlock, 0.5f);
            mixer.addInput(c.gains[i], &play(signal));
            for (std::size_t k = 0; k < expected.size(); ++k) expected[k] += c.gains[i] * signal[k];
        }
        const auto out = runBlock(mixer);
        for (std::size_t k = 0; k < out.size(); ++k) ASSERT_NEAR(out[k], expected[k], 4e-7);
        EXPECT_EQ(mixer.isConstant(), c.constant);
    }
}

TEST_F(LevelElements, StaticMixerPassesOneInputWithoutACopy) {
    VectorSource& source = play(noise(kBlock, -1.0f, 1.0f, 13));
    StaticMixer mixer(environment, {{1.0f, nullptr}, {1.0f, &source}});
    runBlock(mixer);
    EXPECT_EQ(&mixer.current(), &source.current());
    EXPECT_FALSE(mixer.isConstant());
    StaticMixer empty(environment);
    runBlock(empty);
    EXPECT_EQ(&empty.current(), &environment.silentBlock());
    EXPECT_TRUE(empty.isConstant());
}

// --- EffectMixer ---

TEST_F(LevelElements, EffectMixerFollowsItsLaws) {
    const auto a = noise(kBlock, -1.0f, 1.0f, 14), b = noise(kBlock, -1.0f, 1.0f, 15);
    const auto check = [&](int law, const std::vector<float>& position) {
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
    for (const int law : {EffectMixer::BothFull, EffectMixer::Linear, EffectMixer::ConstantPower}) {
        for (const float m : {-1.0f, -0.6f, 0.0f, 0.9f, 1.0f}) check(law, std::vector<float>(kBlock, m));
        auto moving = noise(kBlock, -1.0f, 1.0f, 16);
        moving[0] = -1.0f;
        moving[1] = 1.0f;
        check(law, moving);
    }
}

TEST_F(LevelElements, EffectMixerRunsOnlyOneSourceAtItsEnds) {
    for (const float end : {-1.0f, 1.0f}) {
        VectorSource& a = play(noise(kBlock, -1.0f, 1.0f, 17));
        VectorSource& b = play(noise(kBlock, -1.0f, 1.0f, 18));
        EffectMixer mixer(environment, a, b);
        mixer.mix.parameter().setValue(end, 0.0f);
        runBlock(mixer);
        EXPECT_EQ(&mixer.current(), end < 0 ? &a.current() : &b.current());
        EXPECT_EQ(a.blocksPlayed(), end < 0 ? 1 : 0);
        EXPECT_EQ(b.blocksPlayed(), end < 0 ? 0 : 1);
    }
}

}  // namespace
}  // namespace vanta
