#include <gtest/gtest.h>

#include <array>
#include <numeric>
#include <sstream>
#include <vector>

#include "foundation/binary_data.hpp"
#include "plugin/metering/level_source_proxies.hpp"

namespace vanta {
namespace {

/// A record that is written, and then read by a proxy.
class Record {
public:
    template <typename... Values>
    explicit Record(Values... values) {
        (add(values), ...);
    }
    void add(int value) { writer.writeInt(value); }
    void add(float value) { writer.writeFloat(value); }
    void add(const std::vector<float>& values) {
        for (const float value : values) add(value);
    }
    BinaryDataReader& reader() { return reader_; }

private:
    std::stringstream stream;
    BinaryDataWriter writer{stream};
    BinaryDataReader reader_{stream};
};

std::vector<float> ramp(int count, float from = 0.0f) {
    std::vector<float> values(static_cast<std::size_t>(count));
    std::iota(values.begin(), values.end(), from);
    return values;
}

TEST(LevelSourceProxy, holdsWhatTheLinkBrought) {
    LevelSourceProxy proxy;
    EXPECT_EQ(proxy.detection(), LevelSource::Maximum);
    EXPECT_EQ(proxy.value(LevelSource::Range), -180.0f);
    Record record(1.0f, 2.0f, 3.0f, 4.0f, 5.0f, 0);
    proxy.read(record.reader());
    for (int i = 0; i < LevelSource::InfoCount; ++i) {
        EXPECT_EQ(proxy.value(static_cast<LevelSource::Info>(i)), static_cast<float>(i + 1));
    }
    EXPECT_EQ(proxy.detection(), LevelSource::Minimum);
}

TEST(LevelSourceProxy, collectsCommandsUntilTheyAreFetched) {
    LevelSourceProxy proxy, target;
    EXPECT_EQ(proxy.takeCommand(), 0);
    proxy.resetPeak();
    EXPECT_EQ(proxy.takeCommand(), 1);
    EXPECT_EQ(proxy.takeCommand(), 0);
    proxy.resetMeasurement();
    proxy.resetPeak();
    LevelSourceProxy::apply(proxy.takeCommand(), target);
    EXPECT_EQ(target.takeCommand(), 3) << "both reached the source";
}

TEST(AudioSourceProxy, appendsFramesUntilTheyAreUnlocked) {
    AudioSourceProxy proxy;
    // Two channels, blocks of 4, first one frame, then two.
    Record first(2, 1, 4, ramp(8));
    Record second(2, 2, 4, ramp(16, 8.0f));
    proxy.read(first.reader());
    proxy.read(second.reader());
    ASSERT_EQ(proxy.frameCount(), 3);
    for (int frame = 0; frame < 3; ++frame) {
        for (int channel = 0; channel < 2; ++channel) {
            const float* block = proxy.block(frame, channel);
            EXPECT_EQ(std::vector<float>(block, block + 4),
                      ramp(4, static_cast<float>(8 * frame + 4 * channel)));
        }
    }
    EXPECT_EQ(proxy.block(3, 0), nullptr);
    proxy.unlock();
    EXPECT_EQ(proxy.frameCount(), 0);
    EXPECT_EQ(proxy.channelCount(), 2);
    EXPECT_EQ(proxy.blockLength(), 4);
}

TEST(AudioSourceProxy, startsOverWhenTheShapeChangesOrNobodyDrains) {
    AudioSourceProxy proxy;
    Record stereo(2, 1, 4, ramp(8));
    Record mono(1, 1, 4, ramp(4, 50.0f));
    proxy.read(stereo.reader());
    proxy.read(mono.reader());
    EXPECT_EQ(proxy.frameCount(), 1);
    EXPECT_EQ(proxy.block(0, 0)[0], 50.0f);

    AudioSourceProxy full;
    for (int i = 0; i < 601; ++i) {
        Record record(1, 1, 256, ramp(256, static_cast<float>(i)));
        full.read(record.reader());
        EXPECT_EQ(full.frameCount(), i < 600 ? i + 1 : 1);
    }
    EXPECT_EQ(full.block(0, 0)[0], 600.0f) << "the old is dropped, not the new";
}

TEST(AudioSourceProxy, doesNotBelieveARecordThatCannotBeOne) {
    for (const auto& [channels, frames, length] :
         {std::array{-1, 1, 4}, {2, -3, 4}, {2, 1, -4}, {1 << 30, 1 << 30, 1 << 30}, {2, 1 << 22, 256}}) {
        AudioSourceProxy proxy;
        Record record(channels, frames, length, 1.0f);
        proxy.read(record.reader());
        EXPECT_TRUE(record.reader().failed());
        EXPECT_EQ(proxy.frameCount(), 0);
    }
    AudioSourceProxy cut;
    Record record(2, 1, 4, ramp(5));
    cut.read(record.reader());
    EXPECT_TRUE(record.reader().failed());
    EXPECT_EQ(cut.frameCount(), 0);
}

TEST(SpectrumSourceProxy, keepsTheLargerUntilItIsConsumed) {
    const auto read = [](SpectrumSourceProxy& proxy, int count, const std::vector<float>& values) {
        Record record(count, static_cast<int>(values.size()), values);
        proxy.read(record.reader());
    };
    const auto held = [](const SpectrumSourceProxy& proxy) {
        return std::vector<float>(proxy.data().begin(), proxy.data().end());
    };
    SpectrumSourceProxy proxy;
    read(proxy, 1, {1.0f, 5.0f, 3.0f});
    read(proxy, 2, {2.0f, 4.0f, 3.5f});
    EXPECT_EQ(held(proxy), (std::vector<float>{2.0f, 5.0f, 3.5f}));
    EXPECT_EQ(proxy.spectrumCount(), 2);
    proxy.unlock();
    read(proxy, 3, {0.0f, 0.0f, 0.0f});
    EXPECT_EQ(held(proxy), (std::vector<float>{0.0f, 0.0f, 0.0f}));
    read(proxy, 4, {9.0f});
    EXPECT_EQ(held(proxy), std::vector<float>{9.0f}) << "another size replaces";
    read(proxy, 5, {});
    EXPECT_EQ(held(proxy), std::vector<float>{9.0f});
}

TEST(CombinedLevelSource, showsTheMostExtremeOfItsPlaces) {
    std::array<LevelSourceProxy, 3> proxies;
    CombinedLevelSource combined;
    EXPECT_EQ(combined.value(LevelSource::Current), -180.0f);
    for (std::size_t i = 0; i < proxies.size(); ++i) combined.set(4 * i, &proxies[i]);
    const auto fill = [&](int word) {
        const float levels[] = {-10.0f, -3.0f, -20.0f};
        for (std::size_t i = 0; i < proxies.size(); ++i) {
            Record record(levels[i], levels[i], levels[i], levels[i], levels[i], word);
            proxies[i].read(record.reader());
        }
    };
    fill(LevelSource::Maximum);
    EXPECT_EQ(combined.value(LevelSource::Highest), -3.0f);
    fill(LevelSource::Minimum);
    EXPECT_EQ(combined.value(LevelSource::Highest), -20.0f);
    EXPECT_EQ(combined.detection(), LevelSource::Minimum);
    combined.resetPeak();
    combined.resetMeasurement();
    for (LevelSourceProxy& proxy : proxies) EXPECT_EQ(proxy.takeCommand(), 3);
}

}  // namespace
}  // namespace vanta
