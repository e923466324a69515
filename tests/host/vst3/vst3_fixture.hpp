#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/host/vst3/vst3_host.hpp"
#include "tests/plugin/user_home.hpp"
#include "tests/support/signals.hpp"

namespace vanta::test {

inline constexpr double kRate = 48000.0;
inline constexpr v3_param_id kGain = 0;
inline constexpr v3_param_id kAttack = 3;
inline constexpr v3_param_id kOversampling = 9;
inline constexpr v3_param_id kSideChain = 14;
inline constexpr v3_param_id kProgram = 1000;
inline constexpr v3_param_id kFirstController = 2000;

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

inline v3_param_info infoOf(Vst3Instance& plugin, int position) {
    v3_param_info info{};
    EXPECT_EQ(v3_cpp_obj(plugin.controller)->get_parameter_info(plugin.controller, position, &info), V3_OK);
    return info;
}

inline std::string textOf(Vst3Instance& plugin, v3_param_id id, double position) {
    v3_str_128 text{};
    auto** const controller = plugin.controller;
    EXPECT_EQ(v3_cpp_obj(controller)->get_parameter_string_for_value(controller, id, position, text), V3_OK);
    return readText(text);
}

}  // namespace vanta::test
