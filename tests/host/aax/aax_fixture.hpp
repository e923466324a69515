#pragma once

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "host/aax/aax_plugin_adapter.hpp"
#include "host/aax/effect_descriptions.hpp"
#include "host/aax_host/aax_instance.hpp"
#include "host/aax_host/stem_speakers.hpp"
#include "host/unified/host_position.hpp"
#include "limiter/model/vanta_plugin.hpp"
#include "limiter/model/vanta_product.hpp"
#include "limiter/processor/vanta_processor.hpp"
#include "tests/plugin/user_home.hpp"
#include "tests/support/signals.hpp"

namespace vanta::test {

inline constexpr float kAaxRate = 48000.0f;

/// The adapter in the test's own process, scanned by our host: other than in a module one can look inside.
class AaxFixture : public testing::Test {
protected:
    AaxFixture() { EXPECT_EQ(describeEffects(&collection_), AAX_SUCCESS); }

    const AaxComponent& component(ChannelLayout layout = kStereoLayout, bool offline = false) const {
        for (const AaxComponent* each : collection_.effects.front().effect->components) {
            if (each->outputStem() == stemFormatOf(layout) && each->isOffline() == offline) return *each;
        }
        throw std::logic_error("no such component");
    }

    const UserHome home_;
    AaxCollection collection_;
};

/// An instance with everything behind it.
struct AaxSession {
    explicit AaxSession(const AaxComponent& component,
                        AaxInstance::Answers answers = AaxInstance::Answers::AtOnce)
        : host(component, kAaxRate, answers) {
        EXPECT_EQ(host.initialize(), AAX_SUCCESS);
    }

    AaxPluginAdapter& adapter() { return dynamic_cast<AaxPluginAdapter&>(host.parameters()); }
    VantaPlugin& plugin() { return dynamic_cast<VantaPlugin&>(adapter().model()); }
    VantaProcessor& processor() { return dynamic_cast<VantaProcessor&>(adapter().processor()); }
    AbstractPluginParameter& model(int index) { return *adapter().model().parameterAt(index); }
    AbstractPluginParameter& audio(int index) { return *adapter().processor().parameterAt(index); }
    int count() { return adapter().model().parameterCount(); }
    /// Until answers that come late have come.
    void idle() {
        for (int round = 0; round < 3; ++round) host.idle();
    }

    /// Renders channels of one length, in place and in blocks, in the host's order.
    void play(std::vector<Signal>& channels, int block = 512, const Signal* sideChain = nullptr) {
        const int length = static_cast<int>(channels.front().size());
        for (int begin = 0; begin < length; begin += block) {
            std::vector<float*> pointers;
            for (Signal& channel : channels) pointers.push_back(channel.data() + begin);
            host.render({.inputs = {pointers.data(), pointers.size()},
                         .sideChain = sideChain ? sideChain->data() + begin : nullptr,
                         .outputs = pointers,
                         .samples = std::min(block, length - begin),
                         .midi = midi});
            midi = {};
        }
    }
    std::vector<Signal> silence(std::size_t samples) {
        return std::vector<Signal>(
            static_cast<std::size_t>(AAX_StemChannelCount(host.component().outputStem())), Signal(samples));
    }
    void playSilence(std::size_t samples = 64) {
        auto channels = silence(samples);
        play(channels);
    }
    void send(std::vector<AAX_CMidiPacket> packets) {
        packets_ = std::move(packets);
        midi = packets_;
    }

    /// Model, processor, host and the host's parameter are at one value, to the last bit.
    void expectAgreement(int index, float expected) {
        SCOPED_TRACE(model(index).name());
        const std::string id = std::to_string(index);
        const double position = hostPosition(model(index), expected);
        double parameter = 0.0;
        EXPECT_EQ(host.parameters().GetParameterNormalizedValue(id.c_str(), &parameter), AAX_SUCCESS);
        EXPECT_EQ(std::bit_cast<unsigned>(model(index).value()), std::bit_cast<unsigned>(expected));
        EXPECT_EQ(std::bit_cast<unsigned>(audio(index).value()), std::bit_cast<unsigned>(expected));
        EXPECT_EQ(host.value(id), position);
        EXPECT_EQ(parameter, position);
    }

    AaxInstance host;
    std::span<const AAX_CMidiPacket> midi;  ///< of the block to come

private:
    std::vector<AAX_CMidiPacket> packets_;
};

}  // namespace vanta::test
