#include "dsp/convolver/convolver.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <numeric>
#include <stdexcept>
#include <vector>

#include "dsp/convolver/smoothing_kernel.hpp"
#include "foundation/numbers.hpp"
#include "tests/support/element_rig.hpp"
#include "tests/support/realtime_trap.hpp"
#include "tests/support/signals.hpp"

namespace vanta {
namespace {

using test::ConstantFlag;
using test::evenBlocks;
using test::randomBlocks;
using test::runElement;
using test::VectorSource;

constexpr int kLargestBlock = 8192;
constexpr int kFade = 882;  // 20 ms at 44.1 kHz

/// A kernel of any taps, in the order in which they are handed in. Counts the taps that it makes.
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
    int tapsMade = 0;

private:
    class CopyTask final : public UpdateTask {
    public:
        explicit CopyTask(TapKernel& owner) : UpdateTask(owner), kernel(owner) {}
        void prepare() override {
            version().length = static_cast<int>(kernel.taps.size());
            grainCount = kernel.paddedLength(version().length);
        }
        void run(int first, int count) override {
            for (int i = first; i < first + count; ++i) {
                const auto place = static_cast<std::size_t>(i);
                version().taps[i] = place < kernel.taps.size() ? kernel.taps[place] : 0.0f;
            }
            kernel.tapsMade += count;
        }

    private:
        TapKernel& kernel;
    };
};

/// Output `time` of a direct convolution, in double precision.
double directOutput(const std::vector<float>& taps, const std::vector<float>& in, int time) {
    double sum = 0.0;
    const int last = std::min(static_cast<int>(taps.size()) - 1, time);
    for (int j = 0; j <= last; ++j) {
        sum += static_cast<double>(taps[static_cast<std::size_t>(j)]) *
               static_cast<double>(in[static_cast<std::size_t>(time - j)]);
    }
    return sum;
}

std::vector<float> randomTaps(int length, unsigned seed) {
    return test::whiteNoise(seed, static_cast<std::size_t>(length));
}

/// Compares at every sample if that is few products, else at random ones.
void expectConvolution(const std::vector<float>& taps, const std::vector<float>& in,
                       const std::vector<float>& out, int latency, double tolerance) {
    const int total = static_cast<int>(out.size());
    test::Random random(99);
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
    explicit MovingAverage(const std::vector<float>& in) : sums(in.size() + 1, 0.0) {
        for (std::size_t i = 0; i < in.size(); ++i) sums[i + 1] = sums[i] + static_cast<double>(in[i]);
    }
    /// Of the `length` samples that end with sample `time`, with silence before the first.
    double at(int time, int length) const {
        const auto sumTo = [&](int end) { return sums[static_cast<std::size_t>(std::max(end, 0))]; };
        return (sumTo(time + 1) - sumTo(time + 1 - length)) / length;
    }

private:
    std::vector<double> sums;
};

struct Case {
    int length;
    int base;
};

class ConvolverOfLength : public testing::TestWithParam<Case> {};

TEST_P(ConvolverOfLength, EqualsADirectConvolution) {
    const auto [length, base] = GetParam();
    wave::Environment environment(kLargestBlock);
    const ConvolverPlan plan(length, base);
    EXPECT_EQ(plan.latency(), base);
    EXPECT_GE(plan.coveredLength(), length);
    const auto taps = randomTaps(length, 3);
    TapKernel kernel(environment, plan, taps);
    const int total = 2 * length + 3 * plan.fftSize() + 5000;
    const auto in = test::whiteNoise(4, static_cast<std::size_t>(total));
    VectorSource source(environment, in);
    Convolver convolver(environment, kernel);
    convolver.source = &source;
    const auto out = runElement(environment, convolver, randomBlocks(total, length > 500 ? 8192 : 300, 7));
    // White noise times white taps: the level of the result is that of sqrt(length / 9).
    expectConvolution(taps, in, out, base, 1e-5 * std::sqrt(std::max(length, 9) / 9.0));
}

INSTANTIATE_TEST_SUITE_P(Lengths, ConvolverOfLength,
                         testing::Values(Case{1, 256}, Case{2, 256}, Case{3, 256}, Case{100, 256},
                                         Case{221, 256}, Case{1000, 256}, Case{8191, 256}, Case{8192, 256},
                                         Case{20000, 256}, Case{70000, 256}, Case{59, 128}, Case{1000, 128},
                                         Case{5000, 128}, Case{1, 0}, Case{64, 0}, Case{65, 0}, Case{3000, 0},
                                         Case{20000, 0}, Case{500, 32}));

// Where the partitions begin depends on the restart alone, so not even the rounding differs.
TEST(Convolver, GivesTheSameBitsInBlocksOfAnySize) {
    for (const int length : {221, 9000}) {
        const int total = 40000;
        const auto in = test::whiteNoise(8, static_cast<std::size_t>(total));
        std::vector<float> first;
        for (const auto& blocks : {evenBlocks(total, 1), evenBlocks(total, 64), evenBlocks(total, 255),
                                   evenBlocks(total, 8192), randomBlocks(total, 8192, 21)}) {
            wave::Environment environment(kLargestBlock);
            const ConvolverPlan plan(length, 256);
            TapKernel kernel(environment, plan, randomTaps(length, 5));
            VectorSource source(environment, in);
            Convolver convolver(environment, kernel);
            convolver.source = &source;
            const auto out = runElement(environment, convolver, blocks);
            if (first.empty()) first = out;
            ASSERT_EQ(out, first) << "first block of " << blocks[0];
        }
    }
}

TEST(Convolver, DelaysOnlyWithAWindowOfZero) {
    wave::Environment environment(256);
    ConvolverPlan plan(221, 256);
    SmoothingKernel kernel(environment, plan);
    const auto in = test::whiteNoise(1, 20000);
    VectorSource source(environment, in);
    Convolver convolver(environment, kernel);
    convolver.source = &source;
    const auto out = runElement(environment, convolver, randomBlocks(20000, 256, 2));
    for (std::size_t i = 0; i < out.size(); ++i) ASSERT_NEAR(out[i], i < 256 ? 0.0f : in[i - 256], 1e-6f);
}

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
    const ConvolverPlan plan(maxLength, 256);
    const int build =
        std::max(std::max(plan.partitionCount() / 4, 1) * plan.partitionSize(), kFade + plan.partitionSize());
    const int arrived = change + build + 3 * plan.partitionSize() + kFade;
    const int total = arrived + 4000;
    const auto in = test::sine(441.0, 44100.0, static_cast<std::size_t>(total));
    const auto oldTaps =
        std::vector<float>(static_cast<std::size_t>(before), 1.0f / static_cast<float>(before));
    const auto newTaps =
        std::vector<float>(static_cast<std::size_t>(after), 1.0f / static_cast<float>(after));
    wave::Environment environment(256);
    TapKernel kernel(environment, plan, oldTaps);
    VectorSource source(environment, in);
    Convolver convolver(environment, kernel);
    convolver.source = &source;
    auto out = runElement(environment, convolver, evenBlocks(change, 100));
    kernel.change(newTaps);
    const auto rest = runElement(environment, convolver, randomBlocks(total - change, 256, 6));
    out.insert(out.end(), rest.begin(), rest.end());

