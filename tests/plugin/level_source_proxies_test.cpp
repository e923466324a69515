#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <numeric>
#include <sstream>
#include <vector>

#include "foundation/binary_data.hpp"
#include "plugin/metering/level_exchange.hpp"

namespace vanta::test {
namespace {

using testing::ElementsAre;

void write(BinaryDataWriter& writer, int value) {
    writer.writeInt(value);
}
void write(BinaryDataWriter& writer, const std::vector<float>& values) {
    for (const float value : values) writer.writeFloat(value);
}

/// Has `reader` read a record of these values. False: it says that this can be none.
template <typename Reader, typename... Values>
bool read(Reader& reader, const Values&... values) {
    std::stringstream stream;
    BinaryDataWriter writer(stream);
    (write(writer, values), ...);
    BinaryDataReader data(stream);
    reader.read(data);
    return !data.failed();
}

std::vector<float> ramp(int count, float from = 0.0f) {
    std::vector<float> values(static_cast<std::size_t>(count));
    std::iota(values.begin(), values.end(), from);
    return values;
}

TEST(LevelExchange, HandsCommandsOutOnceAndCombinesChannels) {
    LevelExchange exchange({.channels = 2, .audio = 1, .levelsPerChannel = 2, .globalLevels = 1});
    std::vector<std::uint8_t> commands;
    exchange.combinedLevel(1).resetPeak();
    exchange.level(0).resetMeasurement();
    exchange.level(4).resetMeasurement();
    exchange.takeCommands(commands);
    EXPECT_THAT(commands, ElementsAre(2, 0, 1, 0, 3));
    exchange.takeCommands(commands);
    EXPECT_THAT(commands, ElementsAre(0, 0, 0, 0, 0));
}

TEST(LevelExchange, DropsTheAudioThatWasRecordedForSomebodyElse) {
    LevelExchange exchange({.channels = 1, .audio = 1, .globalLevels = 1});
    exchange.beginAnew();
    for (const int frames : {0, 1, 2}) {
        EXPECT_TRUE(read(exchange, 1, 1, 4, ramp(4), ramp(5, 7.0f), 1));
        EXPECT_EQ(exchange.audio(0).frameCount(), frames);
        EXPECT_EQ(exchange.level(0).value(wave::LevelSource::Current), 7.0f);
    }
}

TEST(AudioSourceProxy, AppendsFramesUntilTheShapeChangesOrNobodyDrains) {
    AudioSourceProxy proxy;
    // Two channels, blocks of 4, first one frame, then two.
    read(proxy, 2, 1, 4, ramp(8));
    read(proxy, 2, 2, 4, ramp(16, 8.0f));
    ASSERT_EQ(proxy.frameCount(), 3);
    for (int i = 0; i < 24; ++i) EXPECT_EQ(proxy.block(i / 8, i / 4 % 2)[i % 4], static_cast<float>(i));
    EXPECT_EQ(proxy.block(3, 0), nullptr);
    for (int i = 0; i < 601; ++i) {
        read(proxy, 1, 1, 256, ramp(256, static_cast<float>(i)));
        EXPECT_EQ(proxy.frameCount(), i < 600 ? i + 1 : 1);
    }
    EXPECT_EQ(proxy.block(0, 0)[0], 600.0f) << "the old is dropped, not the new";
    proxy.unlock();
    EXPECT_EQ(proxy.frameCount(), 0);
}

TEST(AudioSourceProxy, DoesNotBelieveARecordThatCannotBeOne) {
    for (const auto& [channels, frames, length] : {std::array{-1, 1, 4},
                                                   {2, -3, 4},
                                                   {2, 1, -4},
                                                   {1 << 30, 1 << 30, 1 << 30},
                                                   {2, 1 << 22, 256},
                                                   {2, 1, 4}}) {
        AudioSourceProxy proxy;
        EXPECT_FALSE(read(proxy, channels, frames, length, ramp(5)));
        EXPECT_EQ(proxy.frameCount(), 0);
    }
}

TEST(SpectrumSourceProxy, KeepsTheLargerUntilItIsConsumed) {
    SpectrumSourceProxy proxy;
    const auto held = [&](int count, const std::vector<float>& values) {
        read(proxy, count, static_cast<int>(values.size()), values);
        return std::vector<float>(proxy.data().begin(), proxy.data().end());
    };
    held(1, {1, 5, 3});
    EXPECT_THAT(held(2, {2, 4, 3.5f}), ElementsAre(2, 5, 3.5f));
    proxy.unlock();
    EXPECT_THAT(held(3, {0, 0, 0}), ElementsAre(0, 0, 0));
    EXPECT_THAT(held(4, {9}), ElementsAre(9)) << "another size replaces";
    EXPECT_THAT(held(5, {}), ElementsAre(9));
}

TEST(CombinedLevelSource, ShowsTheMostExtremeOfItsPlaces) {
    std::array<LevelSourceProxy, 3> proxies;
    CombinedLevelSource combined;
    EXPECT_EQ(combined.value(wave::LevelSource::Current), -180.0f);
    for (std::size_t i = 0; i < proxies.size(); ++i) combined.set(4 * i, &proxies[i]);
    for (const auto& [detection, level] :
         {std::pair{wave::LevelSource::Maximum, -3.0f}, {wave::LevelSource::Minimum, -20.0f}}) {
        for (std::size_t i = 0; i < proxies.size(); ++i) {
            constexpr float kLevels[] = {-10.0f, -3.0f, -20.0f};
            read(proxies[i], std::vector<float>(5, kLevels[i]), detection);
        }
        EXPECT_EQ(combined.value(wave::LevelSource::Highest), level);
        EXPECT_EQ(combined.detection(), detection);
    }
}

}  // namespace
}  // namespace vanta::test
