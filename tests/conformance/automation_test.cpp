#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include "foundation/numbers.hpp"
#include "tests/support/limiter_rig.hpp"

namespace vanta::test {
namespace {

constexpr double kRate = 44100.0;
constexpr int kBlock = 315;

/// The largest second difference of a signal: of a step about its height, of a 100 Hz tone of full scale
/// 0.0002.
double roughness(const Signal& signal, std::size_t from) {
    double largest = 0.0;
    for (std::size_t i = from + 2; i < signal.size(); ++i) {
        const double bend = static_cast<double>(signal[i]) - 2.0 * static_cast<double>(signal[i - 1]) +
                            static_cast<double>(signal[i - 2]);
        largest = std::max(largest, std::abs(bend));
    }
    return largest;
}

/// A tone at -12 dB on the left, one at -15 dB on the right.
Channels tones(double seconds) {
    const auto count = static_cast<std::size_t>(seconds * kRate);
    return {sine(100.0, kRate, count, gainFromDb(-12.0)), sine(100.0, kRate, count, gainFromDb(-15.0), 0.3)};
}

void moveAnywhere(AbstractPluginParameter& parameter, Random& random) {
    const auto normal = static_cast<float>(0.5 + 0.5 * random.bipolar());
    float value = parameter.denormalize(normal);
    if (parameter.kind() == AbstractPluginParameter::Kind::Indexed) {
        value = static_cast<float>(
            random.between(static_cast<int>(parameter.minimum()), static_cast<int>(parameter.maximum())));
    }
    parameter.setValue(value, 0);
}

/// Plays tones, moves one parameter every now and then, and gives back the roughness from the first move on.
double roughnessWhileMoving(const LimiterSetup& setup, int parameter) {
    constexpr std::size_t kSettled = 22050;
    LimiterRig rig(setup);
    const Channels in = tones(1.4);
    Channels out(2, Signal(in[0].size()));
    Random random(static_cast<std::uint64_t>(parameter) + 2);
    std::size_t next = kSettled;
    for (std::size_t at = 0; at < in[0].size(); at += kBlock) {
        if (parameter >= 0 && at >= next) {
            moveAnywhere(*rig.limiter().parameterAt(parameter), random);
            next += static_cast<std::size_t>(random.between(500, 5000));
        }
        rig.processBlock(in, {}, out, at, std::min<std::size_t>(kBlock, in[0].size() - at));
    }
    EXPECT_LE(peak(out), 1.0);
    return std::max(roughness(out[0], kSettled - 1000), roughness(out[1], kSettled - 1000));
}

class Automation : public testing::TestWithParam<Style> {};

INSTANTIATE_TEST_SUITE_P(Styles, Automation, testing::ValuesIn(kStyles),
                         [](const auto& instance) { return nameOf(instance.param); });

TEST_P(Automation, MakesNoStep) {
    // What bends the most is a peak that runs into the ceiling while gain and makeup move.
    constexpr double kBend = 0.012;
    for (const float gain : {0.0f, 18.0f}) {
        for (const int index : {0, 1}) {
            LimiterSetup setup{
                .style = GetParam(), .oversamplingIndex = index, .truePeak = index == 1, .gainDb = gain};
            const double atRest = roughnessWhileMoving(setup, -1);
            const VantaProcessor table(kStereoLayout);
            for (int p = 0; p < VantaParameters::kParameterCount; ++p) {
                const AbstractPluginParameter& parameter = *table.parameterAt(p);
                if (!parameter.automatable) continue;
                const double moving = roughnessWhileMoving(setup, p);
                EXPECT_LT(moving, atRest + kBend) << parameter.name() << ", " << describe(setup);
                report("{:<12} {}x gain {:>2} dB, moving {:<24} bend {:.5f} (at rest {:.5f})\n",
                       nameOf(setup.style), setup.factor(), gain, parameter.name(), moving, atRest);
            }
        }
    }
}

}  // namespace
}  // namespace vanta::test
