#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <stdexcept>
#include <string>
#include <vector>

#include "host/clap/clap_module.hpp"
#include "host/clap/clap_plugin.hpp"
#include "tests/host/clap/clap_host.hpp"
#include "tests/plugin/user_home.hpp"

namespace vanta::test {

inline constexpr double kRate = 48000.0;
inline constexpr std::uint32_t kLargest = 512;

inline clap_param_info_t info(const ClapHost& host, int index) {
    clap_param_info_t info{};
    EXPECT_TRUE(host.params().get_info(&host.plugin(), static_cast<std::uint32_t>(index), &info));
    return info;
}

inline int indexOf(const ClapHost& host, const std::string& name) {
    for (int i = 0; i < host.parameterCount(); ++i) {
        if (name == info(host, i).name) return i;
    }
    throw std::logic_error(name);
}

inline void expectValuesInRange(const ClapHost& host) {
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

/// Each with a home of its own.
class ClapTest : public testing::Test {
protected:
    UserHome home;
};

/// A module within the test, so that both ends of an instance can be seen.
class ClapInside : public ClapTest {
protected:
    explicit ClapInside(EmbeddedViewFactory views = {}) : module(std::move(views)) { module.enter(); }
    const clap_plugin_factory_t& factory() {
        return *static_cast<const clap_plugin_factory_t*>(module.factory(CLAP_PLUGIN_FACTORY_ID));
    }
    static HostedPlugin& hosted(const ClapHost& host) { return ClapPlugin::of(&host.plugin())->hosted(); }

    ClapModule module;
};

}  // namespace vanta::test
