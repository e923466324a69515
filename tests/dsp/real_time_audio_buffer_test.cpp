#include <gtest/gtest.h>

#include <atomic>
#include <deque>
#include <memory>
#include <numeric>
#include <thread>
#include <vector>

#include "dsp/metering/real_time_audio_buffer.hpp"
#include "tests/support/element_rig.hpp"
#include "tests/support/realtime_trap.hpp"

namespace vanta::test {
namespace {

constexpr int kFrame = RealTimeAudioBuffer::kBlockLength;

/// Counts samples, from an offset that tells streams apart. Floats count exactly up to 2^24.
class Counter final : public wave::Source {
public:
    Counter(wave::Environment& owner, float offset) : Source(owner), next_(offset) {}

protected:
    void produce(wave::BasicBlock<float>* block, int samples, int) override {
        for (int i = 0; i < samples; ++i) block->data()[i] = next_++;
    }

private:
    float next_;
};

constexpr float kStreamDistance = 1000000.0f;

/// Two channels; the lists record streams 0 and 1, 2 and 3, and nothing.
struct Rig {
    explicit Rig(float rate = 48000.0f) {
        environment.setSampleRate(rate);
        buffer = std::make_unique<RealTimeAudioBuffer>(environment, 2);
        for (int i = 0; i < 4; ++i) {
            Counter& stream = streams.emplace_back(environment, kStreamDistance * static_cast<float>(i));
            buffer->measurement(i / 2).setInput(i % 2, stream);
        }
    }
    void run(int samples, int block = 256) { runGraph(environment, evenBlocks(samples, block)); }
    RealTimeAudioBuffer::Measurement& list(int i) { return buffer->measurement(i); }

    /// All that the reader gets of one channel.
    std::vector<float> take(int listIndex, int channel) {
        auto& source = list(listIndex);
        source.lock();
        std::vector<float> result;
        for (int i = 0; i < source.frameCount(); ++i) {
            const float* block = source.block(i, channel);
            result.insert(result.end(), block, block + source.blockLength());
        }
        source.unlock();
        return result;
    }

