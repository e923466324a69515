#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>

#include "tests/host/clap/clap_test.hpp"

namespace vanta::test {
namespace {

using ClapPorts = ClapTest;

TEST_F(ClapPorts, EveryConfigurationHasItsPortsAndKnowsItsSpeakers) {
    ClapHost host;
    const auto& ports = *host.extension<clap_plugin_audio_ports_t>(CLAP_EXT_AUDIO_PORTS);
    const auto& configs = *host.extension<ClapPluginAudioPortsConfig>(kClapAudioPortsConfig);
    const auto& surround = *host.extension<ClapPluginSurround>(kClapSurroundDraft);
    ASSERT_EQ(configs.count(&host.plugin()), static_cast<std::uint32_t>(kChannelLayoutCount));
    EXPECT_FALSE(configs.select(&host.plugin(), kChannelLayoutCount));
    EXPECT_FALSE(configs.select(&host.plugin(), CLAP_INVALID_ID));
    for (ChannelLayout layout = 0; layout < kChannelLayoutCount; ++layout) {
        SCOPED_TRACE(channelLayoutName(layout));
        const std::vector<std::uint8_t>& speakers = clapSpeakersOf(layout);
        ClapAudioPortsConfig config{};
        ASSERT_TRUE(configs.get(&host.plugin(), static_cast<std::uint32_t>(layout), &config));
        EXPECT_EQ(config.name, channelLayoutName(layout));
        ASSERT_TRUE(host.open(layout, kRate, kLargest, false));
        EXPECT_FALSE(configs.select(&host.plugin(), 1)) << "not while it is active";
        const std::string type = layout == 0 ? "mono" : layout == 1 ? "stereo" : "surround";
        for (const auto& [isInput, index] : {std::pair{true, 0u}, {true, 1u}, {false, 0u}}) {
            clap_audio_port_info_t port{};
            ASSERT_TRUE(ports.get(&host.plugin(), index, isInput, &port));
            EXPECT_EQ(port.channel_count, speakers.size());
            EXPECT_EQ(port.port_type, type);
            EXPECT_EQ((port.flags & CLAP_AUDIO_PORT_IS_MAIN) != 0, index == 0);
            EXPECT_EQ(port.in_place_pair, index == 0 ? 0u : CLAP_INVALID_ID);
            std::vector<std::uint8_t> map(speakers.size());
            ASSERT_EQ(surround.get_channel_map(&host.plugin(), isInput, index, map.data(), 10), map.size());
            auto rising = speakers;
            std::ranges::sort(rising);
            EXPECT_EQ(map, rising);
        }
        std::uint64_t mask = 0;
        for (const std::uint8_t speaker : speakers) mask |= std::uint64_t{1} << speaker;
        EXPECT_TRUE(surround.is_channel_mask_supported(&host.plugin(), mask));
        EXPECT_FALSE(surround.is_channel_mask_supported(&host.plugin(), mask | 1u << 11));
        host.deactivate();
    }
}

TEST_F(ClapPorts, BuffersMayBeMissing) {
    ClapHost host;
    host.setValue(indexOf(host, "Side Chain Triggering"), 1.0);
    host.setValue(indexOf(host, "Gain"), 12.0);
    ASSERT_TRUE(host.activate(kRate, 8192));
    const auto last = [&](const std::function<void(RawBlock&)>& spoil) {
        host.plugin().reset(&host.plugin());
        RawBlock block(8192, 0.01f);
        block.buffers[2].assign(8192, 0.9f);
        block.output.constant_mask = 3;
        spoil(block);
        EXPECT_EQ(block.run(host), CLAP_PROCESS_CONTINUE);
        EXPECT_EQ(block.output.constant_mask, 0u);
        return std::pair(block.buffers[4].back(), block.buffers[5].back());
    };
    const float open = 0.01f * std::pow(10.0f, 12.0f / 20.0f);
    const auto missing = [&](RawBlock& block) { block.process.audio_inputs_count = 1; };
    EXPECT_NEAR(last(missing).first, open, 1e-4);
    const auto isNull = [&](RawBlock& block) { block.inputs[1].data32 = nullptr; };
    EXPECT_NEAR(last(isNull).first, open, 1e-4);
    const auto noChannel = [&](RawBlock& block) { block.pointers[2] = block.pointers[3] = nullptr; };
    EXPECT_NEAR(last(noChannel).first, open, 1e-4);
    const auto mono = [&](RawBlock& block) { block.inputs[1].channel_count = 1; };
    EXPECT_LT(last(mono).first, 0.5f * open);
    EXPECT_LT(last(mono).second, 0.5f * open) << "one key is everybody's";
    const auto leftOnly = [&](RawBlock& block) { block.inputs[0].channel_count = 1; };
    EXPECT_EQ(last(leftOnly).second, 0.0f);
    const auto unwanted = [&](RawBlock& block) { block.process.audio_outputs[0].channel_count = 1; };
    EXPECT_EQ(last(unwanted).second, 0.01f) << "not written to";
    last([](RawBlock& block) {
        block.process.audio_inputs_count = 0;
        block.process.audio_outputs[0].channel_count = 0;
    });

    RawBlock doubles(16);
    double* samples[2] = {};
    doubles.inputs[0] = {nullptr, samples, 2, 0, 0};
    doubles.events.events = {valueEvent(3, 0, 7.0)};
    EXPECT_EQ(doubles.run(host), CLAP_PROCESS_ERROR);
    EXPECT_EQ(host.value(0), 7.0) << "the value is not lost";
}

}  // namespace
}  // namespace vanta::test
