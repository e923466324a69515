#include <gtest/gtest.h>
#include <sndfile.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <numeric>

#include "cli/command_line.hpp"
#include "foundation/realtime.hpp"
#include "host/offline/limiter_settings.hpp"
#include "limiter/parameters/parameter_table.hpp"
#include "tests/host/formats/format_host.hpp"
#include "tests/plugin/user_home.hpp"
#include "tests/support/realtime_trap.hpp"
#include "tests/support/sound_files.hpp"

namespace vanta::test {
namespace {

constexpr int kRate = 48000;
constexpr int kLargest = 1024;
constexpr std::size_t kLength = 40000;

int indexOf(std::string_view name) {
    for (std::size_t i = 0; i < kParameterTable.size(); ++i) {
        if (kParameterTable[i].name == name) return static_cast<int>(i);
    }
    throw std::logic_error(std::string(name));
}
const int kGain = indexOf("Gain");
const int kStyle = indexOf("Style");
const int kAttack = indexOf("Attack");
const int kDithering = indexOf("Dithering");
const int kBypass = indexOf("Bypass");
const int kOutputLevel = indexOf("Output Level");
const int kOversampling = indexOf("Oversampling");
const int kSideChain = indexOf("Side Chain Triggering");

/// Loud and quiet by turns, another in each channel.
Channels programme(int channels, std::size_t length = kLength) {
    Channels made;
    for (int c = 0; c < channels; ++c) {
        Signal signal = pinkNoise(static_cast<std::uint64_t>(c) + 5, length, 0.12);
        const Signal beats = bursts(180.0 + 70.0 * c, kRate, length, 2400, 5600, 0.6);
        std::ranges::transform(signal, beats, signal.begin(), std::plus<float>());
        made.push_back(std::move(signal));
    }
    return made;
}

/// What is played how.
struct Performance {
    std::function<int(int)> blockSize = [](int) { return kLargest; };  ///< of the nth block
    bool inPlace = false;
    const Channels* sideChain = nullptr;
    std::vector<FormatHost::Change> changes{};  ///< offsets from the start
};

Channels play(FormatHost& host, const Channels& input, const Performance& performance = {}) {
    Channels output = input;
    if (!performance.inPlace) {
        for (Signal& signal : output) std::ranges::fill(signal, 7.0f);
    }
    const Channels& source = performance.inPlace ? output : input;
    std::vector<const float*> inputs(input.size());
    std::vector<const float*> keys(performance.sideChain ? input.size() : 0);
    std::vector<float*> outputs(input.size());
    std::vector<FormatHost::Change> due;
    auto next = performance.changes.begin();
    const int length = static_cast<int>(input.front().size());
    for (int block = 0, begin = 0; begin < length; ++block) {
        const int samples = std::min(performance.blockSize(block), length - begin);
        for (std::size_t c = 0; c < input.size(); ++c) {
            inputs[c] = source[c].data() + begin;
            outputs[c] = output[c].data() + begin;
            if (performance.sideChain) keys[c] = (*performance.sideChain)[c].data() + begin;
        }
        due.clear();
        for (; next != performance.changes.end() && next->offset < begin + samples; ++next) {
            due.push_back({next->offset - begin, next->index, next->value});
        }
        host.process({.inputs = inputs,
                      .sideChain = keys,
                      .outputs = outputs,
                      .samples = samples,
                      .changes = due,
                      .midi = {}});
        host.idle();
        begin += samples;
    }
    return output;
}

double differenceDb(const Channels& a, const Channels& b) {
    double worst = -400.0;
    for (std::size_t c = 0; c < a.size(); ++c) worst = std::max(worst, nullDb(a[c], b[c]));
    return worst;
}

class FormatContract : public testing::TestWithParam<std::unique_ptr<FormatHost> (*)()> {
protected:
    std::unique_ptr<FormatHost> opened(ChannelLayout layout = kStereoLayout, bool sideChain = false) {
        auto host = GetParam()();
        EXPECT_TRUE(host->open(layout, kRate, kLargest, sideChain)) << channelLayoutName(layout);
        return host;
    }

