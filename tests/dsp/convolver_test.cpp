#include "dsp/convolver/convolver.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <memory>
#include <numeric>
#include <vector>

#include "dsp/convolver/smoothing_kernel.hpp"
#include "dsp/convolver/smoothing_shape.hpp"
#include "foundation/numbers.hpp"
#include "tests/support/element_rig.hpp"
#include "tests/support/signals.hpp"

namespace vanta::test {
namespace {

constexpr int kLargestBlock = 8192;
constexpr int kFade = 882;  // 20 ms at 44.1 kHz

/// A kernel of any taps, in the order in which they are handed in.
class TapKernel final : public Convolver::Kernel {
public:
    TapKernel(wave::Environment& owner, const ConvolverPlan& plan, std::vector<float> initial)
        : ConvolverKernel(owner, plan), taps(std::move(initial)) {
        addUpdateTask(std::make_unique<CopyTask>(*this));
        addTransforms();
    }
    void change(std::vector<float> newTaps) {
        taps = std::move(newTaps);
        setDirty();
    }

    std::vector<float> taps;

private:
    class CopyTask final : public UpdateTask {
    public:
        explicit CopyTask(TapKernel& owner) : UpdateTask(owner), kernel_(owner) {}
        void prepare() override {
            version().length = static_cast<int>(kernel_.taps.size());
            grainCount = kernel_.paddedLength(version().length);
        }
        void run(int first, int count) override {
            for (int i = first; i < first + count; ++i) {
                const auto place = static_cast<std::size_t>(i);
                version().taps[i] = place < kernel_.taps.size() ? kernel_.taps[place] : 0.0f;
            }
        }

    private:
        TapKernel& kernel_;
    };
};

/// Output `time` of a direct convolution, in double precision.
double directOutput(const std::vector<float>& taps, const std::vector<float>& in, int time) {
    const auto count = std::min<std::ptrdiff_t>(std::ssize(taps), time + 1);
    return std::inner_product(taps.begin(), taps.begin() + count, in.rend() - time - 1, 0.0, std::plus<>(),
                              [](double tap, double x) { return tap * x; });
}

/// Compares at every sample if that is few products, else at random ones.
void expectConvolution(const std::vector<float>& taps, const std::vector<float>& in,
                       const std::vector<float>& out, int latency, double tolerance) {
    const int total = static_cast<int>(out.size());
    Random random(99);
    const bool all = static_cast<double>(total) * static_cast<double>(taps.size()) < 3e7;
    const int points = all ? total : 2500;
    for (int point = 0; point < points; ++point) {
        const int time = all ? point : random.between(0, total - 1);
        const double expected = time < latency ? 0.0 : directOutput(taps, in, time - latency);
        ASSERT_NEAR(out[static_cast<std::size_t>(time)], expected, tolerance) << "sample " << time;
    }
}

/// What flat kernels of any length give, in double precision.
class MovingAverage {
public:
    explicit MovingAverage(const std::vector<float>& in) : sums_(in.size() + 1, 0.0) {
        for (std::size_t i = 0; i < in.size(); ++i) sums_[i + 1] = sums_[i] + static_cast<double>(in[i]);
    }
    /// Of the `length` samples that end with sample `time`, with silence before the first.
    double at(int time, int length) const {
        const auto sumTo = [&](int end) { return sums_[static_cast<std::size_t>(std::max(end, 0))]; };
        return (sumTo(time + 1) - sumTo(time + 1 - length)) / length;
    }

private:
    std::vector<double> sums_;
};

/// A convolver fed by a source.
template <typename Kernel>
struct Rig {
    template <typename... Arguments>
    Rig(ConvolverPlan& plan, const std::vector<float>& in, Arguments&&... arguments)
        : kernel(environment, plan, std::forward<Arguments>(arguments)...), source(environment, in) {
        convolver.source = &source;
    }
    /// Appends to `out`.
    void run(std::span<const int> blocks) {
        const auto more = runElement(environment, convolver, blocks);
        out.insert(out.end(), more.begin(), more.end());
    }

