#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <jack/jack.h>

#include "foundation/failure.hpp"
#include "host/jack/jack_client.hpp"
#include "host/jack/jack_connections.hpp"
#include "host/jack/jack_transport.hpp"
#include "tests/host/jack/dummy_server.hpp"
#include "tests/host/jack/tape.hpp"
#include "tests/support/realtime_trap.hpp"

namespace vanta::test {
namespace {

using Names = std::vector<std::string>;

constexpr ChannelLayout k51 = 6;
constexpr std::uint8_t kGainController = 20;

int indexOf(const HostedPlugin& plugin, const std::string& name) {
    for (int i = 0; i < plugin.model().parameterCount(); ++i) {
        if (plugin.model().parameterAt(i)->name() == name) return i;
    }
    throw std::runtime_error("no parameter " + name);
}

void set(HostedPlugin& plugin, const std::string& name, double value) {
    plugin.hostValueChanged(indexOf(plugin, name), value);
}

void setAll(HostedPlugin& plugin, bool sideChain) {
    plugin.model().statics().controllers.assign(kGainController, indexOf(plugin, "Gain"));
    set(plugin, "Gain", 9.0);
    set(plugin, "Attack", 20.0);
    set(plugin, "Side Chain Triggering", sideChain ? 1.0 : 0.0);
}

/// The same limiter without a server.
class Reference : HostCallbacks, HostEventSource {
public:
    Reference(ChannelLayout layout, bool sideChain) : plugin_(*this, layout) {
        setAll(plugin_, sideChain);
        plugin_.activate(DummyServer::kRate, 0);
    }

    /// `in` in the order of the layout, side chain behind. The silence before stands for what the other one
    /// has heard since it runs.
    std::vector<Signal> render(std::vector<Signal> in, const std::vector<Tape::Midi>& midi) {
        const std::size_t before = DummyServer::kRate;
        for (Signal& signal : in) signal.insert(signal.begin(), before, 0.0f);
        const auto channels = static_cast<std::size_t>(plugin_.channelCount());
        std::vector<Signal> out(channels, Signal(in.front().size()));
        std::vector<const float*> inputs;
        std::vector<float*> outputs;
        for (const Signal& signal : in) inputs.push_back(signal.data());
        for (Signal& signal : out) outputs.push_back(signal.data());
        for (const Tape::Midi& event : midi)
            events_.push_back({.offset = static_cast<int>(before + event.sample),
                               .kind = HostEvent::Kind::Midi,
                               .midi = event.message});
        plugin_.process({.inputs = std::span(inputs).first(channels),
                         .sideChain = std::span(inputs).subspan(channels),
                         .outputs = outputs,
                         .samples = static_cast<int>(in.front().size())},
                        *this);
        for (Signal& signal : out)
            signal.erase(signal.begin(), signal.begin() + static_cast<std::ptrdiff_t>(before));
        return out;
    }

private:
    bool next(HostEvent& event) override {
        if (taken_ == events_.size()) return false;
        event = events_[taken_++];
        return true;
    }
    void parameterEdited(int, Edit, float) override {}
    void latencyChanged() override {}
    void pumpRequested() override {}

    HostedPlugin plugin_;
    std::vector<HostEvent> events_;
    std::size_t taken_ = 0;
};

class JackClients : public testing::Test {
protected:
    static void SetUpTestSuite() { server_ = std::make_unique<DummyServer>(); }
    static void TearDownTestSuite() { server_.reset(); }

    /// Opens, and pumps until the server knows everything.
    static void open(JackClient& client) {
        client.open({.clientName = "limiter"});
        client.pump();
    }
    static Names namesOf(const JackPorts::Ports& ports) {
        Names names;
        for (jack_port_t* const port : ports) names.emplace_back(jack_port_short_name(port));
        return names;
    }
    static jack_nframes_t latencyAt(jack_port_t* port, jack_latency_callback_mode_t mode) {
        jack_latency_range_t range;
        jack_port_get_latency_range(port, mode, &range);
        EXPECT_EQ(range.min, range.max);
        return range.max;
    }

