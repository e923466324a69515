#include <dlfcn.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <map>
#include <optional>
#include <string>

#include "host/clap/clap_events.hpp"
#include "host/clap/clap_module.hpp"
#include "host/clap/clap_plugin.hpp"
#include "host/common/product_identity.hpp"
#include "tests/host/clap/clap_host.hpp"
#include "tests/plugin/user_home.hpp"
#include "tests/support/signals.hpp"

namespace vanta::test {
namespace {

constexpr double kRate = 48000.0;
constexpr std::uint32_t kLargest = 512;

clap_param_info_t info(const ClapHost& host, int index) {
    clap_param_info_t info{};
    EXPECT_TRUE(host.params().get_info(&host.plugin(), static_cast<std::uint32_t>(index), &info));
    return info;
}

int indexOf(const ClapHost& host, const std::string& name) {
    for (int i = 0; i < host.parameterCount(); ++i) {
        if (name == info(host, i).name) return i;
    }
    throw std::logic_error(name);
}

std::vector<double> values(const ClapHost& host) {
    std::vector<double> all;
    for (int i = 0; i < host.parameterCount(); ++i) all.push_back(host.value(i));
    return all;
}

void expectValuesInRange(const ClapHost& host) {
    for (int i = 0; i < host.parameterCount(); ++i) {
        const auto range = info(host, i);
        EXPECT_GE(host.value(i), range.min_value) << range.name;
        EXPECT_LE(host.value(i), range.max_value) << range.name;
    }
}

/// A stereo block that a test may spoil as it likes.
struct RawBlock {
    explicit RawBlock(std::uint32_t samples, float amplitude = 0.5f) : buffers(6) {
        for (auto& each : buffers) each.assign(std::max(samples, 1u), amplitude);
        for (std::size_t i = 0; i < 6; ++i) pointers[i] = buffers[i].data();
        process.frames_count = samples;
        process.audio_inputs = inputs;
        process.audio_inputs_count = 2;
        process.audio_outputs = &output;
        process.audio_outputs_count = 1;
    }
    clap_process_status run(const ClapHost& host) {
        const clap_input_events_t in = events.list();
        const clap_output_events_t out = told.list();
        process.in_events = &in;
        process.out_events = &out;
        return host.plugin().process(&host.plugin(), &process);
    }
    bool isFinite() const {
        const auto finite = [](float x) { return std::isfinite(x); };
        return std::ranges::all_of(buffers[4], finite) && std::ranges::all_of(buffers[5], finite);
    }

    std::vector<std::vector<float>> buffers;
    float* pointers[6];
    clap_audio_buffer_t inputs[2] = {{pointers, nullptr, 2, 0, 0}, {pointers + 2, nullptr, 2, 0, 0}};
    clap_audio_buffer_t output = {pointers + 4, nullptr, 2, 0, 0};
    clap_process_t process{};
    ClapInput events;
    ClapOutput told;
};

class Clap : public testing::Test {
protected:
    UserHome home;
};

/// A module within the test, so that both ends of an instance can be seen.
class ClapInside : public Clap {
protected:
    explicit ClapInside(EmbeddedViewFactory views = {}) : module(std::move(views)) { module.enter(); }
    const clap_plugin_factory_t& factory() {
        return *static_cast<const clap_plugin_factory_t*>(module.factory(CLAP_PLUGIN_FACTORY_ID));
    }
    static HostedPlugin& hosted(const ClapHost& host) { return ClapPlugin::of(&host.plugin())->hosted(); }