    const MovingAverage average(in);
    int lastTime = change;
    double lastGain = 0.0;
    for (int time = 300; time < total; ++time) {
        const double was = average.at(time - 256, before), will = average.at(time - 256, after);
        const double y = static_cast<double>(out[static_cast<std::size_t>(time)]);
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

/// A level of 1 with a trace of noise, so that it does not count as standing still.
std::vector<float> nearlyConstant(int total) {
    auto samples = test::whiteNoise(11, static_cast<std::size_t>(total), 1e-6);
    for (float& x : samples) x += 1.0f;
    return samples;
}

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
        const auto in = nearlyConstant(total);
        VectorSource source(environment, in);
        Convolver left(environment, kernel), late(environment, kernel);
        left.source = late.source = &source;
        test::Random random(2024);
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
            test::runBlock(environment, channels, size, [&](int samples) {
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

TEST(Convolver, ServesChannelsOfOneKernelAlike) {
    wave::Environment environment(256);
    ConvolverPlan plan(1000, 256);
    SmoothingKernel kernel(environment, plan);
    kernel.windowSize.assign(11.0f, nullptr);
    const auto in = test::whiteNoise(12, 30000);
    VectorSource source(environment, in);
    Convolver left(environment, kernel), right(environment, kernel);
    left.source = right.source = &source;
    wave::Producer* const channels[] = {&left, &right};
    const auto first = test::runElements(environment, channels, randomBlocks(15000, 256, 1));
    kernel.windowSize.assign(3.0f, nullptr);
    const auto second = test::runElements(environment, channels, randomBlocks(15000, 256, 2));
    EXPECT_EQ(first[0], first[1]);
    EXPECT_EQ(second[0], second[1]);
}

enum class Interruption { Reset, Jump };

// After a reset or a missed stretch the output is that of a fresh convolver: no trace of the signal before,
// and no crossfade from the kernel before.
TEST(Convolver, StartsOverAfterAnInterruption) {
    for (const auto interruption : {Interruption::Reset, Interruption::Jump}) {
        for (const int length : {600, 9000}) {
            const auto in = test::whiteNoise(14, 30000);
            const auto blocks = randomBlocks(30000, 256, 3);
            const auto run = [&](bool fresh) {
                wave::Environment environment(256);
                const ConvolverPlan plan(length, 256);
                TapKernel kernel(environment, plan, randomTaps(length, 1));
                VectorSource source(environment, in);
                Convolver convolver(environment, kernel);
                convolver.source = &source;
                if (!fresh) {
                    runElement(environment, convolver, randomBlocks(3 * length + 12345, 256, 4));
                    kernel.change(randomTaps(length, 2));
                    if (interruption == Interruption::Jump) {
                        environment.run(256, wave::Environment::kPositionOnly);
                    } else {
                        environment.resetGraph(wave::ResetMode::ResetActive);
                    }
                } else {
                    kernel.change(randomTaps(length, 2));
                }
                source.rewind();
                return runElement(environment, convolver, blocks);
            };
            EXPECT_EQ(run(false), run(true)) << "length " << length;
        }
    }
}

// A signal of held values with something between them, flagged or not: the shortcuts of a signal at rest must
// not be heard when it moves again.
TEST(Convolver, RestsAndWakesWithoutATrace) {
    for (const int maxLength : {221, 9000}) {
        for (const auto flag : {ConstantFlag::WhereTrue, ConstantFlag::Never}) {
            std::vector<float> in;
            test::Random random(77);
            while (in.size() < 200000) {
                const auto held = static_cast<std::size_t>(random.between(1, 3 * maxLength + 3000));
                in.insert(in.end(), held, static_cast<float>(random.between(-2, 0)));
                const auto burst =
                    test::whiteNoise(in.size(), static_cast<std::size_t>(random.between(0, 700)));
                in.insert(in.end(), burst.begin(), burst.end());
            }
            wave::Environment environment(256);
            environment.setSampleRate(maxLength > 8000 ? 176400.0f : 44100.0f);
            ConvolverPlan plan(maxLength, 256);
            SmoothingKernel kernel(environment, plan);
            kernel.windowSize.assign(maxLength > 8000 ? 50.0f : 4.0f, nullptr);
            const int length = maxLength > 8000 ? 8821 : 177;
            VectorSource source(environment, in, flag);
            Convolver convolver(environment, kernel);
            convolver.source = &source;
            std::vector<float> out;
            int rests = 0;
            wave::Producer* const channels[] = {&convolver};
            for (const int size : randomBlocks(static_cast<int>(in.size()), 256, 15)) {
                test::runBlock(environment, channels, size, [&](int samples) {
                    const float* data = convolver.current().data();
                    out.insert(out.end(), data, data + samples);
                    rests += data == source.current().data();
                    EXPECT_EQ(convolver.isConstant(), data == source.current().data());
                });
            }
            EXPECT_GT(rests, 100);
            const MovingAverage average(in);
            for (int time = 0; time < static_cast<int>(out.size()); ++time) {
                ASSERT_NEAR(out[static_cast<std::size_t>(time)], average.at(time - 256, length), 4e-6)
                    << "sample " << time << " of a kernel of " << length;
            }
        }
    }
}

// While the input rests the kernel moves on, and is the one heard afterwards, without a crossfade.
TEST(Convolver, WakesWithTheNewestKernel) {
    wave::Environment environment(256);
    ConvolverPlan plan(221, 256);
    SmoothingKernel kernel(environment, plan);
    kernel.windowSize.assign(5.0f, nullptr);
    const auto noise = test::whiteNoise(3, 10000);
    std::vector<float> in(noise.begin(), noise.begin() + 3000);
    in.resize(20000, 0.0f);
    in.insert(in.end(), noise.begin(), noise.end());
    VectorSource source(environment, in);
    Convolver convolver(environment, kernel);
    convolver.source = &source;
    auto out = runElement(environment, convolver, evenBlocks(5000, 200));
    kernel.windowSize.assign(1.0f, nullptr);
    const auto rest = runElement(environment, convolver, randomBlocks(25000, 256, 9));
    out.insert(out.end(), rest.begin(), rest.end());
    const MovingAverage average(in);
    for (int time = 0; time < 30000; ++time) {
        ASSERT_NEAR(out[static_cast<std::size_t>(time)], average.at(time - 256, time < 10000 ? 221 : 45),
                    1e-6)
            << "sample " << time;
    }
}

// No block pays more than its share of a rebuild.
TEST(ConvolverKernel, SpreadsARebuildEvenly) {
    wave::Environment environment(64);
    const ConvolverPlan plan(8000, 256);
    TapKernel kernel(environment, plan, randomTaps(8000, 1));
    VectorSource source(environment, {});
    Convolver convolver(environment, kernel);
    convolver.source = &source;
    runElement(environment, convolver, evenBlocks(6400, 64));
    EXPECT_EQ(kernel.tapsMade, 8064);
    kernel.tapsMade = 0;
    kernel.change(randomTaps(8000, 2));
    // A quarter of 63 partitions of 128 samples, and each block its part of it: the copying of taps is one of
    // 6 parts of the work, of which 5 are passes of the transforms.
    const int blocks = 15 * 128 / 64;
    int largest = 0, made = 0;
    for (int block = 0; block < blocks; ++block) {
        runElement(environment, convolver, {64});
        largest = std::max(largest, kernel.tapsMade - made);
        made = kernel.tapsMade;
    }
    EXPECT_EQ(made, 8064);
    const int cost = 8064 + 63 * plan.fft().grains();
    EXPECT_LE(largest, cost / blocks + 1);
}

TEST(Convolver, NeitherAllocatesNorLocksNorCallsTheSystem) {
    wave::Environment environment(8192);
    ConvolverPlan plan(20000, 256);
    SmoothingKernel kernel(environment, plan);
    VectorSource source(environment, test::whiteNoise(1, 200000));
    Convolver convolver(environment, kernel);
    convolver.source = &source;
    wave::Producer* const channels[] = {&convolver};
    const auto sizes = randomBlocks(250000, 8192, 1);
    test::RealtimeTrap trap;
    int block = 0;
    for (const int size : sizes) {
        kernel.windowSize.assign(static_cast<float>(block++ % 50), nullptr);
        test::runBlock(environment, channels, size, [](int) {});
    }
    EXPECT_EQ(trap.total(), 0) << trap.report();
}

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
    const int length = 99;
    for (int i = 0; i < length; ++i) {
        const double t = (i + 1.0) / (length + 1.0);
        const double hann = 0.5 - 0.5 * std::cos(2.0 * M_PI * t);
        const double bartlett = 1.0 - std::abs(2.0 * t - 1.0);
        const double welch = 1.0 - (2.0 * t - 1.0) * (2.0 * t - 1.0);
        EXPECT_NEAR((SmoothingShape{length, SmoothingShape::Sine, 0.5f, 0.0f, 1.0f}.tap(i)), hann, 1e-6);
        EXPECT_NEAR((SmoothingShape{length, SmoothingShape::Classic, 0.5f, 0.0f, 1.0f}.tap(i)), bartlett,
                    1e-6);
        EXPECT_NEAR((SmoothingShape{length, SmoothingShape::Triangle, 0.5f, 0.0f, 1.0f}.tap(i)), bartlett / 2,
                    1e-6);
        EXPECT_NEAR((SmoothingShape{length, SmoothingShape::Polynome, 0.5f, 0.0f, 1.0f}.tap(i)), welch, 1e-6);
        EXPECT_NEAR((SmoothingShape{length, SmoothingShape::Sine, 0.5f, 1.0f, 1.0f}.tap(i)),
                    std::pow(hann, 4.0), 1e-6);
        EXPECT_NEAR((SmoothingShape{length, SmoothingShape::Classic, 0.5f, 0.0f, 0.5f}.tap(i)),
                    std::min(2.0 * bartlett, 0.5), 1e-6);
    }
    for (const double tap : normalized({length, SmoothingShape::Classic, 0.5f, 1.0f, 0.0f})) {
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

TEST(ConvolverPlan, GrowsByEightFromTheBase) {
    const auto sizes = [](int length, int base) {
        std::vector<std::pair<int, int>> result;
        const ConvolverPlan plan(length, base);
        for (const ConvolverPlan* node = &plan; node; node = node->next()) {
            result.emplace_back(node->fftSize(), node->partitionCount());
        }
        return result;
    };
    using Stages = std::vector<std::pair<int, int>>;
    EXPECT_EQ(sizes(221, 256), (Stages{{256, 2}}));
    EXPECT_EQ(sizes(8191, 256), (Stages{{256, 64}}));
    EXPECT_EQ(sizes(8192, 256), (Stages{{2048, 6}, {256, 16}}));
    EXPECT_EQ(sizes(65535, 256), (Stages{{2048, 62}, {256, 16}}));
    EXPECT_EQ(sizes(70561, 256), (Stages{{16384, 7}, {2048, 14}, {256, 16}}));
    EXPECT_EQ(sizes(64, 0), (Stages{{64, 0}}));
    EXPECT_EQ(sizes(3000, 0), (Stages{{512, 10}, {64, 14}}));
    EXPECT_THROW(ConvolverPlan(0, 256), std::invalid_argument);
    EXPECT_THROW(ConvolverPlan(100, 48), std::invalid_argument);
    EXPECT_THROW(ConvolverPlan(100, 16), std::invalid_argument);
}

}  // namespace
}  // namespace vanta
