#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <lv2/atom/forge.h>
#include <lv2/presets/presets.h>
#include <lv2/state/state.h>
#include <lv2/time/time.h>

#include <array>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <limits>
#include <thread>

#include "host/lv2/lv2_events.hpp"
#include "limiter/factory/factory_archive.hpp"
#include "limiter/model/vanta_plugin.hpp"
#include "limiter/model/vanta_preset.hpp"
#include "limiter/model/vanta_product.hpp"
#include "plugin/midi/controller_mapping.hpp"
#include "plugin/model/session_state.hpp"
#include "plugin/presets/setup_archive.hpp"
#include "tests/host/formats/performance.hpp"
#include "tests/host/lv2/lv2_host.hpp"
#include "tests/plugin/user_home.hpp"
#include "tests/support/signals.hpp"

namespace vanta::test {
namespace {

using testing::ElementsAreArray;
using testing::IsEmpty;

constexpr double kRate = 48000.0;
constexpr int kBlock = 256;
constexpr int kController = 20;
constexpr float kMidiGain = 30.0f * 64.0f / 127.0f;
const std::string kPg = "http://lv2plug.in/ns/ext/port-groups#";
const std::string kUri = "urn:quillmark:vanta2";

template <typename T>
using Owned = std::unique_ptr<T, void (*)(T*)>;

Owned<LilvNode> node(const std::string& uri) {
    return {lilv_new_uri(Lv2Host::world(), uri.c_str()), lilv_node_free};
}
std::string object(const std::string& subject, const std::string& predicate) {
    const Owned<LilvNode> found(
        lilv_world_get(Lv2Host::world(), node(subject).get(), node(predicate).get(), nullptr),
        lilv_node_free);
    return found ? lilv_node_as_string(found.get()) : "";
}

Channels noise(std::size_t samples = 20 * kBlock) {
    return {whiteNoise(1, samples, 0.7), whiteNoise(2, samples, 0.7)};
}

class Lv2 : public testing::Test {
protected:
    void SetUp() override { ASSERT_TRUE(host.open(kStereoLayout, kRate, kBlock, false)); }

    /// What an instance holds, whatever its ports say.
    static std::vector<float> held(const Lv2Host& of) {
        VantaPlugin model(kStereoLayout);
        EXPECT_TRUE(readSessionState(model, of.state()));
        return model.parameterValues();
    }
    static std::string presetOf(const Lv2Host& of) {
        VantaPlugin model(kStereoLayout);
        EXPECT_TRUE(readSessionState(model, of.state()));
        return model.presetState().name();
    }
    void learnController() {
        host.close();
        ControllerMapping map(host.table().parameterCount());
        map.assign(kController, gain);
        ASSERT_TRUE(map.save(vantaProduct().applicationDataFolder() / "MidiControllerMap.qmm"));
        ASSERT_TRUE(host.open(kStereoLayout, kRate, kBlock, false));
    }
    /// Runs until there is something to be seen, as the plug-in's own thread takes its time.
    template <typename Condition>
    static bool eventually(Lv2Host& of, Condition condition) {
        for (int round = 0; round < 500; ++round) {
            if (condition()) return true;
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
            of.run(0);
        }
        return false;
    }
    /// Time enough for a notification that should not be.
    static std::vector<std::string> notifiedMeanwhile(Lv2Host& of) {
        std::vector<std::string> all;
        for (int round = 0; round < 10; ++round) {
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
            of.run(0);
            for (const std::string& each : of.notifications()) all.push_back(each);
        }
        return all;
    }
    static void moveController(Lv2Host& of) {
        const FormatHost::Midi midi[] = {{5, {0xB0, kController, 64}}};
        std::array<float, kBlock> silence{};
        const float* inputs[] = {silence.data(), silence.data()};
        float* outputs[] = {silence.data(), silence.data()};
        of.process({inputs, {}, outputs, kBlock, {}, midi});
    }

