#include <dlfcn.h>
#include <fmt/format.h>
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <map>
#include <set>

#include "host/vst3/factory.hpp"
#include "tests/host/vst3/vst3_host.hpp"
#include "tests/plugin/preset_bytes.hpp"
#include "tests/plugin/user_home.hpp"
#include "tests/support/signals.hpp"

namespace vanta::test {
namespace {

using Kind = Handler::Call::Kind;

constexpr double kRate = 48000.0;
constexpr v3_param_id kGain = 0;
constexpr v3_param_id kAttack = 3;
constexpr v3_param_id kLinkTransients = 5;
constexpr v3_param_id kLinkRelease = 6;
constexpr v3_param_id kOversampling = 9;
constexpr v3_param_id kSideChain = 14;
constexpr v3_param_id kProgram = 1000;
constexpr v3_param_id kFirstController = 2000;

class Vst3 : public testing::Test {
protected:
    UserHome home_;
};

/// Audio of a host's buses, in the host's order.
struct Audio {
    Audio(std::size_t channels, std::size_t samples) : in(channels, Signal(samples)), out(in), key(in) {}

    v3_result process(Vst3Host& host, int keyChannels = 0) {
        std::vector<float*> inputs, outputs, keys;
        for (std::size_t i = 0; i < in.size(); ++i) {
            inputs.push_back(in[i].data());
            outputs.push_back(out[i].data());
            keys.push_back(key[i].data());
        }
        const auto count = static_cast<std::int32_t>(in.size());
        v3_audio_bus_buffers input[] = {{count, 0, {inputs.data()}}, {keyChannels, 0, {keys.data()}}};
        v3_audio_bus_buffers output{count, 0, {outputs.data()}};
        v3_process_data data{};
        data.nframes = static_cast<std::int32_t>(in[0].size());
        data.num_input_buses = 2;
        data.num_output_buses = 1;
        data.inputs = input;
        data.outputs = &output;
        data.input_params = host.changes.pointer();
        data.output_params = host.answers.pointer();
        host.answers.clear();
        auto** const processor = host.plugin().processor;
        const v3_result result = v3_cpp_obj(processor)->process(processor, &data);
        host.changes.clear();
        return result;
    }