    ClapModule module;
};

// The module

TEST_F(Clap, TheModuleSaysWhatItIsAndRefusesWhatItIsNot) {
    const ClapLibrary library;
    const clap_plugin_factory_t& factory = library.factory();
    ASSERT_EQ(factory.get_plugin_count(&factory), 1u);
    const clap_plugin_descriptor_t& descriptor = *factory.get_plugin_descriptor(&factory, 0);
    EXPECT_STREQ(descriptor.id, productIdentity().id);
    EXPECT_STREQ(descriptor.name, productIdentity().name);
    EXPECT_STREQ(descriptor.version, productIdentity().version);
    std::vector<std::string> features;
    for (const char** each = descriptor.features; *each; ++each) features.emplace_back(*each);
    EXPECT_THAT(features, testing::IsSupersetOf(
                              {"audio-effect", "mastering", "limiter", "mono", "stereo", "surround"}));
    EXPECT_EQ(factory.get_plugin_descriptor(&factory, 1), nullptr);
    EXPECT_EQ(library.entry().get_factory("clap.nothing"), nullptr);
    clap_host_t host{};
    EXPECT_EQ(factory.create_plugin(&factory, &host, descriptor.id), nullptr) << "of no version";
    host.clap_version = CLAP_VERSION_INIT;
    EXPECT_EQ(factory.create_plugin(&factory, &host, "com.quillmark.nothing"), nullptr);
    EXPECT_EQ(factory.create_plugin(&factory, nullptr, descriptor.id), nullptr);

    EXPECT_TRUE(library.entry().init(ClapLibrary::path()));
    library.entry().deinit();
    EXPECT_NE(library.entry().get_factory(CLAP_PLUGIN_FACTORY_ID), nullptr) << "one host is still there";
}

TEST_F(Clap, TheModuleIsGoneWhenItIsUnloaded) {
    for (int round = 0; round < 1000; ++round) {
        if (round % 50 == 0) {
            ClapHost host;
            ASSERT_TRUE(host.activate(kRate, kLargest));
            ASSERT_EQ(RawBlock(64).run(host), CLAP_PROCESS_CONTINUE);
        } else {
            const ClapLibrary library;
            ASSERT_EQ(library.factory().get_plugin_count(&library.factory()), 1u);
        }
        ASSERT_EQ(::dlopen(ClapLibrary::path(), RTLD_NOLOAD | RTLD_NOW), nullptr) << round;
    }
}

TEST_F(Clap, TwoHundredInstancesLiveSideBySide) {
    const ClapLibrary library;
    std::vector<std::unique_ptr<ClapHost>> hosts;
    for (int i = 0; i < 200; ++i) {
        hosts.push_back(std::make_unique<ClapHost>(library.factory()));
        ASSERT_TRUE(hosts.back()->activate(kRate, kLargest));
        hosts.back()->setValue(0, 0.1 * i);
        ASSERT_EQ(RawBlock(kLargest).run(*hosts.back()), CLAP_PROCESS_CONTINUE);
    }
    for (std::size_t i = 0; i < hosts.size(); i += 2) hosts[i].reset();
    for (std::size_t i = 1; i < hosts.size(); i += 2)
        EXPECT_NEAR(hosts[i]->value(0), 0.1 * static_cast<double>(i), 1e-5);
}

// Ports

/// Left and right of each pair; LCRS links its centres, which other layouts leave alone.
std::optional<std::size_t> partnerOf(std::uint8_t speaker, const std::vector<std::uint8_t>& speakers) {
    std::map<int, int> pairs{{0, 1}, {4, 5}, {6, 7}, {9, 10}, {18, 19}};
    if (speakers == std::vector<std::uint8_t>{0, 1, 2, 8}) pairs[2] = 8;
    for (const auto& [left, right] : pairs) {
        if (speaker != left && speaker != right) continue;
        const int other = speaker == left ? right : left;
        return static_cast<std::size_t>(std::ranges::find(speakers, other) - speakers.begin());
    }
    return {};
}

TEST_F(Clap, EveryConfigurationHasItsPortsAndKnowsItsSpeakers) {
    constexpr std::size_t kLength = 8192;
    ClapHost host;
    const auto& ports = *host.extension<clap_plugin_audio_ports_t>(CLAP_EXT_AUDIO_PORTS);
    const auto& configs = *host.extension<ClapPluginAudioPortsConfig>(kClapAudioPortsConfig);
    const auto& surround = *host.extension<ClapPluginSurround>(kClapSurroundDraft);
    ASSERT_EQ(configs.count(&host.plugin()), static_cast<std::uint32_t>(kChannelLayoutCount));
    EXPECT_FALSE(configs.select(&host.plugin(), kChannelLayoutCount));
    EXPECT_FALSE(configs.select(&host.plugin(), CLAP_INVALID_ID));
    host.setValue(indexOf(host, "Channel Link Transients"), 0.5);
    host.setValue(indexOf(host, "Channel Link Release"), 0.5);
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

        // Pairs are linked: a loud channel turns down its partner and nobody else.
        for (std::size_t loud = 0; loud < speakers.size(); ++loud) {
            std::vector<Signal> signals;
            const auto frequency = [](std::size_t c) {
                return (600.0 + 150.0 * static_cast<double>(c)) / kRate;
            };
            for (std::size_t c = 0; c < speakers.size(); ++c) {
                signals.push_back(sine(frequency(c), 1.0, kLength, c == loud ? 4.0 : 0.1));
            }
            std::vector<float*> outputs;
            for (Signal& signal : signals) outputs.push_back(signal.data());
            const std::vector<const float*> inputs(outputs.begin(), outputs.end());
            host.plugin().reset(&host.plugin());
            host.process({inputs, {}, outputs, static_cast<int>(kLength), {}, {}});
            for (std::size_t c = 0; c < speakers.size(); ++c) {
                const double level = amplitudeAt(std::span(signals[c]).subspan(kLength / 2), frequency(c));
                const bool isDown = c == partnerOf(speakers[loud], speakers);
                EXPECT_NEAR(level,
                            c == loud ? 1.0
                            : isDown  ? 0.025
                                      : 0.1,
                            c == loud ? 0.1 : 0.01)
                    << int{speakers[c]} << " beside " << int{speakers[loud]};
            }
        }
        host.deactivate();
    }
}

TEST_F(Clap, BuffersMayBeMissing) {
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

// Parameters

TEST_F(Clap, ParametersReadAsTheyAreWritten) {
    ClapHost host;
    const clap_plugin_t* plugin = &host.plugin();
    const clap_plugin_params_t& params = host.params();
    ASSERT_EQ(host.parameterCount(), 31);
    int bypasses = 0;
    for (int i = 0; i < host.parameterCount(); ++i) {
        const clap_param_info_t each = info(host, i);
        SCOPED_TRACE(each.name);
        EXPECT_EQ(each.id, static_cast<clap_id>(i));
        EXPECT_STRNE(each.module, "");
        const bool isStepped = (each.flags & CLAP_PARAM_IS_STEPPED) != 0;
        if (each.flags & CLAP_PARAM_IS_BYPASS) {
            ++bypasses;
            EXPECT_TRUE(isStepped && each.min_value == 0.0 && each.max_value == 1.0);
        }
        for (int step = 0; step <= 200; ++step) {
            double at = each.min_value + (each.max_value - each.min_value) * step / 200.0;
            if (isStepped) at = std::floor(at + 0.5);
            const std::string text = host.text(i, at);
            double back = -1e9;
            ASSERT_TRUE(params.text_to_value(plugin, each.id, text.c_str(), &back)) << text;
            EXPECT_EQ(host.text(i, back), text);
            EXPECT_TRUE(!isStepped || back == at);
        }
        double value = 0.0;
        EXPECT_FALSE(params.text_to_value(plugin, each.id, "~?", &value));
        char small[4] = "zzz";
        EXPECT_TRUE(params.value_to_text(plugin, each.id, each.max_value, small, 3));
        EXPECT_LE(std::strlen(small), 2u);
        for (const double odd : {-1e30, 1e30, std::numeric_limits<double>::infinity()}) {
            EXPECT_TRUE(host.text(i, odd) == host.text(i, odd < 0.0 ? each.min_value : each.max_value));
        }
        EXPECT_FALSE(params.value_to_text(plugin, each.id, std::nan(""), small, 4));
        EXPECT_FALSE(params.value_to_text(plugin, each.id, 0.0, small, 0));
    }
    EXPECT_EQ(bypasses, 1);
    clap_param_info_t none{};
    double value = 0.0;
    EXPECT_FALSE(params.get_info(plugin, 31, &none));
    EXPECT_FALSE(params.get_value(plugin, CLAP_INVALID_ID, &value));
}

TEST_F(Clap, AFlushSetsValuesWhetherOrNotItIsActive) {
    ClapHost host;
    for (const bool active : {false, true}) {
        ASSERT_TRUE(!active || host.activate(kRate, kLargest));
        for (int i = 0; i < host.parameterCount(); ++i) {
            const clap_param_info_t each = info(host, i);
            for (const double value : {each.max_value, each.min_value}) {
                host.setValue(i, value);
                EXPECT_EQ(host.value(i), value) << each.name;
            }
        }
        host.idle();
    }
    EXPECT_TRUE(host.output.events.empty()) << "a host knows what it has said";
    EXPECT_EQ(host.rescans, 0);
}

TEST_F(Clap, EventsOfAllKindsAreSurvived) {
    Random random(7);
    ClapHost host;
    ASSERT_TRUE(host.activate(kRate, kLargest));
    const double oddValues[] = {std::nan(""), -1e300, 1e300, std::numeric_limits<double>::infinity(),
                                0.5,          -3.0};
    for (int round = 0; round < 400; ++round) {
        RawBlock block(static_cast<std::uint32_t>(random.between(0, 512)));
        for (int n = random.between(0, 40); n > 0; --n) {
            ClapEvent event{};
            for (std::byte& each : event.bytes) each = static_cast<std::byte>(random.next());
            event.header.type = static_cast<std::uint16_t>(random.between(0, 14));
            if (random.between(0, 3)) event.header.space_id = CLAP_CORE_EVENT_SPACE_ID;
            if (random.between(0, 3)) event.header.size = static_cast<std::uint32_t>(random.between(0, 128));
            if (random.between(0, 3)) event.header.time = static_cast<std::uint32_t>(random.between(0, 600));
            if (random.between(0, 1)) {
                event = valueEvent(event.header.time, static_cast<clap_id>(random.between(-2, 33)),
                                   oddValues[random.between(0, 5)]);
            }
            block.events.events.push_back(event);
        }
        clap_event_transport_t transport =
            block.events.events.empty() ? clap_event_transport_t{} : block.events.events[0].transport;
        if (round % 2) block.process.transport = &transport;
        ASSERT_EQ(block.run(host), CLAP_PROCESS_CONTINUE);
        ASSERT_TRUE(block.isFinite());
        if (round % 16 == 0) host.idle();
    }
    expectValuesInRange(host);
}

TEST(ClapEventsTest, TransportAndPortsAreUnderstood) {
    ClapInput input;
    ClapEvent& transport = input.events.emplace_back();
    transport.transport = {};
    transport.header = {sizeof(transport.transport), 17, CLAP_CORE_EVENT_SPACE_ID, CLAP_EVENT_TRANSPORT, 0};
    transport.transport.flags =
        CLAP_TRANSPORT_HAS_TEMPO | CLAP_TRANSPORT_HAS_BEATS_TIMELINE | CLAP_TRANSPORT_IS_PLAYING;
    transport.transport.tempo = 90.0;
    transport.transport.song_pos_beats = 5 * CLAP_BEATTIME_FACTOR / 2;
    input.events.push_back(midiEvent(18, {0xB0, 1, 2}));
    input.events.back().midi.port_index = 1;
    input.events.push_back(midiEvent(0xFFFFFFFF, {0xB0, 3, 4}));
    const clap_input_events_t list = input.list();
    ClapEvents events(&list);
    HostEvent event;
    ASSERT_TRUE(events.next(event));
    EXPECT_EQ(event.kind, HostEvent::Kind::Transport);
    EXPECT_EQ(event.offset, 17);
    EXPECT_EQ(event.transport.tempo, 90.0);
    EXPECT_EQ(event.transport.beats, 2.5);
    EXPECT_TRUE(event.transport.isRolling);
    ASSERT_TRUE(events.next(event)) << "there is no second port of notes";
    EXPECT_EQ(event.midi.data1, 3);
    EXPECT_EQ(event.offset, std::numeric_limits<int>::max());
    EXPECT_FALSE(events.next(event));
    EXPECT_FALSE(transportOf(nullptr).isRolling);
}

// State

TEST_F(Clap, NoStateHarmsAnInstance) {
    Random random(5);
    ClapHost host;
    host.setValue(indexOf(host, "Gain"), 11.0);
    const auto state = host.save(1);
    for (int round = 0; round < 300; ++round) {
        auto spoiled = state;
        for (int n = random.between(0, 4); n > 0; --n) {
            spoiled[static_cast<std::size_t>(random.between(0, static_cast<int>(spoiled.size()) - 1))] =
                static_cast<std::byte>(random.next());
        }
        if (round % 3 == 0)
            spoiled.resize(static_cast<std::size_t>(random.between(0, static_cast<int>(state.size()))));
        host.restore(spoiled, random.between(0, 9));
        expectValuesInRange(host);
    }
    ASSERT_TRUE(host.restore(state, 2));
    const auto before = values(host);
    const auto& extension = *host.extension<clap_plugin_state_t>(CLAP_EXT_STATE);
    for (const std::int64_t answer : {std::int64_t{-1}, std::int64_t{0}, std::int64_t{1} << 40}) {
        std::int64_t said = answer;
        const clap_ostream_t out{&said, [](const clap_ostream_t* to, const void*, std::uint64_t) {
                                     return *static_cast<std::int64_t*>(to->ctx);
                                 }};
        const clap_istream_t in{&said, [](const clap_istream_t* from, void*, std::uint64_t) {
                                    return *static_cast<std::int64_t*>(from->ctx);
                                }};
        EXPECT_FALSE(extension.save(&host.plugin(), &out)) << answer;
        EXPECT_FALSE(extension.load(&host.plugin(), &in)) << answer;
    }
    const clap_istream_t endless{nullptr, [](const clap_istream_t*, void* to, std::uint64_t size) {
                                     std::memset(to, 0, size);
                                     return static_cast<std::int64_t>(size);
                                 }};
    EXPECT_FALSE(extension.load(&host.plugin(), &endless));
    EXPECT_EQ(values(host), before);
}

// Life

TEST_F(Clap, AnyRateAndBlockSizeRunsOrIsRefused) {
    ClapHost host;
    for (const double rate : {0.0, 7999.9, 768000.1, -48000.0, std::nan(""), 1e300}) {
        EXPECT_FALSE(host.activate(rate, kLargest)) << rate;
    }
    EXPECT_FALSE(host.activate(kRate, 0));
    for (const double rate : {8000.0, 11025.0, 22254.5, 44100.0, 47999.7, 96000.0, 352800.0, 768000.0}) {
        ASSERT_TRUE(host.activate(rate, kLargest)) << rate;
        host.idle();
        for (const std::uint32_t samples : {1u, 0u, 7u, 512u, 4097u, 16384u}) {
            RawBlock block(samples, 0.9f);
            ASSERT_EQ(block.run(host), CLAP_PROCESS_CONTINUE);
            EXPECT_TRUE(block.isFinite());
        }
        host.deactivate();
    }
}

TEST_F(Clap, CallsInAnyOrderAreSurvived) {
    Random random(9);
    ClapHost host;
    const clap_plugin_t* plugin = &host.plugin();
    const auto& configs = *host.extension<ClapPluginAudioPortsConfig>(kClapAudioPortsConfig);
    const std::vector<std::byte> state = host.save(0);
    bool active = false;
    for (int round = 0; round < 600; ++round) {
        switch (random.between(0, 9)) {
            case 0:
                EXPECT_EQ(plugin->activate(plugin, random.between(8000, 96000), 1, 256), !active);
                active = true;
                break;
            case 1:
                plugin->deactivate(plugin);
                active = false;
                break;
            case 2:
                EXPECT_EQ(plugin->start_processing(plugin), active);
                break;
            case 3:
                plugin->stop_processing(plugin);
                break;
            case 4:
                plugin->reset(plugin);
                break;
            case 5:
                host.flush({valueEvent(0, static_cast<clap_id>(random.between(0, 30)), random.bipolar())});
                break;
            case 6:
                EXPECT_EQ(configs.select(plugin, static_cast<clap_id>(random.between(0, 14))), !active);
                break;
            case 7:
                EXPECT_TRUE(host.restore(state, 0));
                break;
            case 8:
                plugin->on_main_thread(plugin);
                break;
            default:
                EXPECT_EQ(RawBlock(100).run(host), active ? CLAP_PROCESS_CONTINUE : CLAP_PROCESS_ERROR);
        }
    }
    EXPECT_EQ(plugin->process(plugin, nullptr), CLAP_PROCESS_ERROR);
}

TEST_F(Clap, TheMainThreadMayAskAnythingWhileAudioRuns) {
    ClapHost host;
    ASSERT_TRUE(host.activate(kRate, kLargest));
    const int gain = indexOf(host, "Gain");
    const auto state = host.save(0);
    std::atomic<bool> done{false};
    std::thread audio([&] {
        for (int n = 0; n < 600; ++n) {
            RawBlock block(64);
            block.events.events = {valueEvent(9, static_cast<clap_id>(gain), 0.01 * (n % 1000)),
                                   midiEvent(20, {0xB0, 7, static_cast<std::uint8_t>(n % 128)})};
            EXPECT_EQ(block.run(host), CLAP_PROCESS_CONTINUE);
        }
        done = true;
    });
    for (int n = 0; !done; ++n) {
        const int index = n % host.parameterCount();
        EXPECT_NE(host.text(index, host.value(index)), "");
        EXPECT_GT(host.latency(), 0);
        EXPECT_FALSE(host.save(0).empty());
        EXPECT_TRUE(n % 7 != 0 || host.restore(state, 0));
        if (host.callbackRequested.exchange(false)) host.plugin().on_main_thread(&host.plugin());
    }
    audio.join();
    host.idle();
    expectValuesInRange(host);
}

TEST_F(Clap, AnotherLatencyComesWithARestart) {
    ClapHost host;
    const int oversampling = indexOf(host, "Oversampling");
    ASSERT_TRUE(host.activate(kRate, kLargest));
    const int before = host.latency();
    host.plugin().on_main_thread(&host.plugin());
    EXPECT_FALSE(host.restartRequested) << "it has the latency that it began with";
    const int reported = host.latencyChanges;
    RawBlock block(64);
    block.events.events = {valueEvent(5, static_cast<clap_id>(oversampling), 4.0)};
    ASSERT_EQ(block.run(host), CLAP_PROCESS_CONTINUE);
    EXPECT_TRUE(host.callbackRequested.exchange(false));
    host.plugin().on_main_thread(&host.plugin());
    EXPECT_TRUE(host.restartRequested);
    EXPECT_EQ(host.latencyChanges, reported) << "not while it is active";
    host.idle();
    EXPECT_EQ(host.latencyChanges, reported + 1);
    const int after = host.latency();
    EXPECT_NE(after, before);

    host.deactivate();
    host.setValue(oversampling, 0.0);
    host.idle();
    EXPECT_EQ(host.latencyChanges, reported + 2);
    EXPECT_EQ(host.latency(), before);
    ASSERT_TRUE(host.activate(192000.0, kLargest));
    EXPECT_EQ(host.latencyChanges, reported + 3) << "known when audio starts";
    EXPECT_NE(host.latency(), before);
    host.deactivate();
    ASSERT_TRUE(host.activate(192000.0, kLargest));
    EXPECT_EQ(host.latencyChanges, reported + 3) << "told once";
}

// What the plug-in tells

TEST_F(ClapInside, AControllerReachesTheHostAndItsAnswerMovesNothing) {
    ClapHost host(factory());
    hosted(host).model().statics().controllers.assign(20, 0);
    ASSERT_TRUE(host.activate(kRate, kLargest));
    const auto turn = [&](std::uint8_t data) {
        RawBlock block(64);
        block.events.events = {midiEvent(10, {0xB0, 20, data})};
        EXPECT_EQ(block.run(host), CLAP_PROCESS_CONTINUE);
    };
    turn(10);
    host.output.capacity = 0;
    host.idle();
    EXPECT_TRUE(host.output.events.empty()) << "the host had no room";
    turn(64);
    host.output.capacity = 100;
    host.idle();
    ASSERT_EQ(host.output.events.size(), 1u) << "the last of several";
    const clap_event_param_value_t told = host.output.events[0].value;
    EXPECT_EQ(told.header.type, CLAP_EVENT_PARAM_VALUE);
    EXPECT_EQ(told.header.flags, CLAP_EVENT_DONT_RECORD);
    EXPECT_EQ(told.param_id, 0u);
    EXPECT_EQ(told.value, host.value(0));
    EXPECT_NEAR(told.value, 30.0 * 64 / 127, 1e-4);

    turn(100);
    const double newer = host.value(0);
    host.setValue(0, told.value);
    EXPECT_EQ(host.value(0), newer) << "an answer to what was told is no change";
    host.output.events.clear();
    host.idle();
    ASSERT_EQ(host.output.events.size(), 1u);
    EXPECT_EQ(host.output.events[0].value.value, newer);
    hosted(host).model().statics().controllers.clear();
}

TEST_F(ClapInside, ChangesOfAllValuesAreReadAnew) {
    ClapHost host(factory());
    ASSERT_TRUE(host.activate(kRate, kLargest));
    GenericPlugin& model = hosted(host).model();
    const std::string file = (home / "own.qmp").string();
    ASSERT_TRUE(model.savePreset({file, "own", {}, -1, -1}));
    host.setValue(1, 0.0);
    host.idle();
    EXPECT_EQ(host.rescans, 0);
    ASSERT_TRUE(model.loadPreset({file, "own", {}, -1, -1}));
    host.idle();
    EXPECT_EQ(host.rescans, 1);
    EXPECT_GE(host.dirtyMarks, 1);
    for (const ClapEvent& each : host.output.events) EXPECT_EQ(each.header.flags, CLAP_EVENT_DONT_RECORD);
    host.output.events.clear();
    ASSERT_TRUE(host.restore(host.save(0), 0));
    host.idle();
    EXPECT_EQ(host.rescans, 2);
    EXPECT_TRUE(host.output.events.empty()) << "to restore is no edit";
}

TEST_F(ClapInside, AGestureIsRecordedFromItsBeginToItsEnd) {
    using Edit = HostCallbacks::Edit;
    ClapHost host(factory());
    const clap_host_t silent{};
    ClapReports reports(silent, 31);
    ClapOutput output;
    const auto write = [&](std::size_t capacity) {
        output.capacity = capacity;
        const clap_output_events_t out = output.list();
        reports.writeEdits(hosted(host), &out);
    };
    reports.parameterEdited(4, Edit::Begin, 0.0f);
    reports.parameterEdited(4, Edit::Value, 0.5f);
    write(1);
    reports.parameterEdited(4, Edit::End, 0.0f);
    write(2);
    write(99);
    reports.parameterEdited(4, Edit::Value, 0.5f);
    write(99);
    std::vector<std::pair<int, unsigned>> kinds;
    for (const ClapEvent& each : output.events) kinds.emplace_back(each.header.type, each.header.flags);
    EXPECT_THAT(kinds, testing::ElementsAre(
                           std::pair(CLAP_EVENT_PARAM_GESTURE_BEGIN, 0u),
                           std::pair(CLAP_EVENT_PARAM_VALUE, 0u), std::pair(CLAP_EVENT_PARAM_GESTURE_END, 0u),
                           std::pair(CLAP_EVENT_PARAM_VALUE, unsigned{CLAP_EVENT_DONT_RECORD})));
}

TEST_F(ClapInside, AnOfflineRenderDoesNotWaitForTheMainThread) {
    ClapHost host(factory());
    hosted(host).model().statics().controllers.assign(20, 0);
    host.setOffline(true);
    ASSERT_TRUE(host.activate(kRate, kLargest));
    std::thread([&] {
        RawBlock block(64);
        block.events.events = {midiEvent(10, {0xB0, 20, 127})};
        EXPECT_EQ(block.run(host), CLAP_PROCESS_CONTINUE);
        EXPECT_EQ(hosted(host).position(0), 1.0) << "the model has followed";
    }).join();
    host.idle();
    EXPECT_EQ(host.output.events.size(), 1u);
    hosted(host).model().statics().controllers.clear();
}

// The window

struct FakeView final : EmbeddedView {
    struct Log {
        NativeWindow parent = 0;
        EmbeddedViewHost* host = nullptr;
        double scale = 0.0;
        ViewSize size{600, 400};
        bool isVisible = false;
        int idles = 0;
        int alive = 0;
    };
    explicit FakeView(Log& to) : log(to) { ++log.alive; }
    ~FakeView() override { --log.alive; }
    NativeWindow window() const override { return 5; }
    void setVisible(bool visible) override { log.isVisible = visible; }
    ViewSize size() const override { return log.size; }
    bool isResizable() const override { return true; }
    ViewSize nearestSize(ViewSize wanted) const override {
        return {std::max(wanted.width, 300), wanted.height};
    }
    void resize(ViewSize size) override { log.size = size; }
    void setScale(double scale) override { log.scale = scale; }
    void idle() override { ++log.idles; }
    Log& log;
};

class ClapWindow : public ClapInside {
protected:
    ClapWindow()
        : ClapInside([this](HostedPlugin&, NativeWindow parent, EmbeddedViewHost& host) {
              log.parent = parent;
              log.host = &host;
              return std::make_unique<FakeView>(log);
          }) {}
    FakeView::Log log;
};

TEST_F(ClapWindow, LivesWithinTheHostsWindow) {
    ClapHost host(factory());
    const clap_plugin_t* plugin = &host.plugin();
    const auto& gui = *host.extension<clap_plugin_gui_t>(CLAP_EXT_GUI);
    const auto& timer = *host.extension<clap_plugin_timer_support_t>(CLAP_EXT_TIMER_SUPPORT);
    EXPECT_FALSE(gui.is_api_supported(plugin, CLAP_WINDOW_API_X11, true));
    EXPECT_FALSE(gui.create(plugin, CLAP_WINDOW_API_WAYLAND, false));
    EXPECT_FALSE(gui.show(plugin)) << "nothing to show yet";
    ASSERT_TRUE(gui.create(plugin, CLAP_WINDOW_API_X11, false));
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    ASSERT_TRUE(gui.set_scale(plugin, 2.0));
    ASSERT_TRUE(gui.get_size(plugin, &width, &height));
    EXPECT_EQ(width, 2u * static_cast<unsigned>(hosted(host).model().interfaceWidth()));
    clap_window_t window{};
    window.api = CLAP_WINDOW_API_X11;
    window.x11 = 77;
    ASSERT_TRUE(gui.set_parent(plugin, &window));
    EXPECT_EQ(log.parent, 77u);
    EXPECT_EQ(log.scale, 2.0);
    EXPECT_EQ(log.size.width, static_cast<int>(width)) << "as announced";
    ASSERT_TRUE(gui.show(plugin));
    EXPECT_TRUE(log.isVisible);
    timer.on_timer(plugin, 41);
    timer.on_timer(plugin, 99);
    EXPECT_EQ(log.idles, 1);
    width = 10;
    ASSERT_TRUE(gui.adjust_size(plugin, &width, &height));
    EXPECT_EQ(width, 300u);
    EXPECT_TRUE(gui.set_size(plugin, 310, 200));
    EXPECT_EQ(log.size, (ViewSize{310, 200}));
    EXPECT_TRUE(log.host->requestResize({500, 300}));
    EXPECT_FALSE(log.host->requestResize({5000, 300}));

    ASSERT_TRUE(host.extension<ClapPluginAudioPortsConfig>(kClapAudioPortsConfig)->select(plugin, 6));
    EXPECT_EQ(log.alive, 0) << "it showed the model of another layout";
    EXPECT_TRUE(host.wasClosed);
    gui.destroy(plugin);
    ASSERT_TRUE(gui.create(plugin, CLAP_WINDOW_API_X11, false));
    ASSERT_TRUE(gui.set_parent(plugin, &window));
}

TEST_F(ClapInside, HasNoWindowWithoutAnInterface) {
    const ClapHost host(factory());
    EXPECT_EQ(host.extension<void>(CLAP_EXT_GUI), nullptr);
    EXPECT_EQ(host.extension<void>(CLAP_EXT_TIMER_SUPPORT), nullptr);
}

}  // namespace
}  // namespace vanta::test