    wave::Environment environment{256};
    std::unique_ptr<RealTimeAudioBuffer> buffer;
    std::deque<Counter> streams;
};

std::vector<float> counted(float from, int count) {
    std::vector<float> result(static_cast<std::size_t>(count));
    std::iota(result.begin(), result.end(), from);
    return result;
}

TEST(RealTimeAudioBuffer, HandsOnEveryStreamWithoutAGap) {
    Rig rig;
    int taken = 0;
    for (const int samples : {100, 1, 255, 700, 3000, 7000}) {
        rig.run(samples, 97);
        for (int i = 0; i < 3; ++i) rig.list(i).lock();
        const int frames = rig.list(0).frameCount();
        for (int frame = 0; frame < frames; ++frame) {
            for (int stream = 0; stream < 4; ++stream) {
                const float* block = rig.list(stream / 2).block(frame, stream % 2);
                const float from = kStreamDistance * static_cast<float>(stream) + static_cast<float>(taken);
                EXPECT_EQ(std::vector<float>(block, block + kFrame), counted(from, kFrame));
            }
            EXPECT_EQ(rig.list(2).block(frame, 1)[17], 0.0f) << "no input is silence";
            taken += kFrame;
        }
        EXPECT_EQ(rig.list(0).block(frames, 0), nullptr);
        for (int i = 0; i < 3; ++i) rig.list(i).unlock();
        EXPECT_EQ(rig.list(0).frameCount(), 0);
    }
    EXPECT_EQ(taken, (100 + 1 + 255 + 700 + 3000 + 7000) / kFrame * kFrame);
}

TEST(RealTimeAudioBuffer, DropsWhatIsPendingWhenTheReaderStaysAway) {
    const struct {
        float rate;
        int hostBlock, frames;
    } cases[] = {{44100.0f, 512, 32}, {192000.0f, 512, 64}, {1.6e6f, 1, 256}, {48000.0f, 8192, 66}};
    for (const auto& [rate, hostBlock, frames] : cases) {
        SCOPED_TRACE(rate);
        Rig rig(rate);
        rig.environment.setHostBlockSamples(hostBlock);
        rig.buffer->prepare();
        rig.run(frames * kFrame, 256);
        EXPECT_EQ(rig.take(0, 0), counted(0.0f, frames * kFrame)) << "the pool is full, but nothing is lost";
        rig.run((frames + 1) * kFrame, 256);
        rig.run(10 * kFrame, 256);  // the inputs stand still meanwhile
        EXPECT_TRUE(rig.take(0, 0).empty());
        rig.run(3 * kFrame, 256);
        // The block that found no room was computed, but not recorded.
        EXPECT_EQ(rig.take(0, 0), counted(static_cast<float>((2 * frames + 1) * kFrame), 3 * kFrame));
    }
}

TEST(RealTimeAudioBuffer, HoldsTwoOfTheLargestHostBlocks) {
    constexpr int kLarge = 16384;
    for (const bool announced : {true, false}) {
        Rig rig;
        if (announced) rig.buffer->setLargestHostBlock(kLarge);
        const auto playAndTake = [&](int hostBlock, int blocks) {
            rig.environment.setHostBlockSamples(hostBlock);
            rig.run(hostBlock * blocks);
            return static_cast<int>(rig.take(0, 0).size());
        };
        EXPECT_EQ(playAndTake(64, 100), 64 * 100);
        // The reader hears of blocks that nobody has announced when the first one has overflowed.
        EXPECT_EQ(playAndTake(kLarge, 1), announced ? kLarge : 0);
        for (int i = 0; i < 3; ++i) EXPECT_EQ(playAndTake(kLarge, 2), 2 * kLarge);
    }
}

TEST(RealTimeAudioBuffer, ReusesTheOldestWhenToldNotToStop) {
    Rig rig;
    rig.buffer->stopWhenFull = false;
    rig.run(40 * kFrame, 256);
    EXPECT_EQ(rig.take(0, 0), counted(static_cast<float>(8 * kFrame), 32 * kFrame));
}

TEST(RealTimeAudioBuffer, RunsOnlyWhileAListIsWanted) {
    Rig rig;
    rig.run(100);
    rig.list(0).enabled = false;
    rig.list(1).enabled = false;
    rig.run(2 * kFrame, 256);
    EXPECT_EQ(rig.take(2, 0).size(), 2u * kFrame) << "one list is wanted still";
    rig.list(2).enabled = false;
    rig.run(4 * kFrame, 256);
    rig.list(1).enabled = true;
    rig.run(kFrame);
    EXPECT_EQ(rig.take(0, 0), counted(static_cast<float>(100 + 2 * kFrame), kFrame))
        << "starts afresh with a whole frame, and its inputs stood still";
}

TEST(RealTimeAudioBuffer, GetsItsFramesBackAtAReset) {
    Rig rig;
    rig.run(20 * kFrame + 100, 256);
    rig.buffer->reset();
    rig.run(32 * kFrame, 256);
    EXPECT_EQ(rig.take(0, 0).size(), 32u * kFrame);
}

// Whatever the audio thread does while the reader looks: stop, take back what is oldest, or start anew.
TEST(RealTimeAudioBuffer, GivesAReaderOnAnotherThreadUnbrokenStretches) {
    const struct { bool stops, resets; } cases[] = {{true, false}, {false, false}, {true, true}};
    for (const auto& [stops, resets] : cases) {
        Rig rig;
        rig.buffer->stopWhenFull = stops;
        std::atomic<bool> done{false};
        std::atomic<int> stretches{0};
        std::thread reader([&] {
            while (!done) {
                const auto stretch = rig.take(1, 1);
                if (stretch.empty()) continue;
                ++stretches;
                ASSERT_EQ(stretch, counted(stretch.front(), static_cast<int>(stretch.size())));
                if (stretches % 5 == 0) std::this_thread::sleep_for(std::chrono::microseconds(300));
            }
        });
        {
            const RealtimeTrap trap;
            for (int i = 0; i < 20000; ++i) {
                rig.run(171);
                if (resets && i % 50 == 0) rig.buffer->reset();
            }
            EXPECT_EQ(trap.total(), 0) << trap.report();
        }
        while (stretches == 0) rig.run(171);
        done = true;
        reader.join();
    }
}

}  // namespace
}  // namespace vanta::test