    std::vector<Signal> in, out, key;
};

v3_param_info infoOf(Vst3Instance& plugin, int position) {
    v3_param_info info{};
    EXPECT_EQ(v3_cpp_obj(plugin.controller)->get_parameter_info(plugin.controller, position, &info), V3_OK);
    return info;
}

std::string textOf(Vst3Instance& plugin, v3_param_id id, double position) {
    v3_str_128 text{};
    auto** const controller = plugin.controller;
    EXPECT_EQ(v3_cpp_obj(controller)->get_parameter_string_for_value(controller, id, position, text), V3_OK);
    return readText(text);
}

// The module

TEST_F(Vst3, TheFactorySaysTheSameInAllItsGenerations) {
    const Vst3Module module;
    auto** const factory = module.latestFactory();
    auto** const first = module.factory();
    auto** const second = static_cast<v3_plugin_factory_2**>(static_cast<void*>(factory));
    ASSERT_EQ(v3_cpp_obj(first)->num_classes(first), 1);
    v3_class_info one{};
    v3_class_info_2 two{};
    v3_class_info_3 three{};
    ASSERT_EQ(v3_cpp_obj(first)->get_class_info(first, 0, &one), V3_OK);
    ASSERT_EQ(v3_cpp_obj(second)->get_class_info_2(second, 0, &two), V3_OK);
    ASSERT_EQ(v3_cpp_obj(factory)->get_class_info_utf16(factory, 0, &three), V3_OK);
    EXPECT_TRUE(v3_tuid_match(one.class_id, two.class_id) && v3_tuid_match(one.class_id, three.class_id));
    EXPECT_STREQ(one.category, "Audio Module Class");
    EXPECT_STREQ(two.sub_categories, "Fx|Dynamics|Mastering");
    EXPECT_EQ(readText(three.name), one.name);
    EXPECT_EQ(readText(three.version), two.version);
    EXPECT_NE(v3_cpp_obj(first)->get_class_info(first, 1, &one), V3_OK);

    std::string id;
    for (const std::uint8_t byte : two.class_id) id += fmt::format("{:02X}", byte);
    const std::string described =
        readBytes(std::string(Vst3Module::bundle()) + "/Contents/Resources/moduleinfo.json");
    for (const std::string& fact :
         {id, std::string(two.name), std::string(two.version), std::string(two.vendor),
          std::string(two.sdk_version), std::string(two.category)}) {
        EXPECT_NE(described.find('"' + fact + '"'), std::string::npos) << fact;
    }

    void* made = &one;
    EXPECT_NE(v3_cpp_obj(first)->create_instance(first, v3_component_iid, v3_component_iid, &made), V3_OK);
    EXPECT_EQ(made, nullptr) << "no such class";
    EXPECT_NE(v3_cpp_obj(first)->create_instance(first, two.class_id, v3_bstream_iid, &made), V3_OK);
    EXPECT_EQ(made, nullptr) << "not that kind of thing";
}

TEST_F(Vst3, EveryInterfaceLeadsToEveryOther) {
    const Vst3Module module;
    Vst3Instance plugin(module.factory());
    ASSERT_TRUE(plugin.component);
    const std::vector<const std::uint8_t*> ids = {v3_funknown_iid,
                                                  v3_plugin_base_iid,
                                                  v3_component_iid,
                                                  v3_audio_processor_iid,
                                                  v3_process_context_requirements_iid,
                                                  v3_edit_controller_iid,
                                                  v3_unit_information_iid,
                                                  v3_midi_mapping_iid};
    const auto query = [](void* object, const std::uint8_t* id) {
        void** found = nullptr;
        auto** const unknown = static_cast<v3_funknown**>(object);
        EXPECT_EQ(v3_cpp_obj_query_interface(unknown, id, &found), V3_OK);
        if (found) v3_cpp_obj_unref(reinterpret_cast<v3_funknown**>(found));
        return static_cast<void*>(found);
    };
    for (const std::uint8_t* from : ids) {
        void* const object = query(plugin.component, from);
        ASSERT_TRUE(object);
        for (const std::uint8_t* to : ids) EXPECT_EQ(query(object, to), query(plugin.component, to));
    }
    void** none = reinterpret_cast<void**>(&plugin);
    EXPECT_EQ(v3_cpp_obj_query_interface(plugin.component, v3_bstream_iid, &none), V3_NO_INTERFACE);
    EXPECT_EQ(none, nullptr);
    const std::uint32_t held = v3_cpp_obj_ref(plugin.component);
    EXPECT_EQ(v3_cpp_obj_ref(plugin.controller), held + 1) << "one object, one count";
    v3_cpp_obj_unref(plugin.component);
    EXPECT_EQ(v3_cpp_obj_unref(plugin.controller), held - 1);
}

TEST_F(Vst3, NothingOfTheHostIsHeldInTheEnd) {
    for (const auto loop :
         {Vst3Host::Loop::None, Vst3Host::Loop::Factory, Vst3Host::Loop::Context, Vst3Host::Loop::Handler}) {
        Vst3Host host(loop);
        ASSERT_TRUE(host.open(kStereoLayout, kRate, 512, false));
        EXPECT_EQ(host.runLoop.timers.size(), loop == Vst3Host::Loop::None ? 0u : 1u);
        EXPECT_NE(v3_cpp_obj_initialize(host.plugin().component, nullptr), V3_OK) << "twice";
        v3_cpp_obj_terminate(host.plugin().component);
        EXPECT_TRUE(host.runLoop.timers.empty());
        EXPECT_EQ(host.handler.references, 0);
        EXPECT_EQ(host.application.references, 0);
        EXPECT_EQ(host.runLoop.references, loop == Vst3Host::Loop::Factory ? 1 : 0) << "the factory's";
    }
}

TEST_F(Vst3, IsLoadedAndUnloadedHundredsOfTimesAndGoesWhole) {
    for (int i = 0; i < 300; ++i) {
        Vst3Host host(Vst3Host::Loop::None);
        if (i % 30 == 0) {
            ASSERT_TRUE(host.open(kStereoLayout, kRate, 512, false));
        }
    }
    const std::string module = std::string(Vst3Module::bundle()) + "/Contents/x86_64-linux/vanta.so";
    EXPECT_EQ(dlopen(module.c_str(), RTLD_NOW | RTLD_NOLOAD), nullptr) << "still there";
}

TEST_F(Vst3, TwoHundredInstancesPlayAtOnce) {
    std::vector<std::unique_ptr<Vst3Host>> hosts;
    for (int i = 0; i < 200; ++i) {
        hosts.push_back(std::make_unique<Vst3Host>());
        ASSERT_TRUE(
            hosts.back()->open(i % 10 == 0 ? i % kChannelLayoutCount : kStereoLayout, kRate, 64, false));
    }
    for (auto& host : hosts) {
        Audio audio(kMaxChannels, 64);
        EXPECT_EQ(audio.process(*host), V3_OK);
        host->idle();
    }
}

// Buses

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
    for (const v3_speaker_arrangement front : {0x5637, 0x563F}) {
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

TEST_F(Vst3, EveryChannelIsPlayedAsTheSpeakerThatItIs) {
    // Half of the linking joins the two of a pair and leaves all others alone: a loud channel turns down
    // its twin, by which one sees who is who.
    for (ChannelLayout layout = 0; layout < kChannelLayoutCount; ++layout) {
        std::vector<v3_speaker_arrangement> pairs = {0x3, 0x30, 0xC0, 0x600, 0x3000000};
        if (channelLayoutName(layout) == "LCRS") pairs.push_back(0x104);
        std::vector<v3_speaker_arrangement> speakers;
        for (v3_speaker_arrangement bit = 1; bit < 0x4000000; bit <<= 1) {
            if (kVst3Layouts[static_cast<std::size_t>(layout)].arrangement & bit) speakers.push_back(bit);
        }
        for (std::size_t loud = 0; loud < speakers.size(); ++loud) {
            Vst3Host host;
            ASSERT_TRUE(host.open(layout, kRate, 8192, false));
            host.setValue(kGain, 12.0);
            host.setValue(kLinkTransients, 0.5);
            host.setValue(kLinkRelease, 0.5);
            Audio audio(speakers.size(), 8192);
            for (std::size_t c = 0; c < speakers.size(); ++c) {
                audio.in[c] =
                    sine(300.0 + 50.0 * static_cast<double>(c), kRate, 8192, c == loud ? 0.9 : 0.05);
            }
            ASSERT_EQ(audio.process(host), V3_OK);
            for (std::size_t c = 0; c < speakers.size(); ++c) {
                const double tone = (300.0 + 50.0 * static_cast<double>(c)) / kRate;
                const double level = db(amplitudeAt(std::span(audio.out[c]).subspan(4096), tone));
                const bool twins = std::ranges::count(pairs, speakers[c] | speakers[loud]) > 0;
                const double expected = c == loud ? 0.0 : db(0.05) + (twins ? 1.0 : 12.0);
                EXPECT_NEAR(level, expected, 1.5)
                    << channelLayoutName(layout) << " loud " << loud << " in " << c;
            }
        }
    }
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

// Parameters

TEST_F(Vst3, ParametersAreDescribedAsValidatorsWantThem) {
    Vst3Host host;
    ASSERT_TRUE(host.open(kStereoLayout, kRate, 512, false));
    Vst3Instance& plugin = host.plugin();
    auto** const controller = plugin.controller;
    std::set<int> units;
    for (int i = 0; i < v3_cpp_obj(plugin.units)->get_unit_count(plugin.units); ++i) {
        v3_unit_info unit{};
        ASSERT_EQ(v3_cpp_obj(plugin.units)->get_unit_info(plugin.units, i, &unit), V3_OK);
        EXPECT_TRUE(units.insert(unit.id).second && unit.name[0]);
    }
    const int count = v3_cpp_obj(controller)->get_parameter_count(controller);
    ASSERT_EQ(count, 31 + 1 + 128);
    std::set<v3_param_id> ids;
    int bypasses = 0;
    for (int i = 0; i < count; ++i) {
        const v3_param_info info = infoOf(plugin, i);
        SCOPED_TRACE(readText(info.title));
        EXPECT_TRUE(ids.insert(info.param_id).second);
        EXPECT_TRUE(units.contains(info.unit_id));
        if (i < 31) {
            EXPECT_EQ(info.param_id, static_cast<v3_param_id>(i));
        }
        const bool automatable = (info.flags & V3_PARAM_CAN_AUTOMATE) != 0;
        EXPECT_FALSE(automatable && (info.flags & V3_PARAM_IS_HIDDEN));
        EXPECT_EQ((info.flags & V3_PARAM_IS_HIDDEN) != 0, info.param_id >= kFirstController);
        if (info.flags & V3_PARAM_IS_BYPASS) {
            ++bypasses;
            EXPECT_TRUE(automatable);
            EXPECT_EQ(info.step_count, 1);
        }
        if (i < 31) {
            EXPECT_NEAR(plugin.value(info.param_id), info.default_normalised_value, 0.2);
        }
        // Texts and numbers lead back to where they came from.
        const int steps = info.step_count ? info.step_count : 20;
        for (int step = 0; step <= steps; ++step) {
            const double position = static_cast<double>(step) / steps;
            const std::string text = textOf(plugin, info.param_id, position);
            EXPECT_FALSE(text.empty());
            const std::string unit = readText(info.units);
            EXPECT_TRUE(unit.empty() || !text.ends_with(unit)) << text;
            v3_str_128 typed{};
            writeText(text, typed);
            double back = -1.0;
            ASSERT_EQ(v3_cpp_obj(controller)
                          ->get_parameter_value_for_string(controller, info.param_id, typed, &back),
                      V3_OK)
                << text;
            EXPECT_EQ(textOf(plugin, info.param_id, back), text);
            if (info.step_count) {
                EXPECT_NEAR(back, position, 1e-9) << text;
            }
            const double plain =
                v3_cpp_obj(controller)->normalised_parameter_to_plain(controller, info.param_id, position);
            EXPECT_NEAR(
                v3_cpp_obj(controller)->plain_parameter_to_normalised(controller, info.param_id, plain),
                position, 1e-9);
        }
    }
    EXPECT_EQ(bypasses, 1);
    v3_str_128 nonsense{};
    writeText("as loud as can be", nonsense);
    double position = 0.0;
    EXPECT_NE(v3_cpp_obj(controller)->get_parameter_value_for_string(controller, kGain, nonsense, &position),
              V3_OK);
    EXPECT_NE(v3_cpp_obj(controller)->get_parameter_string_for_value(controller, 999, 0.5, nonsense), V3_OK);
    v3_param_info info{};
    EXPECT_NE(v3_cpp_obj(controller)->get_parameter_info(controller, count, &info), V3_OK);
    EXPECT_NE(v3_cpp_obj(controller)->get_parameter_info(controller, -1, &info), V3_OK);
}

TEST_F(Vst3, ManyQueuesOfManyPointsActAsIfBlocksBeganThere) {
    constexpr int kLength = 6000;
    const std::vector<v3_param_id> moved = {18, 3, 17, 4, 0, 6, 5, 777, 13};
    std::multimap<int, std::pair<v3_param_id, double>> points;
    Random random(5);
    for (const v3_param_id id : moved) {
        for (int i = 0; i < 40; ++i)
            points.insert({random.between(0, kLength - 1), {id, random.between(0, 100) / 100.0}});
    }
    const auto play = [&](bool whole) {
        Vst3Host host;
        EXPECT_TRUE(host.open(kStereoLayout, kRate, kLength, false));
        const Signal signal = pinkNoise(3, kLength, 0.2);
        Signal played;
        const auto run = [&](int begin, int end) {
            Audio audio(2, static_cast<std::size_t>(end - begin));
            for (Signal& in : audio.in) in.assign(signal.begin() + begin, signal.begin() + end);
            EXPECT_EQ(audio.process(host), V3_OK);
            played.insert(played.end(), audio.out[1].begin(), audio.out[1].end());
        };
        int begin = 0;
        for (const auto& [offset, point] : points) {
            if (!whole && offset > begin) {
                run(begin, offset);
                begin = offset;
            }
            host.changes.add(point.first, offset - begin, point.second);
        }
        run(begin, kLength);
        return played;
    };
    EXPECT_EQ(nullDb(play(true), play(false)), -400.0);
}

TEST_F(Vst3, ControlsThatShowAutomationLateDoNotMoveTheSound) {
    const auto play = [](int lag) {
        Vst3Host host;
        EXPECT_TRUE(host.open(kStereoLayout, kRate, 256, false));
        const auto ramp = [](int block) { return std::min(block, 60) * 0.01; };
        Signal played;
        for (int block = 0; block < 80; ++block) {
            Audio audio(2, 256);
            for (Signal& in : audio.in) in = pinkNoise(static_cast<std::uint64_t>(block), 256, 0.2);
            if (block <= 60) host.changes.add(kGain, 0, ramp(block));
            if (lag > 0 && block >= lag) host.plugin().set(kGain, ramp(block - lag));
            EXPECT_EQ(audio.process(host), V3_OK);
            played.insert(played.end(), audio.out[0].begin(), audio.out[0].end());
            host.idle();
        }
        EXPECT_NEAR(host.plugin().value(kGain), 0.6, 1e-6);
        EXPECT_EQ(host.handler.count(Kind::Perform), 0);
        return played;
    };
    EXPECT_EQ(nullDb(play(6), play(0)), -400.0);
}

TEST_F(Vst3, WhateverAHostLeavesOutOrGetsWrongIsSurvived) {
    Vst3Host host;
    ASSERT_TRUE(host.open(kStereoLayout, kRate, 256, true));
    auto** const processor = host.plugin().processor;
    const auto process = [&](v3_process_data& data) {
        return v3_cpp_obj(processor)->process(processor, &data);
    };
    EXPECT_EQ(v3_cpp_obj(processor)->process(processor, nullptr), V3_INVALID_ARG);

    Changes changes{{kGain, {{0, 0.25}}}, {kAttack, {{0, 0.5}, {0, 0.75}}}, {424242, {{0, 1.0}}}};
    v3_process_data flush{};
    flush.input_params = changes.pointer();
    EXPECT_EQ(process(flush), V3_OK);
    host.idle();
    EXPECT_NEAR(host.plugin().value(kGain), 0.25, 1e-6);
    EXPECT_NEAR(host.plugin().value(kAttack), 0.75, 1e-6) << "the last of a queue";

    // Buses without buffers, with null buffers, with fewer and with more channels than arranged.
    Signal signal(256, 0.5f), more(256, 3.0f);
    float* channels[] = {signal.data(), nullptr, more.data()};
    for (const int in : {0, 1, 2, 3}) {
        for (const int out : {0, 1, 2, 3}) {
            for (const bool null : {false, true}) {
                v3_audio_bus_buffers inputs[] = {{in, 0, {null ? nullptr : channels}}, {in, 0, {nullptr}}};
                v3_audio_bus_buffers output{out, ~std::uint64_t{0}, {null ? nullptr : channels}};
                std::ranges::fill(more, 3.0f);
                v3_process_data data{};
                data.nframes = 256;
                data.num_input_buses = 2;
                data.num_output_buses = 1;
                data.inputs = inputs;
                data.outputs = &output;
                EXPECT_EQ(process(data), V3_OK);
                EXPECT_EQ(output.channel_silence_bitset, 0u);
                if (out == 3 && !null) {
                    EXPECT_EQ(peak(more), 0.0) << "left as it was";
                }
            }
        }
    }
    v3_process_data wide{};
    wide.symbolic_sample_size = V3_SAMPLE_64;
    EXPECT_NE(process(wide), V3_OK);
    EXPECT_EQ(v3_cpp_obj(processor)->can_process_sample_size(processor, V3_SAMPLE_64), V3_FALSE);

    // Values, offsets, ids and transports out of all bounds.
    constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
    constexpr double kInfinity = std::numeric_limits<double>::infinity();
    const double values[] = {kNan, kInfinity, -kInfinity, -1.0, 2.0, 1e300, 0.5};
    Random random(8);
    for (int round = 0; round < 300; ++round) {
        Audio audio(2, 64);
        for (Signal& in : audio.in) in = whiteNoise(static_cast<std::uint64_t>(round), 64, 2.0);
        for (int i = 0; i < 30; ++i) {
            const int base =
                std::vector{0, 990, 1990, 100000}[static_cast<std::size_t>(random.between(0, 3))];
            // All but oversampling, which would build for each block anew.
            const auto id = static_cast<v3_param_id>(base + random.between(10, 160));
            host.changes.add(id, random.between(-100, 1000), values[random.between(0, 6)]);
            host.plugin().set(id, values[random.between(0, 6)]);
        }
        EXPECT_EQ(audio.process(host), V3_OK);
        EXPECT_TRUE(std::ranges::all_of(audio.out[0], [](float x) { return std::isfinite(x); }));
        host.idle();
    }
    for (v3_param_id id = 0; id < 31; ++id) {
        EXPECT_TRUE(host.plugin().value(id) >= 0.0 && host.plugin().value(id) <= 1.0) << id;
    }
    v3_process_context context{};
    context.state = 0xFFFFFFFF;
    context.bpm = kNan;
    context.project_time_quarters = kInfinity;
    v3_process_data data{};
    data.ctx = &context;
    EXPECT_EQ(process(data), V3_OK);
}

// Set-up

TEST_F(Vst3, IsSetUpAndActivatedInAnyOrder) {
    Vst3Host host;
    ASSERT_TRUE(host.open(kStereoLayout, kRate, 512, false));
    Vst3Instance& plugin = host.plugin();
    EXPECT_EQ(plugin.setUp(kRate, 512), V3_FALSE) << "not while it is active";
    Audio audio(2, 512);
    for (Signal& in : audio.in) in = pinkNoise(1, 512);
    Random random(2);
    for (const double rate :
         {8000.0, 11025.0, 22050.0, 44099.5, 47952.048, 96000.0, 192000.0, 384000.0, 768000.0}) {
        for (const int block : {1, 16384, 64}) {
            ASSERT_TRUE(host.reactivate(rate, block)) << rate;
            for (const int size : {0, 1, random.between(2, 16384)}) {
                Audio sized(2, static_cast<std::size_t>(std::max(size, 1)));
                EXPECT_EQ(sized.process(host), V3_OK);
            }
        }
    }
    v3_cpp_obj(plugin.processor)->set_processing(plugin.processor, 0);
    plugin.setActive(false);
    EXPECT_EQ(audio.process(host), V3_NOT_INITIALIZED);
    for (const double rate : {0.0, -1.0, 7999.0, 768001.0, std::numeric_limits<double>::quiet_NaN()}) {
        EXPECT_NE(plugin.setUp(rate, 512), V3_OK) << rate;
    }
    EXPECT_NE(plugin.setUp(kRate, 512, V3_REALTIME, V3_SAMPLE_64), V3_OK);
    for (const int step : {1, 1, 0, 0, 1, 2, 3, 2, 0, 2, 1, 3}) {
        if (step < 2) {
            EXPECT_EQ(plugin.setActive(step == 1), V3_OK);
        }
        if (step >= 2) v3_cpp_obj(plugin.processor)->set_processing(plugin.processor, step == 3);
    }
    EXPECT_EQ(audio.process(host), V3_OK) << "active, whoever says that it processes";
}

TEST_F(Vst3, ValuesAreSetFromSeveralThreadsWhileAudioRuns) {
    Vst3Host host;
    ASSERT_TRUE(host.open(kStereoLayout, kRate, 128, false));
    std::atomic<bool> over{false};
    std::vector<std::thread> threads;
    for (int t = 0; t < 3; ++t) {
        threads.emplace_back([&, t] {
            Random random(static_cast<std::uint64_t>(t));
            for (int i = 0; i < 3000; ++i) {
                host.plugin().set(static_cast<v3_param_id>(random.between(0, 8)),
                                  random.between(0, 100) / 100.0);
                host.plugin().value(kGain);
            }
        });
    }
    std::thread audioThread([&] {
        Audio audio(2, 128);
        for (int block = 0; !over.load(); ++block) {
            host.changes.add(kGain, block % 128, (block % 100) / 100.0);
            EXPECT_EQ(audio.process(host), V3_OK);
        }
    });
    for (int i = 0; i < 50; ++i) host.runLoop.run();
    for (std::thread& thread : threads) thread.join();
    over.store(true);
    audioThread.join();
    EXPECT_EQ(host.handler.strayCalls, 0);
    host.setValue(kGain, 15.0);
    Audio(2, 128).process(host);
    host.idle();
    EXPECT_NEAR(host.plugin().value(kGain), 0.5, 1e-6);
}

// States

TEST_F(Vst3, BrokenStreamsChangeNothing) {
    Vst3Host host;
    ASSERT_TRUE(host.open(kStereoLayout, kRate, 128, false));
    host.plugin().set(kGain, 0.3);
    const auto state = host.save(0);
    ASSERT_FALSE(state.empty());
    host.plugin().set(kGain, 0.7);
    for (std::size_t length = 0; length < state.size(); length += 7) {
        EXPECT_FALSE(host.restore(std::span(state).first(length), 0)) << length;
    }
    EXPECT_FALSE(host.restore(std::vector<std::byte>(std::size_t{17} << 20), 0));
    EXPECT_NEAR(host.plugin().value(kGain), 0.7, 1e-6);
    for (const std::size_t room : {std::size_t{0}, std::size_t{1}, state.size() - 1}) {
        Stream stream({}, 5);
        stream.room = room;
        EXPECT_NE(v3_cpp_obj(host.plugin().component)->get_state(host.plugin().component, stream.pointer()),
                  V3_OK);
    }
    host.handler.calls.clear();
    ASSERT_TRUE(host.restore(state, 11));
    host.idle();
    EXPECT_NEAR(host.plugin().value(kGain), 0.3, 1e-6);
    EXPECT_TRUE(host.handler.takeRestart(V3_RESTART_PARAM_VALUES_CHANGED));
    EXPECT_EQ(host.handler.count(Kind::Perform), 0) << "restoring is no edit";
}

// What the plug-in tells

/// A map in which controller 20 moves the gain and 21 the attack.
void learn(const UserHome& home) {
    Bytes map;
    map.tag("QMCM").number(1);
    for (int i = 0; i < 128; ++i) map.number(i == 20 ? 0 : i == 21 ? 3 : -1);
    home.write("data/Quillmark/Vanta 2/MidiControllerMap.qmm", map.bytes);
}

TEST_F(Vst3, ALearnedControllerIsAnEditOnTheMainThreadAndItsEchoMovesNothing) {
    learn(home_);
    Vst3Host host;
    ASSERT_TRUE(host.open(kStereoLayout, kRate, 128, false));
    v3_param_id id = 0;
    auto** const midi = host.plugin().midi;
    const auto assignment = [&](std::int16_t channel, std::int16_t controller) {
        return v3_cpp_obj(midi)->get_midi_controller_assignment(midi, 0, channel, controller, &id);
    };
    ASSERT_EQ(assignment(9, 20), V3_TRUE);
    EXPECT_EQ(id, kFirstController + 20);
    EXPECT_EQ(assignment(0, 128), V3_FALSE);
    EXPECT_EQ(assignment(16, 20), V3_FALSE);

    Audio audio(2, 128);
    std::thread([&] {
        host.changes.add(id, 30, 1.0);
        audio.process(host);
    }).join();
    EXPECT_TRUE(host.handler.calls.empty()) << "never on the audio thread";
    host.idle();
    const std::vector<Handler::Call> expected = {
        {Kind::Begin, kGain}, {Kind::Perform, kGain, 1.0}, {Kind::End, kGain}};
    EXPECT_EQ(host.handler.calls, expected);
    EXPECT_EQ(host.plugin().value(kGain), 1.0);
    EXPECT_EQ(host.answers.count(), 0) << "told already";

    // The host gives the value back, while the controller has moved on.
    host.changes.add(id, 0, 0.5);
    host.changes.add(kGain, 100, 1.0);
    audio.process(host);
    host.idle();
    EXPECT_NEAR(host.plugin().value(kGain), 64.0 / 127.0, 1e-6);
    EXPECT_EQ(host.handler.strayCalls, 0);
}

TEST_F(Vst3, WithoutARunLoopAControllerReachesTheHostWithABlock) {
    learn(home_);
    Vst3Host host(Vst3Host::Loop::None);
    ASSERT_TRUE(host.open(kStereoLayout, kRate, 128, false));
    Audio audio(2, 128);
    host.changes.add(kFirstController + 21, 5, 1.0);
    int answered = 0;
    for (int wait = 0; answered == 0 && wait < 2000; ++wait) {
        audio.process(host);
        answered = host.answers.count();
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
    ASSERT_EQ(answered, 1);
    EXPECT_EQ(host.answers.queues[0].parameterId, kAttack);
    EXPECT_EQ(host.answers.queues[0].points[0].value, 1.0);
    EXPECT_EQ(host.plugin().value(kAttack), 1.0);
    EXPECT_TRUE(host.handler.calls.empty());
}

TEST_F(Vst3, ANewLatencyIsToldOnTheMainThreadAndOnlyWhileActive) {
    for (const auto loop : {Vst3Host::Loop::Handler, Vst3Host::Loop::None}) {
        Vst3Host host(loop);
        ASSERT_TRUE(host.open(kStereoLayout, kRate, 128, false));
        host.runLoop.run();
        host.handler.takeRestart(~0);
        const int before = host.latency();
        std::thread([&] {
            Audio audio(2, 128);
            host.changes.add(kOversampling, 0, 1.0);
            audio.process(host);
        }).join();
        // A host may do at once what it is asked for.
        int told = 0;
        host.handler.onCall = [&](const Handler::Call& call) {
            if (!(call.flags & V3_RESTART_LATENCY_CHANGED)) return;
            ++told;
            EXPECT_TRUE(host.reactivate(kRate, 128));
        };
        for (int wait = 0; host.plugin().value(kOversampling) < 1.0 && wait < 2000; ++wait) {
            host.runLoop.run();
            std::this_thread::sleep_for(std::chrono::milliseconds(2));
        }
        host.plugin().set(kLinkRelease, 0.5);
        host.runLoop.run();
        EXPECT_EQ(told, 1);
        EXPECT_GT(host.latency(), before);
        EXPECT_EQ(host.handler.strayCalls, 0);

        host.plugin().setActive(false);
        host.plugin().set(kOversampling, 0.4);
        host.runLoop.run();
        EXPECT_EQ(told, 1) << "it is read with the next activation";
        EXPECT_NE(host.plugin().latency(), host.latency());
    }
}

TEST_F(Vst3, PresetsAreProgramsOfTheRootUnit) {
    Vst3Host host;
    ASSERT_TRUE(host.open(kStereoLayout, kRate, 128, false));
    Vst3Instance& plugin = host.plugin();
    auto** const units = plugin.units;
    v3_program_list_info list{};
    ASSERT_EQ(v3_cpp_obj(units)->get_program_list_info(units, 0, &list), V3_OK);
    v3_unit_info root{};
    ASSERT_EQ(v3_cpp_obj(units)->get_unit_info(units, 0, &root), V3_OK);
    EXPECT_EQ(root.program_list_id, list.id);
    const v3_param_info info = infoOf(plugin, 31);
    ASSERT_EQ(info.param_id, kProgram);
    EXPECT_TRUE(info.flags & V3_PARAM_PROGRAM_CHANGE);
    ASSERT_EQ(info.step_count, list.programCount - 1);
    ASSERT_GT(list.programCount, 20);
    v3_str_128 name{};
    EXPECT_NE(v3_cpp_obj(units)->get_program_name(units, list.id, list.programCount, name), V3_OK);
    const auto programOf = [&](const std::string& wanted) {
        for (int i = 0; i < list.programCount; ++i) {
            EXPECT_EQ(v3_cpp_obj(units)->get_program_name(units, list.id, i, name), V3_OK);
            EXPECT_EQ(textOf(plugin, kProgram, static_cast<double>(i) / info.step_count), readText(name));
            if (readText(name) == wanted) return static_cast<double>(i) / info.step_count;
        }
        return -1.0;
    };
    const double standard = programOf("Default Setting");
    const double loud = programOf("Modern Loud");
    ASSERT_GE(loud, 0.0);
    EXPECT_EQ(plugin.value(kProgram), standard);
    const auto values = [&plugin] {
        std::vector<double> all;
        for (v3_param_id id = 0; id < 31; ++id) all.push_back(plugin.value(id));
        return all;
    };
    const std::vector<double> standardValues = values();

    // From the host's browser, on the main thread: at once.
    plugin.set(kProgram, loud);
    const std::vector<double> loudValues = values();
    EXPECT_NE(loudValues, standardValues);
    host.idle();
    EXPECT_GT(host.handler.count(Kind::Perform), 3) << "each value is an edit";
    EXPECT_EQ(host.handler.count(Kind::StartGroup), host.handler.count(Kind::FinishGroup));
    EXPECT_EQ(host.handler.count(Kind::Dirty), 1);
    // A host that restores its list of values chooses the current one again, and loses nothing.
    plugin.set(kAttack, 0.9);
    plugin.set(kProgram, loud);
    host.idle();
    EXPECT_NEAR(plugin.value(kAttack), 0.9, 1e-6);
    // With a block: when the main thread comes by.
    Audio audio(2, 128);
    host.changes.add(kProgram, 64, standard);
    audio.process(host);
    EXPECT_NEAR(plugin.value(kAttack), 0.9, 1e-6);
    host.idle();
    EXPECT_EQ(values(), standardValues);
    EXPECT_EQ(plugin.value(kProgram), standard);
    // A state brings its own.
    plugin.set(kProgram, loud);
    const auto state = host.save(0);
    plugin.set(kProgram, standard);
    ASSERT_TRUE(host.restore(state, 0));
    EXPECT_EQ(plugin.value(kProgram), loud);
    EXPECT_EQ(values(), loudValues);
}

// A view

struct FakeView final : EmbeddedView {
    FakeView(NativeWindow parent, EmbeddedViewHost& itsHost) : window_(parent + 1), host(itsHost) { ++count; }
    ~FakeView() override { --count; }
    NativeWindow window() const override { return window_; }
    void setVisible(bool visible) override { shown = visible; }
    ViewSize size() const override { return size_; }
    bool isResizable() const override { return true; }
    ViewSize nearestSize(ViewSize wanted) const override { return {std::max(wanted.width, 300), 200}; }
    void resize(ViewSize size) override { size_ = size; }
    void setScale(double factor) override { scale = factor; }
    void idle() override { ++idles; }

    static inline int count = 0;
    NativeWindow window_;
    EmbeddedViewHost& host;
    ViewSize size_{400, 200};
    double scale = 0.0;
    bool shown = false;
    int idles = 0;
};

/// Gives a view any size that it asks for, and has the only run loop.
struct Frame final : HostObject<HostFrame> {
    v3_result resize(v3_plugin_view** view, v3_view_rect* rectangle) override {
        return v3_cpp_obj(view)->on_size(view, rectangle);
    }
    HostUnknown* other(const std::uint8_t* id) override {
        return v3_tuid_match(id, v3_run_loop_iid) ? &runLoop : nullptr;
    }
    RunLoop runLoop;
};

TEST_F(Vst3, AViewLivesInTheHostsWindowFromItsRunLoop) {
    FakeView* fake = nullptr;
    auto* const owner = new vst3::Factory([&](HostedPlugin&, NativeWindow parent, EmbeddedViewHost& host) {
        auto made = std::make_unique<FakeView>(parent, host);
        fake = made.get();
        return made;
    });
    auto plugin = std::make_unique<Vst3Instance>(
        static_cast<v3_plugin_factory**>(static_cast<void*>(&owner->interface())));
    auto** const controller = plugin->controller;
    EXPECT_EQ(v3_cpp_obj(controller)->create_view(controller, "inspector"), nullptr);
    v3_plugin_view** const view = v3_cpp_obj(controller)->create_view(controller, "editor");
    ASSERT_TRUE(view);
    v3_view_rect rectangle{};
    EXPECT_EQ(v3_cpp_obj(view)->get_size(view, &rectangle), V3_OK);
    EXPECT_TRUE(rectangle.right > 100 && rectangle.bottom > 100) << "before there is a window";
    v3_plugin_view_content_scale** scale = nullptr;
    ASSERT_EQ(v3_cpp_obj_query_interface(view, v3_plugin_view_content_scale_iid, &scale), V3_OK);
    v3_cpp_obj(scale)->set_content_scale_factor(scale, 1.5f);
    Frame frame;
    v3_cpp_obj(view)->set_frame(view, frame.as<v3_plugin_frame>());
    int parent = 0;
    EXPECT_NE(v3_cpp_obj(view)->attached(view, &parent, "HWND"), V3_OK);
    ASSERT_EQ(v3_cpp_obj(view)->attached(view, &parent, "X11EmbedWindowID"), V3_OK);
    EXPECT_EQ(v3_cpp_obj(view)->attached(view, &parent, "X11EmbedWindowID"), V3_FALSE) << "twice";
    EXPECT_EQ(fake->window(), reinterpret_cast<NativeWindow>(&parent) + 1);
    EXPECT_TRUE(fake->shown && fake->scale == 1.5);
    frame.runLoop.run();
    EXPECT_EQ(fake->idles, 1);
    EXPECT_TRUE(fake->host.requestResize({500, 200}));
    EXPECT_EQ(fake->size(), (ViewSize{500, 200}));
    rectangle = {10, 10, 100, 900};
    EXPECT_EQ(v3_cpp_obj(view)->check_size_constraint(view, &rectangle), V3_OK);
    EXPECT_TRUE(rectangle.right == 310 && rectangle.bottom == 210);
    EXPECT_EQ(plugin->arrange({0x3F, 0x3F}, {0x3F}), V3_TRUE);
    frame.runLoop.run();
    EXPECT_EQ(FakeView::count, 1) << "another, for another model";
    // The view keeps what it shows, whatever the host lets go of first.
    plugin.reset();
    v3_cpp_obj_unref(scale);
    frame.runLoop.run();
    EXPECT_EQ(v3_cpp_obj(view)->removed(view), V3_OK);
    EXPECT_EQ(FakeView::count, 0);
    v3_cpp_obj(view)->set_frame(view, nullptr);
    v3_cpp_obj_unref(view);
    EXPECT_EQ(frame.references + frame.runLoop.references, 0);
    EXPECT_EQ(owner->unref(), 0u);
}

}  // namespace
}  // namespace vanta::test
