#include <cmath>
#include <limits>
#include <set>

#include "tests/host/vst3/vst3_fixture.hpp"

namespace vanta::test {
namespace {

using Kind = Handler::Call::Kind;

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

    Changes changes;
    for (const auto& [id, value] :
         {std::pair{kGain, 0.25}, {kAttack, 0.5}, {kAttack, 0.75}, {424242u, 1.0}}) {
        changes.add(id, 0, value);
    }
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

TEST_F(Vst3, BrokenStreamsChangeNothing) {
    Vst3Host host;
    ASSERT_TRUE(host.open(kStereoLayout, kRate, 128, false));
    host.plugin().set(kGain, 0.3);
    const auto state = host.save(0);
    ASSERT_FALSE(state.empty());
    host.plugin().set(kGain, 0.7);
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

}  // namespace
}  // namespace vanta::test