    static inline std::unique_ptr<DummyServer> server_;
};

/// Two signals, one of which the side chain gets, so that no channel is like another.
void expectSoundOfTheLimiter(ChannelLayout layout, const Names& speakers,
                             const std::vector<std::size_t>& portOfChannel, bool sideChain) {
    JackClient client(layout, sideChain);
    setAll(client.plugin(), sideChain);
    client.open({.clientName = "limiter"});
    Names to;
    Names from;
    for (const std::string& speaker : speakers) {
        to.push_back("limiter:in_" + speaker);
        from.push_back("limiter:out_" + speaker);
    }
    for (std::size_t i = 0; sideChain && i < speakers.size(); ++i)
        to.push_back("limiter:side_" + speakers[i]);
    Tape tape(to, "limiter:midi_in", from);
    // The server's notices of these connections come when they come.
    for (int i = 0; i < 200; ++i) {
        client.pump();
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }

    std::vector<Signal> byPort;
    for (std::size_t i = 0; i < to.size(); ++i) byPort.push_back(pinkNoise(i + 1, 60000, 0.2));
    const std::vector<Tape::Midi> midi{{20001, {0xB0, kGainController, 100}},
                                       {40100, {0xB0, kGainController, 10}}};
    RealtimeTrap trap;
    const std::vector<Signal> played = tape.run(byPort, midi, [&] { client.pump(); });
    EXPECT_EQ(trap.total(), 0) << trap.report();

    std::vector<Signal> byChannel(byPort.size());
    for (std::size_t i = 0; i < byPort.size(); ++i) {
        const std::size_t group = i / speakers.size() * speakers.size();
        byChannel[i] = byPort[group + portOfChannel[i % speakers.size()]];
    }
    const std::vector<Signal> expected = Reference(layout, sideChain).render(byChannel, midi);
    for (std::size_t i = 0; i < speakers.size(); ++i) {
        EXPECT_GT(rms(played[portOfChannel[i]]), 0.01) << speakers[i];
        EXPECT_LT(nullDb(played[portOfChannel[i]], expected[i]), -140.0) << speakers[portOfChannel[i]];
    }
    EXPECT_FALSE(client.whyServerHasGone());
}

TEST_F(JackClients, PlayWhatTheLimiterPlaysToTheSampleAndLeaveTheSystemAlone) {
    expectSoundOfTheLimiter(kStereoLayout, {"L", "R"}, {0, 1}, false);
}

TEST_F(JackClients, KnowEverySpeakerOfASurroundLayoutAndItsSideChain) {
    // The limiter's own order is L R Ls Rs C LFE.
    expectSoundOfTheLimiter(k51, {"L", "R", "C", "LFE", "Ls", "Rs"}, {0, 1, 4, 5, 2, 3}, true);
}

TEST_F(JackClients, NamePortsByTheirSpeakersInTheOrderOfFiles) {
    const std::pair<ChannelLayout, Names> cases[] = {
        {kMonoLayout, {"in_mono"}},
        {4, {"in_L", "in_R", "in_C", "in_Cs"}},
        {8, {"in_L", "in_R", "in_C", "in_LFE", "in_Cs", "in_Ls", "in_Rs"}},
        {14, {"in_L", "in_R", "in_C", "in_LFE", "in_Lrs", "in_Rrs", "in_Lss", "in_Rss", "in_Lt", "in_Rt"}}};
    for (const auto& [layout, names] : cases) {
        JackClient client(layout, false);
        open(client);
        EXPECT_EQ(namesOf(client.ports().inputs()), names);
        EXPECT_EQ(client.ports().outputs().size(), names.size());
    }
}

TEST_F(JackClients, AddTheirLatencyBothWaysAndTellOfItsChange) {
    JackClient client(kStereoLayout, true);
    open(client);
    const std::string physical = kPhysicalPorts;
    connectBothWays(client.jack(), client.ports().inputs(), client.ports().outputs(), {&physical, 1});
    jack_nframes_t captured =
        DummyServer::kBuffer;  // as the dummy driver says, and twice that on the way out
    const auto isTold = [&] {
        client.pump();
        const auto own = static_cast<jack_nframes_t>(client.plugin().latency());
        return latencyAt(client.ports().outputs()[0], JackCaptureLatency) == captured + own &&
               latencyAt(client.ports().inputs()[1], JackPlaybackLatency) == 2 * captured + own &&
               latencyAt(client.ports().sideChain()[1], JackPlaybackLatency) == 2 * captured + own &&
               latencyAt(client.ports().midi(), JackPlaybackLatency) == 2 * captured + own;
    };
    EXPECT_TRUE(within(std::chrono::seconds(10), isTold));
    const int before = client.plugin().latency();
    set(client.plugin(), "Oversampling", 2.0);
    EXPECT_NE(client.plugin().latency(), before);
    EXPECT_TRUE(within(std::chrono::seconds(10), isTold));
    // The limiter takes any block, but its neighbours' latency is another.
    captured = 1024;
    EXPECT_EQ(jack_set_buffer_size(&client.jack(), captured), 0);
    EXPECT_TRUE(within(std::chrono::seconds(10), isTold));
    jack_set_buffer_size(&client.jack(), DummyServer::kBuffer);
}

TEST(JackTransport, CountsQuartersWhateverTheBeatIs) {
    jack_position_t position{};
    EXPECT_EQ(transportOf(JackTransportRolling, position).tempo, 120.0);
    position.valid = static_cast<jack_position_bits_t>(JackPositionBBT | JackBBTFrameOffset);
    position.frame_rate = 48000;
    position.bar = 3;
    position.beat = 2;
    position.tick = 480;
    position.ticks_per_beat = 960.0;
    position.beats_per_bar = 6.0f;
    position.beat_type = 8.0f;
    position.beats_per_minute = 180.0;
    position.bbt_offset = 16000;  // one beat
    const HostTransport transport = transportOf(JackTransportStopped, position);
    EXPECT_DOUBLE_EQ(transport.tempo, 90.0);
    EXPECT_DOUBLE_EQ(transport.beats, (12 + 1 + 0.5 + 1) / 2.0);
    EXPECT_FALSE(transport.isRolling);
}

}  // namespace
}  // namespace vanta::test
