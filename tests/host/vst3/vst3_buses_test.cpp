#include "tests/host/vst3/vst3_fixture.hpp"

namespace vanta::test {
namespace {

TEST_F(Vst3, EveryLayoutIsArrangedAndNothingElse) {
    const Vst3Module module;
    Vst3Instance plugin(module.factory());
    v3_speaker_arrangement told = 0;
    const auto arrangement = [&](int direction, int bus) {
        EXPECT_EQ(v3_cpp_obj(plugin.processor)->get_bus_arrangement(plugin.processor, direction, bus, &told),
                  V3_OK);
        return told;
    };
    const auto channels = [&](int direction, int bus) {
        v3_bus_info info{};
        EXPECT_EQ(
            v3_cpp_obj(plugin.component)->get_bus_info(plugin.component, V3_AUDIO, direction, bus, &info),
            V3_OK);
        EXPECT_EQ(info.bus_type, bus == 1 ? V3_AUX : V3_MAIN);
        EXPECT_EQ(info.flags, bus == 1 ? 0u : 1u) << "active unless told";
        return static_cast<std::size_t>(info.channel_count);
    };
    constexpr v3_speaker_arrangement kMono = 0x80000;
    for (const Vst3Layout& layout : kVst3Layouts) {
        const v3_speaker_arrangement main = layout.arrangement;
        for (const v3_speaker_arrangement key : {main, kMono, v3_speaker_arrangement{0}}) {
            EXPECT_EQ(plugin.arrange({main, key}, {main}), V3_TRUE) << std::hex << main << " " << key;
            EXPECT_EQ(arrangement(V3_INPUT, 0), main);
            EXPECT_EQ(arrangement(V3_OUTPUT, 0), main);
            EXPECT_EQ(arrangement(V3_INPUT, 1), key);
            EXPECT_EQ(channels(V3_INPUT, 0), layout.hostChannel.size());
        }
    }
    // Heights at the front will do, and are told as they were asked for.
    for (const v3_speaker_arrangement front : {0x5637u, 0x563Fu}) {
        EXPECT_EQ(plugin.arrange({front, front}, {front}), V3_TRUE);
        EXPECT_EQ(arrangement(V3_OUTPUT, 0), front);
    }
    ASSERT_EQ(plugin.arrange({0x3, 0x3}, {0x3}), V3_TRUE);
    // Two fronts without centre, four of which we know nothing, none at all, one bus too many or too few.
    for (const v3_speaker_arrangement strange : {0x41u, 0xFFFu, 0x0u, 0x8u, 0x1u}) {
        EXPECT_EQ(plugin.arrange({strange, strange}, {strange}), V3_FALSE) << strange;
    }
    EXPECT_EQ(plugin.arrange({}, {0x3}), V3_FALSE);
    EXPECT_EQ(plugin.arrange({0x3, 0x3, 0x3}, {0x3}), V3_FALSE);
    EXPECT_EQ(plugin.arrange({0x3, 0x3}, {0x3, 0x3}), V3_FALSE);
    EXPECT_EQ(arrangement(V3_OUTPUT, 0), 0x3u) << "nothing of that has changed anything";
    // What is near enough to be made of it.
    EXPECT_EQ(plugin.arrange({0x3, 0x3F}, {0x3F}), V3_FALSE);
    EXPECT_EQ(arrangement(V3_INPUT, 0), 0x3Fu);
    EXPECT_EQ(plugin.arrange({0x3, 0x37}, {0x3}), V3_FALSE);
    EXPECT_EQ(arrangement(V3_INPUT, 1), 0x3u);

    ASSERT_EQ(plugin.setUp(kRate, 512), V3_OK);
    ASSERT_EQ(plugin.setActive(true), V3_OK);
    EXPECT_EQ(plugin.arrange({0x3F, 0x3F}, {0x3F}), V3_FALSE) << "not while it is active";
    EXPECT_EQ(channels(V3_OUTPUT, 0), 2u);
    v3_bus_info info{};
    EXPECT_NE(v3_cpp_obj(plugin.component)->get_bus_info(plugin.component, V3_AUDIO, V3_OUTPUT, 1, &info),
              V3_OK);
    EXPECT_NE(v3_cpp_obj(plugin.component)->activate_bus(plugin.component, V3_EVENT, V3_OUTPUT, 0, 1), V3_OK);
    plugin.setActive(false);
}

TEST_F(Vst3, AMonoKeyIsForAllChannelsAndNoKeyForNone) {
    const auto level = [&](bool active, int keyChannels, std::size_t keyed) {
        Vst3Host host;
        EXPECT_TRUE(host.open(kStereoLayout, kRate, 24000, active));
        host.setValue(kGain, 18.0);
        host.setValue(kSideChain, 1.0);
        Audio audio(2, 24000);
        for (std::size_t c = 0; c < 2; ++c) audio.in[c] = sine(300, kRate, 24000, 0.05);
        audio.key[keyed] = sine(90, kRate, 24000, 0.9);
        EXPECT_EQ(audio.process(host, keyChannels), V3_OK);
        return db(amplitudeAt(std::span(audio.out[1]).subspan(12000), 300.0 / kRate) / 0.05);
    };
    EXPECT_NEAR(level(true, 1, 0), 1.0, 1.5) << "mono";
    EXPECT_NEAR(level(true, 2, 1), 1.0, 1.5) << "its own";
    EXPECT_NEAR(level(true, 0, 0), 18.0, 0.2) << "a bus without channels";
    EXPECT_NEAR(level(false, 2, 1), 18.0, 0.2) << "not active";
}

}  // namespace
}  // namespace vanta::test