    UserHome home;
    Lv2Host host;
    const int gain = host.table().gain.index();
};

TEST_F(Lv2, TheDescriptionsAreValid) {
    const std::string command =
        "lv2_validate " VANTA_PLUGINS_DIR "/vanta.lv2/*.ttl " VANTA_PLUGINS_DIR "/vanta-presets.lv2/*.ttl";
    EXPECT_EQ(std::system(command.c_str()), 0) << command;
}

TEST_F(Lv2, EveryLayoutHasItsPortsInTheirGroups) {
    const std::string l = kPg + "left", r = kPg + "right", c = kPg + "center",
                      lfe = kPg + "lowFrequencyEffects", rl = kPg + "rearLeft", rr = kPg + "rearRight",
                      sl = kPg + "sideLeft", sr = kPg + "sideRight", tl = kUri + "#topLeft",
                      tr = kUri + "#topRight";
    struct Expected {
        ChannelLayout layout;
        std::string uri;
        std::string group;
        std::vector<std::string> channels;  ///< in the order of WAVE files
    };
    const Expected all[] = {
        {0, kUri + ":mono", kPg + "MonoGroup", {c}},
        {1, kUri + ":stereo", kPg + "StereoGroup", {l, r}},
        {5, kUri + ":5.0", kPg + "FivePointZeroGroup", {l, r, c, rl, rr}},
        {6, kUri + ":5.1", kPg + "FivePointOneGroup", {l, r, c, lfe, rl, rr}},
        {12, kUri + ":7.1", kPg + "SevenPointOneGroup", {l, r, c, lfe, rl, rr, sl, sr}},
        {14, kUri + ":7.1.2", kUri + "#SevenPointOnePointTwoGroup", {l, r, c, lfe, rl, rr, sl, sr, tl, tr}},
    };
    for (const Expected& expected : all) {
        SCOPED_TRACE(expected.uri);
        const LilvPlugin* plugin = Lv2Host::pluginOf(expected.layout);
        ASSERT_EQ(std::string(lilv_node_as_uri(lilv_plugin_get_uri(plugin))), expected.uri);
        EXPECT_EQ(
            std::string(lilv_node_as_string(lilv_plugin_class_get_label(lilv_plugin_get_class(plugin)))),
            "Limiter Plugin");
        EXPECT_TRUE(lilv_plugin_has_latency(plugin));
        EXPECT_EQ(lilv_plugin_get_latency_port_index(plugin), 31u);
        const auto count = expected.channels.size();
        ASSERT_TRUE(host.open(expected.layout, kRate, kBlock, false));
        ASSERT_EQ(host.ports().size(), 35 + 3 * count);
        EXPECT_EQ(host.parameterCount(), 31);
        EXPECT_EQ(host.ports()[17].symbol, "enabled");
        EXPECT_EQ(host.ports()[17].designation, "http://lv2plug.in/ns/lv2core#enabled");
        for (std::size_t kind = 0; kind < 3; ++kind) {
            const std::string group = expected.uri + std::array{"#main_in", "#side_chain", "#main_out"}[kind];
            for (std::size_t i = 0; i < count; ++i) {
                const Lv2Host::Port& port = host.ports()[35 + kind * count + i];
                EXPECT_TRUE(port.isAudio);
                EXPECT_EQ(port.isInput, kind < 2);
                EXPECT_EQ(port.group, group);
                EXPECT_EQ(port.designation, expected.channels[i]) << port.symbol;
                const LilvPort* described =
                    lilv_plugin_get_port_by_index(plugin, static_cast<std::uint32_t>(35 + kind * count + i));
                for (const char* property :
                     {LV2_CORE__connectionOptional, "http://lv2plug.in/ns/lv2core#isSideChain"}) {
                    EXPECT_EQ(lilv_port_has_property(plugin, described, node(property).get()), kind == 1);
                }
            }
            EXPECT_TRUE(lilv_world_ask(Lv2Host::world(), node(group).get(),
                                       node("http://www.w3.org/1999/02/22-rdf-syntax-ns#type").get(),
                                       node(expected.group).get()));
        }
        EXPECT_EQ(object(expected.uri, kPg + "mainInput"), expected.uri + "#main_in");
        EXPECT_EQ(object(expected.uri, kPg + "mainOutput"), expected.uri + "#main_out");
        EXPECT_EQ(object(expected.uri + "#side_chain", kPg + "sideChainOf"), expected.uri + "#main_in");
        EXPECT_EQ(object(expected.uri + "#main_out", kPg + "source"), expected.uri + "#main_in");
    }
}

TEST_F(Lv2, ANewInstanceIsWhatItsPortsSay) {
    const std::vector<float> fresh = held(host);
    for (int i = 0; i < host.parameterCount(); ++i) {
        EXPECT_NEAR(host.value(i), static_cast<double>(fresh[static_cast<std::size_t>(i)]), 1e-6) << i;
    }
    play(host, noise());
    EXPECT_EQ(held(host), fresh);
    EXPECT_EQ(presetOf(host), "Default Setting");
    EXPECT_THAT(notifiedMeanwhile(host), IsEmpty());
}

TEST_F(Lv2, EveryValueSurvivesItsTripThroughThePort) {
    Random random(1);
    for (int round = 0; round < 60; ++round) {
        std::vector<float> sent;
        for (int i = 0; i < host.parameterCount(); ++i) {
            const float at = 0.5f * static_cast<float>(random.bipolar() + 1.0);
            sent.push_back(
                host.table().parameterAt(i)->denormalize(round < 2 ? static_cast<float>(round) : at));
            host.setValue(i, static_cast<double>(sent.back()));
        }
        host.run(0);
        const std::vector<float> got = held(host);
        for (std::size_t i = 0; i < sent.size(); ++i) {
            const AbstractPluginParameter& parameter = *host.table().parameterAt(static_cast<int>(i));
            const bool stepped = parameter.kind() == AbstractPluginParameter::Kind::Indexed;
            EXPECT_NEAR(parameter.normalize(got[i]), parameter.normalize(sent[i]), stepped ? 0.0 : 2.77e-5)
                << parameter.name() << " " << sent[i] << " " << got[i];
        }
    }
}

TEST_F(Lv2, WhatMidiHasMovedStaysWhereThePortDoesNotMove) {
    learnController();
    Lv2Host silent({.options = false, .portRequests = false});
    ASSERT_TRUE(silent.open(kStereoLayout, kRate, kBlock, false));
    const auto gainOf = [&](const Lv2Host& of) { return held(of)[static_cast<std::size_t>(gain)]; };
    moveController(silent);
    EXPECT_NEAR(gainOf(silent), kMidiGain, 1e-4);
    EXPECT_TRUE(eventually(silent, [&] { return !silent.notifications().empty(); }));
    EXPECT_THAT(silent.notifications(), ElementsAreArray({LV2_STATE__StateChanged}));
    EXPECT_EQ(silent.value(gain), 0.0) << "the port is the host's";
    const std::string session = silent.saveTurtle();

    for (const bool movedMeanwhile : {false, true}) {
        Lv2Host other({.options = true, .portRequests = false});
        ASSERT_TRUE(other.open(kStereoLayout, kRate, kBlock, false));
        const Owned<LilvState> state(
            lilv_state_new_from_string(Lv2Host::world(), other.map(), session.c_str()), lilv_state_free);
        ASSERT_TRUE(state);
        other.restore(state.get());
        if (movedMeanwhile) other.control("gain") = 3.0f;
        const auto notified = notifiedMeanwhile(other);
        EXPECT_NEAR(gainOf(other), movedMeanwhile ? 3.0 : static_cast<double>(kMidiGain), 1e-4);
        EXPECT_THAT(notified, IsEmpty()) << "the host knows what it has restored";
    }
    silent.control("gain") = 1.0f;
    silent.run(0);
    EXPECT_EQ(gainOf(silent), 1.0f);

    moveController(host);
    EXPECT_TRUE(eventually(host, [&] { return host.value(gain) != 0.0; })) << "this one takes requests";
    EXPECT_NEAR(host.value(gain), static_cast<double>(kMidiGain), 1e-4);
}

TEST_F(Lv2, ARestoredStateIsNotOvertakenByOlderRequests) {
    learnController();
    host.run(0);
    const std::vector<std::byte> before = host.save(0);
    moveController(host);
    // Until the next block the request for the port waits.
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
    ASSERT_TRUE(host.restore(before, 0));
    notifiedMeanwhile(host);
    EXPECT_EQ(host.value(gain), 0.0);
    EXPECT_EQ(held(host)[static_cast<std::size_t>(gain)], 0.0f);
}

TEST_F(Lv2, FactoryPresetsAreInTheBrowserWithValuesAndName) {
    const Owned<LilvNode> kind = node(LV2_PRESETS__Preset);
    for (const ChannelLayout layout : host.traits().layouts) {
        const Owned<LilvNodes> related(lilv_plugin_get_related(Lv2Host::pluginOf(layout), kind.get()),
                                       lilv_nodes_free);
        EXPECT_EQ(lilv_nodes_size(related.get()), 58u);
    }
    const int scale = host.table().meterScale.index();
    host.setValue(scale, 5.0);
    ASSERT_TRUE(eventually(host, [&] { return held(host)[static_cast<std::size_t>(scale)] == 5.0f; }));
    const Owned<LilvNodes> presets(lilv_plugin_get_related(Lv2Host::pluginOf(kStereoLayout), kind.get()),
                                   lilv_nodes_free);
    std::map<std::string, const LilvNode*> byName;
    LILV_FOREACH(nodes, i, presets.get()) {
        const LilvNode* preset = lilv_nodes_get(presets.get(), i);
        lilv_world_load_resource(Lv2Host::world(), preset);
        byName[object(lilv_node_as_uri(preset), LILV_NS_RDFS "label")] = preset;
    }
    int checked = 0;
    for (const ArchivedFile& file : readFolder(factoryArchive(), "FactoryPresets")) {
        SCOPED_TRACE(file.path);
        const std::filesystem::path path = file.path;
        const std::string name = path.stem();
        ASSERT_TRUE(byName.contains(name));
        const std::string bank = object(lilv_node_as_uri(byName[name]), LV2_PRESETS__bank);
        const std::string folder = path.parent_path();
        EXPECT_EQ(bank.empty() ? "" : object(bank, LILV_NS_RDFS "label"),
                  folder.substr(folder.starts_with('_') ? 1 : 0));
        const Owned<LilvState> state(lilv_state_new_from_world(Lv2Host::world(), host.map(), byName[name]),
                                     lilv_state_free);
        host.restore(state.get());
        host.run(kBlock);
        LimiterSettings expected;
        ASSERT_TRUE(loadPreset(expected, file.bytes, LockOutputRule::Ignore));
        const std::vector<float> got = held(host);
        for (const ParameterRow& row : kParameterTable) {
            const auto i = static_cast<std::size_t>(&row - kParameterTable.data());
            if (row.followsInterface) continue;
            EXPECT_EQ(got[i], expected.parameterAt(static_cast<int>(i))->value()) << row.name;
        }
        EXPECT_EQ(got[static_cast<std::size_t>(scale)], 5.0f) << "a taste is no part of a preset";
        EXPECT_EQ(presetOf(host), name);
        ++checked;
    }
    EXPECT_EQ(checked, 58);
}

TEST_F(Lv2, OnlyTheFirstOfTheSideChainIsTheKeyForAll) {
    host.setValue(gain, 0.0);
    host.setValue(host.table().sideChainTriggering.index(), 1.0);
    const Signal quiet = sine(1000.0, kRate, 40 * kBlock, 0.25);
    const Signal loud = sine(1000.0, kRate, 40 * kBlock, 4.0);
    const auto play = [&](std::initializer_list<const float*> side) {
        EXPECT_TRUE(host.reactivate(kRate, kBlock));
        Channels out(2, Signal(quiet.size()));
        const float* inputs[] = {quiet.data(), quiet.data()};
        float* outputs[] = {out[0].data(), out[1].data()};
        host.process({inputs, side, outputs, static_cast<int>(quiet.size()), {}, {}});
        return std::pair(rms(std::span(out[0]).last(kBlock)), rms(std::span(out[1]).last(kBlock)));
    };
    const auto keyed = play({loud.data(), nullptr});
    EXPECT_LT(keyed.first, 0.08);
    EXPECT_LT(keyed.second, 0.08);
    EXPECT_EQ(keyed, play({loud.data(), loud.data()}));
    const auto free = play({nullptr, nullptr});
    EXPECT_NEAR(free.second, 0.25 / std::sqrt(2.0), 1e-2);
}

TEST_F(Lv2, NoValueAtAPortDoesHarm) {
    using Limits = std::numeric_limits<float>;
    Random random(2);
    for (const float bad : {Limits::quiet_NaN(), Limits::infinity(), -Limits::infinity(), 1e30f, -1e30f,
                            Limits::denorm_min(), 0.49f, 1e9f}) {
        for (int i = 0; i < host.parameterCount(); ++i) host.ports()[static_cast<std::size_t>(i)].value = bad;
        const std::vector<float> before = held(host);
        const Channels out = play(host, noise(2 * kBlock));
        EXPECT_TRUE(isFinite(out)) << bad;
        const std::vector<float> after = held(host);
        EXPECT_TRUE(!std::isnan(bad) || after == before);
        for (int i = 0; i < host.parameterCount(); ++i) {
            const AbstractPluginParameter& parameter = *host.table().parameterAt(i);
            EXPECT_GE(after[static_cast<std::size_t>(i)], parameter.minimum());
            EXPECT_LE(after[static_cast<std::size_t>(i)], parameter.maximum());
        }
    }
}

TEST_F(Lv2, WhatItCannotWorkWithIsRefused) {
    const LV2_Feature* nothing[] = {nullptr};
    EXPECT_FALSE(lilv_plugin_instantiate(Lv2Host::pluginOf(kStereoLayout), kRate, nothing))
        << "nobody maps URIs";
    host.setValue(gain, 7.0);
    host.run(kBlock);
    const std::vector<std::byte> state = host.state();
    EXPECT_NE(host.restoreState(state, LV2_ATOM__String), LV2_STATE_SUCCESS);
    host.run(kBlock);
    EXPECT_EQ(host.state(), state);
    EXPECT_EQ(host.restoreState(state, LV2_ATOM__Chunk), LV2_STATE_SUCCESS);
}

TEST_F(Lv2, TheTransportIsThatOfTheHost) {
    const Lv2Uris uris(*host.map());
    alignas(8) std::array<std::uint8_t, 1024> buffer{};
    LV2_Atom_Forge forge;
    lv2_atom_forge_init(&forge, host.map());
    lv2_atom_forge_set_buffer(&forge, buffer.data(), buffer.size());
    LV2_Atom_Forge_Frame sequence, position;
    lv2_atom_forge_sequence_head(&forge, &sequence, 0);
    lv2_atom_forge_frame_time(&forge, 100);
    lv2_atom_forge_object(&forge, &position, 0, uris.timePosition);
    const std::pair<LV2_URID, float> said[] = {
        {uris.timeBar, 2.0f},      {uris.timeBarBeat, 1.5f},          {uris.timeBeatsPerBar, 6.0f},
        {uris.timeBeatUnit, 8.0f}, {uris.timeBeatsPerMinute, 240.0f}, {uris.timeSpeed, 1.0f}};
    for (const auto& [key, value] : said) {
        lv2_atom_forge_key(&forge, key);
        lv2_atom_forge_float(&forge, value);
    }
    lv2_atom_forge_pop(&forge, &position);
    lv2_atom_forge_pop(&forge, &sequence);

    Lv2Transport transport;
    const auto* events = reinterpret_cast<const LV2_Atom_Sequence*>(buffer.data());
    const HostTransport now = transport.read(events, uris, kRate);
    EXPECT_TRUE(now.isRolling);
    EXPECT_DOUBLE_EQ(now.tempo, 120.0) << "of quarters, where the host counts eighths";
    EXPECT_DOUBLE_EQ(now.beats, (2 * 6 + 1.5) / 2 - 100 * 2 / kRate) << "as the block begins";
    transport.advance(24000, kRate);
    EXPECT_NEAR(transport.read(nullptr, uris, kRate).beats, now.beats + 1.0, 1e-9) << "half a second on";
}

}  // namespace
}  // namespace vanta::test