    const UserHome home_;
};

TEST_P(FormatContract, AFileSoundsAsTheCommandRendersIt) {
    const Channels input = programme(2);
    const auto file = home_.path / "in.wav";
    const auto rendered = home_.path / "out.wav";
    writeSound(file, input, SF_FORMAT_WAV | SF_FORMAT_FLOAT, kRate);
    ASSERT_EQ(runCommandLine({"render", file, rendered, "--quiet", "--preset", "Default Setting", "--style",
                              "Aggressive", "--set", "Gain=9", "--set", "Oversampling=4x", "--set",
                              "Output Level=-1", "--set", "Attack=20"}),
              0);
    const Channels expected = readSound(rendered).channels;

    const auto host = opened();
    host->setValue(kStyle, labelIndex(kStyleNames, "Aggressive"));
    host->setValue(kGain, 9.0);
    host->setValue(kOversampling, 2.0);
    host->setValue(kOutputLevel, -1.0);
    host->setValue(kAttack, static_cast<double>(LimiterSettings().attack.fromDisplay(20.0f)));
    host->idle();
    ASSERT_TRUE(host->reactivate(kRate, kLargest));
    const auto latency = static_cast<std::size_t>(host->latency());
    Channels padded = input;
    for (Signal& signal : padded) signal.resize(kLength + latency);
    Channels output = play(*host, padded);
    for (Signal& signal : output) signal.erase(signal.begin(), signal.begin() + static_cast<long>(latency));
    EXPECT_LT(differenceDb(output, expected), -140.0);
}

TEST_P(FormatContract, BlocksOfAnySizeInPlaceOrNotSoundTheSameInEveryLayout) {
    const std::vector<ChannelLayout> layouts = GetParam()()->traits().layouts;
    for (const ChannelLayout layout : layouts) {
        SCOPED_TRACE(channelLayoutName(layout));
        const Channels input = programme(channelCount(layout), 12000);
        const auto run = [&](const Performance& performance) {
            const auto host = opened(layout);
            host->setValue(kGain, 12.0);
            host->idle();
            return play(*host, input, performance);
        };
        const Channels whole = run({});
        Random random(3);
        const auto sizes = [&](int) { return random.between(0, 9) == 0 ? 0 : random.between(1, 3000); };
        EXPECT_EQ(differenceDb(run({.blockSize = sizes, .inPlace = true}), whole), -400.0);
    }
}

TEST_P(FormatContract, AutomationTakesEffectAtItsSample) {
    const Channels input = programme(2);
    std::vector<FormatHost::Change> changes;
    for (const int offset : {1, 700, 1777, 5000, 5001, 9999, 20480, 33333}) {
        changes.push_back({offset, kGain, 0.0007 * offset});
        changes.push_back({offset, kOutputLevel, -0.0003 * offset});
    }
    const auto run = [&](const std::function<int(int)>& blockSize) {
        const auto host = opened();
        return play(*host, input, {.blockSize = blockSize, .changes = changes});
    };
    // Where blocks begin with the changes, no format can say it otherwise.
    std::vector<int> sizes;
    int begin = 0;
    for (const auto& change : changes) {
        if (change.offset > begin) sizes.push_back(change.offset - begin);
        begin = change.offset;
    }
    const auto cut = run([&](int block) {
        return block < static_cast<int>(sizes.size()) ? sizes[static_cast<std::size_t>(block)] : kLargest;
    });
    // The others say it in blocks of one sample; what glides may then round otherwise.
    const bool exact = GetParam()()->traits().isSampleAccurate;
    EXPECT_LE(differenceDb(run([exact](int) { return exact ? 8192 : 1; }), cut), exact ? -400.0 : -130.0);
}

TEST_P(FormatContract, AStateHoldsEveryValueAndNoiseIsRefused) {
    Random random(11);
    const auto first = opened();
    for (int i = 0; i < first->parameterCount(); ++i) {
        const ParameterValues& values = kParameterTable[static_cast<std::size_t>(i)].values;
        const double at = 0.5 * (random.bipolar() + 1.0);
        const double value = values.minimum + at * static_cast<double>(values.maximum - values.minimum);
        const bool stepped = values.kind != ParameterValues::Kind::Number;
        first->setValue(i, stepped ? std::floor(value + 0.5) : value);
    }
    first->setValue(kBypass, 0.0);
    first->setValue(kDithering, 0.0);  // never the same twice
    first->idle();
    const auto state = first->save(7);

    const auto second = opened();
    for (int round = 0; round < 3; ++round) {
        std::vector<std::byte> noise(1 << 20);
        for (std::byte& each : noise) each = static_cast<std::byte>(random.next());
        EXPECT_FALSE(second->restore(noise, 4096));
    }
    EXPECT_FALSE(second->restore(std::span(state).first(state.size() / 3)));
    ASSERT_TRUE(second->restore(state, 3));
    second->idle();
    for (int i = 0; i < first->parameterCount(); ++i) {
        const ParameterValues& values = kParameterTable[static_cast<std::size_t>(i)].values;
        EXPECT_NEAR(second->value(i), first->value(i),
                    1e-6 * static_cast<double>(values.maximum - values.minimum))
            << kParameterTable[static_cast<std::size_t>(i)].name;
    }
    ASSERT_TRUE(first->reactivate(kRate, kLargest));
    ASSERT_TRUE(second->reactivate(kRate, kLargest));
    EXPECT_EQ(second->latency(), first->latency());
    const Channels input = programme(2, 8000);
    EXPECT_EQ(differenceDb(play(*second, input), play(*first, input)), -400.0);
}

TEST_P(FormatContract, TheLatencyHoldsWhenAudioRunsBypassedOrNot) {
    const auto host = opened();
    const Channels input = {impulse(12000, 100, 0.1), impulse(12000, 100, 0.1)};
    for (const double oversampling : {0.0, 3.0, 1.0}) {
        for (const double bypass : {0.0, 1.0}) {
            host->setValue(kBypass, 0.0);
            host->setValue(kOversampling, oversampling);
            host->setValue(kBypass, bypass);
            host->idle();
            play(*host, {Signal(12000), Signal(12000)});
            const Channels output = play(*host, input);
            const auto peakAt = std::ranges::max_element(output[1]) - output[1].begin();
            EXPECT_EQ(peakAt, 100 + host->latency())
                << "oversampling " << oversampling << " bypass " << bypass;
        }
    }
}

TEST_P(FormatContract, ASideChainIsHeardOnlyWhereItIsConnected) {
    const Channels quiet = {sine(300, kRate, 24000, 0.05), sine(300, kRate, 24000, 0.05)};
    const Channels loud = {sine(90, kRate, 24000, 0.9), sine(90, kRate, 24000, 0.9)};
    const auto level = [&](const Channels* key) {
        const auto host = opened(kStereoLayout, key != nullptr);
        host->setValue(kGain, 18.0);
        host->setValue(kSideChain, 1.0);
        host->idle();
        return amplitudeAt(std::span(play(*host, quiet, {.sideChain = key})[0]).subspan(12000),
                           300.0 / kRate);
    };
    EXPECT_NEAR(db(level(nullptr) / 0.05), 18.0, 0.1);
    EXPECT_NEAR(db(level(&loud) / 0.05), 18.0 - 17.1, 1.0);
}

TEST_P(FormatContract, AnOfflineRenderEqualsRealTime) {
    const Channels input = programme(2);
    const auto run = [&](bool offline) {
        const auto host = opened();
        host->setValue(kGain, 6.0);
        host->setValue(kStyle, labelIndex(kStyleNames, "Dynamic"));
        host->idle();
        host->setOffline(offline);
        EXPECT_TRUE(host->reactivate(kRate, kLargest));
        return play(*host, input, {.changes = {{15000, kGain, 11.0}, {30000, kBypass, 1.0}}});
    };
    EXPECT_EQ(differenceDb(run(true), run(false)), -400.0);
}

TEST_P(FormatContract, TheAudioThreadLeavesTheSystemAlone) {
    const auto host = opened(kStereoLayout, true);
    Channels signal = programme(2, 512);
    const Channels key = programme(2, 512);
    float* const outputs[] = {signal[0].data(), signal[1].data()};
    const float* const inputs[] = {outputs[0], outputs[1]};
    const float* const keys[] = {key[0].data(), key[1].data()};
    const auto round = [&](int n) {
        const FormatHost::Change changes[] = {{5, kGain, 0.02 * n}, {200, kOutputLevel, -0.01 * n}};
        const FormatHost::Midi midi[] = {{9, {0xB0, 7, static_cast<std::uint8_t>(n % 128)}}};
        host->process({.inputs = inputs,
                       .sideChain = keys,
                       .outputs = outputs,
                       .samples = 512,
                       .changes = changes,
                       .midi = midi});
    };
    for (int n = 0; n < 50; ++n) round(n);
    RealtimeTrap trap;
    {
        const RealtimeScope realtime;
        for (int n = 0; n < 200; ++n) round(n);
    }
    EXPECT_EQ(trap.total(), 0) << trap.report();
}

INSTANTIATE_TEST_SUITE_P(Formats, FormatContract, testing::Values(&makeClapHost, &makeVst3Host, &makeLv2Host),
                         [](const auto& tested) { return tested.param()->traits().name; });

}  // namespace
}  // namespace vanta::test