    wave::Environment environment{kLargestBlock};
    Kernel kernel;
    VectorSource source;
    Convolver convolver{environment, kernel};
    std::vector<float> out;
};

struct Case {
    int length;
    int base;
};

class ConvolverOfLength : public testing::TestWithParam<Case> {};

TEST_P(ConvolverOfLength, EqualsADirectConvolution) {
    const auto [length, base] = GetParam();
    ConvolverPlan plan(length, base);
    EXPECT_EQ(plan.latency(), base);
    EXPECT_GE(plan.coveredLength(), length);
    const auto taps = whiteNoise(3, static_cast<std::size_t>(length));
    const int total = 2 * length + 3 * plan.fftSize() + 5000;
    const auto in = whiteNoise(4, static_cast<std::size_t>(total));
    Rig<TapKernel> rig(plan, in, taps);
    rig.run(randomBlocks(total, length > 500 ? kLargestBlock : 300, 7));
    // White noise times white taps: the level of the result is that of sqrt(length / 9).
    expectConvolution(taps, in, rig.out, base, 1e-5 * std::sqrt(std::max(length, 9) / 9.0));
}

INSTANTIATE_TEST_SUITE_P(Lengths, ConvolverOfLength,
                         testing::Values(Case{1, 256}, Case{2, 256}, Case{3, 256}, Case{100, 256},
                                         Case{221, 256}, Case{1000, 256}, Case{8191, 256}, Case{8192, 256},
                                         Case{20000, 256}, Case{70000, 256}, Case{59, 128}, Case{1000, 128},
                                         Case{5000, 128}, Case{1, 0}, Case{64, 0}, Case{65, 0}, Case{3000, 0},
                                         Case{20000, 0}, Case{500, 32}));

// What the output of a change must lie between, and by when the new kernel must be the only one heard.
struct ChangeCase {
    int before;
    int after;
    int maxLength;
};

class KernelChange : public testing::TestWithParam<ChangeCase> {};

TEST_P(KernelChange, StaysBetweenOldAndNewAndArrivesInTime) {
    const auto [before, after, maxLength] = GetParam();
    const int change = 3 * maxLength + 10000;
    ConvolverPlan plan(maxLength, 256);
    const int build =
        std::max(std::max(plan.partitionCount() / 4, 1) * plan.partitionSize(), kFade + plan.partitionSize());
    const int arrived = change + build + 3 * plan.partitionSize() + kFade;
    const int total = arrived + 4000;
    const auto in = sine(441.0, 44100.0, static_cast<std::size_t>(total));
    const auto flat = [](int length) {
        return std::vector<float>(static_cast<std::size_t>(length), 1.0f / static_cast<float>(length));
    };
    Rig<TapKernel> rig(plan, in, flat(before));
    rig.run(evenBlocks(change, 100));
    rig.kernel.change(flat(after));
    rig.run(randomBlocks(total - change, 256, 6));

    const MovingAverage average(in);
    int lastTime = change;
    double lastGain = 0.0;
    for (int time = 300; time < total; ++time) {
        const double was = average.at(time - 256, before), will = average.at(time - 256, after);
        const double y = static_cast<double>(rig.out[static_cast<std::size_t>(time)]);
        const double low = time < arrived ? std::min(was, will) : will;
        const double high = time < arrived ? std::max(was, will) : will;
        ASSERT_GT(y, low - 1e-5) << "sample " << time - change << " after the change";
        ASSERT_LT(y, high + 1e-5) << "sample " << time - change << " after the change";
        if (time < change) {
            ASSERT_NEAR(y, was, 1e-5);
        } else if (std::abs(will - was) > 0.1) {
            const double gain = (y - was) / (will - was);
            ASSERT_LE(std::abs(gain - lastGain), (time - lastTime) * 1.01 / kFade + 2e-4) << "a step";
            lastTime = time;
            lastGain = gain;
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Lengths, KernelChange,
                         testing::Values(ChangeCase{45, 221, 221}, ChangeCase{221, 1, 221},
                                         ChangeCase{1, 7000, 8191}, ChangeCase{19000, 1, 20000},
                                         ChangeCase{1, 20000, 20000}, ChangeCase{1500, 70000, 70000}));

// Any version that is rewritten while it is heard, and any stage that changes at another time than the
// others, shows as a gain other than 1.
TEST(SmoothingKernel, KeepsTheGainAtOneWhateverMoves) {
    for (const double rate : {44100.0, 1411200.0}) {
        const int maxLength = 1 + samplesInMs(5.0, rate) * (rate > 1e6 ? 3 : 1);
        const int total = rate > 1e6 ? 900000 : 120000;
        const int largestBlock = rate > 1e6 ? 8192 : 256;
        wave::Environment environment(largestBlock);
        environment.setSampleRate(static_cast<float>(rate));
        ConvolverPlan plan(maxLength, 256);
        SmoothingKernel kernel(environment, plan);
        // With a trace of noise it does not count as standing still.
        const auto in = spread(11, static_cast<std::size_t>(total), 1.0 - 1e-6, 1.0 + 1e-6);
        VectorSource source(environment, in);
        Convolver left(environment, kernel), late(environment, kernel);
        left.source = late.source = &source;
        Random random(2024);
        const int lateStart = 777;
        int time = 0;
        for (const int size : randomBlocks(total, largestBlock, 31)) {
            if (random.between(0, 9) == 0) {
                kernel.windowSize.assign(static_cast<float>(random.between(0, 1500)) * 0.01f, nullptr);
                kernel.shape = random.between(0, 3);
                kernel.offset.assign(static_cast<float>(random.between(0, 10)) * 0.1f, nullptr);
                kernel.smoothing.assign(static_cast<float>(random.between(0, 10)) * 0.1f, nullptr);
                kernel.power.assign(static_cast<float>(random.between(0, 10)) * 0.1f, nullptr);
            }
            std::vector<wave::Producer*> channels{&left};
            if (time > lateStart) channels.push_back(&late);
            runBlock(environment, channels, size, [&](int samples) {
                for (wave::Producer* channel : channels) {
                    const int settled = 256 + maxLength + (channel == &late ? lateStart + largestBlock : 0);
                    for (int i = std::max(settled - time, 0); i < samples; ++i) {
                        ASSERT_NEAR(channel->current()[i], 1.0f, 1e-5f) << "sample " << time + i;
                    }
                }
            });
            if (HasFatalFailure()) return;
            time += size;
        }
    }
}

// A signal of held values with something between them, flagged or not: the shortcuts of a signal at rest must
// not be heard when it moves again.
TEST(Convolver, RestsAndWakesWithoutATrace) {
    for (const int maxLength : {221, 9000}) {
        for (const auto flag : {ConstantFlag::WhereTrue, ConstantFlag::Never}) {
            std::vector<float> in;
            Random random(77);
            while (in.size() < 200000) {
                const auto held = static_cast<std::size_t>(random.between(1, 3 * maxLength + 3000));
                in.insert(in.end(), held, static_cast<float>(random.between(-2, 0)));
                const auto burst = whiteNoise(in.size(), static_cast<std::size_t>(random.between(0, 700)));
                in.insert(in.end(), burst.begin(), burst.end());
            }
            ConvolverPlan plan(maxLength, 256);
            Rig<SmoothingKernel> rig(plan, {});
            rig.environment.setSampleRate(maxLength > 8000 ? 176400.0f : 44100.0f);
            rig.kernel.windowSize.assign(maxLength > 8000 ? 50.0f : 4.0f, nullptr);
            const int length = maxLength > 8000 ? 8821 : 177;
            VectorSource source(rig.environment, in, flag);
            rig.convolver.source = &source;
            int rests = 0;
            for (const int size : randomBlocks(static_cast<int>(in.size()), 256, 15)) {
                rig.run({&size, 1});
                const bool rested = rig.convolver.current().data() == source.current().data();
                rests += rested;
                EXPECT_EQ(rig.convolver.isConstant(), rested);
            }
            EXPECT_GT(rests, 100);
            const MovingAverage average(in);
            for (int time = 0; time < static_cast<int>(in.size()); ++time) {
                ASSERT_NEAR(rig.out[static_cast<std::size_t>(time)], average.at(time - 256, length), 4e-6)
                    << "sample " << time << " of a kernel of " << length;
            }
        }
    }
}

// While the input rests the kernel moves on, and is the one heard afterwards, without a crossfade.
TEST(Convolver, WakesWithTheNewestKernel) {
    const auto noise = whiteNoise(3, 10000);
    std::vector<float> in(noise.begin(), noise.begin() + 3000);
    in.resize(40000, 0.0f);
    in.insert(in.end(), noise.begin(), noise.end());
    ConvolverPlan plan(221, 256);
    Rig<SmoothingKernel> rig(plan, in);
    rig.kernel.windowSize.assign(5.0f, nullptr);
    rig.run(evenBlocks(5000, 200));
    rig.kernel.windowSize.assign(1.0f, nullptr);
    rig.run(randomBlocks(45000, 256, 9));
    const MovingAverage average(in);
    for (int time = 0; time < 50000; ++time) {
        ASSERT_NEAR(rig.out[static_cast<std::size_t>(time)], average.at(time - 256, time < 10000 ? 221 : 45),
                    1e-6)
            << "sample " << time;
    }
}

// --- SmoothingShape ---

std::vector<double> normalized(const SmoothingShape& shape) {
    std::vector<double> taps;
    for (int i = 0; i < shape.length; ++i) taps.push_back(static_cast<double>(shape.tap(i)));
    const double sum = std::accumulate(taps.begin(), taps.end(), 0.0);
    for (double& tap : taps) tap /= sum;
    return taps;
}

// The forms at full smoothing are windows of the literature, of length + 2 points without the zeros at the
// ends.
TEST(SmoothingShape, HoldsTheKnownWindows) {
    using Shape = SmoothingShape;
    const int length = 99;
    const auto expectTaps = [&](int form, float power, float smoothing, auto&& window) {
        const Shape shape{length, form, 0.5f, power, smoothing};
        for (int i = 0; i < length; ++i)
            EXPECT_NEAR(shape.tap(i), window((i + 1.0) / (length + 1.0)), 1e-6) << form;
    };
    const auto hann = [](double t) { return 0.5 - 0.5 * std::cos(2.0 * M_PI * t); };
    const auto bartlett = [](double t) { return 1.0 - std::abs(2.0 * t - 1.0); };
    expectTaps(Shape::Sine, 0.0f, 1.0f, hann);
    expectTaps(Shape::Sine, 1.0f, 1.0f, [&](double t) { return std::pow(hann(t), 4.0); });
    expectTaps(Shape::Classic, 0.0f, 1.0f, bartlett);
    expectTaps(Shape::Classic, 0.0f, 0.5f, [&](double t) { return std::min(2.0 * bartlett(t), 0.5); });
    expectTaps(Shape::Triangle, 0.0f, 1.0f, [&](double t) { return bartlett(t) / 2; });
    expectTaps(Shape::Polynome, 0.0f, 1.0f, [](double t) { return 1.0 - (2.0 * t - 1.0) * (2.0 * t - 1.0); });
    for (const double tap : normalized({length, Shape::Classic, 0.5f, 1.0f, 0.0f})) {
        EXPECT_NEAR(tap, 1.0 / length, 1e-9);
    }
}

TEST(SmoothingShape, MovesItsWeightWithTheOffset) {
    const int length = 500;
    const auto peakAt = [&](float offset) {
        const auto taps = normalized({length, SmoothingShape::Sine, offset, 0.0f, 1.0f});
        return std::max_element(taps.begin(), taps.end()) - taps.begin();
    };
    EXPECT_NEAR(static_cast<double>(peakAt(0.5f)), 249.5, 1.0);
    EXPECT_NEAR(static_cast<double>(peakAt(0.2f)), 0.8 * length, 2.0);
    // At the ends the form is only half there: it rises to the last tap, or falls from the first.
    EXPECT_EQ(peakAt(0.0f), length - 1);
    EXPECT_EQ(peakAt(1.0f), 0);
}

}  // namespace
}  // namespace vanta::test
