#include <dlfcn.h>
#include <gtest/gtest.h>
#include <sndfile.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cmath>
#include <functional>
#include <thread>

#include "cli/command_line.hpp"
#include "foundation/realtime.hpp"
#include "host/offline/limiter_settings.hpp"
#include "limiter/parameters/parameter_table.hpp"
#include "tests/host/formats/performance.hpp"
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
    const Channels input = programme(2, kLength);
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

TEST_P(FormatContract, BlocksOfAnySizeInAnyBuffersSoundTheSameInEveryLayout) {
    const std::vector<ChannelLayout> layouts = GetParam()()->traits().layouts;
    for (const ChannelLayout layout : layouts) {
        SCOPED_TRACE(channelLayoutName(layout));
        const Channels input = programme(channelCount(layout), 12000);
        const auto run = [&](const Performance& performance) {
            const auto host = opened(layout);
            host->setValue(kGain, 12.0);
            host->idle();
            Channels all = play(*host, input, performance);
            // From here on it fades to what is not processed.
            host->setValue(kBypass, 1.0);
            host->idle();
            for (Signal& dry : play(*host, input, performance)) all.push_back(std::move(dry));
            return all;
        };
        const Channels whole = run({});
        Random random(3);
        const auto sizes = [&](int) { return random.between(0, 9) == 0 ? 0 : random.between(1, 3000); };
        EXPECT_EQ(differenceDb(run({.blockSize = sizes, .shared = 0}), whole), -400.0);
        EXPECT_EQ(differenceDb(run({.shared = 1}), whole), -400.0);
    }
}

/// The other of a left and a right. LCRS links its centres, which other layouts leave alone.
std::optional<std::size_t> partnerOf(ChannelLayout layout, std::size_t channel) {
    const int type = channelTypes(layout)[channel];
    if (type & kLeftChannel) return channel + 1;
    if (type & kRightChannel) return channel - 1;
    if (channelLayoutName(layout) == "LCRS") return 5 - channel;
    return {};
}

TEST_P(FormatContract, EveryChannelIsPlayedAsTheSpeakerThatItIs) {
    // Half of the linking joins the two of a pair and leaves all others alone: a loud channel turns down
    // its twin, by which one sees who is who.
    const std::vector<ChannelLayout> layouts = GetParam()()->traits().layouts;
    for (const ChannelLayout layout : layouts) {
        const auto host = opened(layout);
        host->setValue(indexOf("Channel Link Transients"), 0.5);
        host->setValue(indexOf("Channel Link Release"), 0.5);
        const auto channels = static_cast<std::size_t>(channelCount(layout));
        for (std::size_t loud = 0; loud < channels; ++loud) {
            const auto tone = [](std::size_t c) { return (600.0 + 150.0 * static_cast<double>(c)) / kRate; };
            Channels input;
            for (std::size_t c = 0; c < channels; ++c) {
                input.push_back(sine(tone(c), 1.0, 8192, c == loud ? 4.0 : 0.1));
            }
            ASSERT_TRUE(host->reactivate(kRate, kLargest));
            const Channels output = play(*host, input);
            for (std::size_t c = 0; c < channels; ++c) {
                const double expected = c == loud ? 1.0 : c == partnerOf(layout, loud) ? 0.025 : 0.1;
                EXPECT_NEAR(amplitudeAt(std::span(output[c]).subspan(4096), tone(c)), expected,
                            0.1 * expected)
                    << channelLayoutName(layout) << " loud " << loud << " in " << c;
            }
        }
    }
}

TEST_P(FormatContract, AutomationTakesEffectAtItsSample) {
    // The others say it in blocks of one sample; what glides may then round otherwise.
    const bool exact = GetParam()()->traits().isSampleAccurate;
    const Channels input = programme(2, kLength);
    std::vector<FormatHost::Change> changes;
    for (const int offset : {1, 700, 1777, 5000, 5001, 9999, 20480, 33333}) {
        changes.push_back({offset, kGain, 0.0007 * offset});
        changes.push_back({offset, kOutputLevel, -0.0003 * offset});
    }
    Random random(5);
    for (int i = 0; exact && i < 300; ++i) {
        const int index = std::array{0, 3, 4, 5, 6, 13, 17, 18}[static_cast<std::size_t>(i % 8)];
        const ParameterValues& values = kParameterTable[static_cast<std::size_t>(index)].values;
        const double at = random.between(0, 100) / 100.0;
        changes.push_back({random.between(0, kLength - 1), index,
                           std::lerp(double{values.minimum}, double{values.maximum}, at)});
    }
    std::ranges::stable_sort(changes, {}, &FormatHost::Change::offset);
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
    const auto untouched = second->save();
    for (int round = 0; round < 3; ++round) {
        std::vector<std::byte> noise(1 << 20);
        for (std::byte& each : noise) each = static_cast<std::byte>(random.next());
        EXPECT_FALSE(second->restore(noise, 4096));
    }
    for (std::size_t size = 0; size < state.size(); size += 7) {
        EXPECT_FALSE(second->restore(std::span(state).first(size))) << size;
    }
    EXPECT_EQ(second->save(), untouched);
    for (int round = 0; round < 100; ++round) {
        auto spoiled = state;
        for (int n = random.between(1, 4); n > 0; --n) {
            spoiled[static_cast<std::size_t>(random.between(0, static_cast<int>(state.size()) - 1))] =
                static_cast<std::byte>(random.next());
        }
        second->restore(spoiled, random.between(0, 9));
        EXPECT_TRUE(isFinite(play(*second, programme(2, 64))));
    }
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
    const Channels input = programme(2, kLength);
    if (!GetParam()()->traits().hasOfflineMode) GTEST_SKIP() << "there is none";
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
        const std::size_t count = host->traits().hasValuesInBlocks ? std::size(changes) : 0;
        host->process({inputs, keys, outputs, 512, std::span(changes).first(count), midi});
    };
    for (int n = 0; n < 50; ++n) round(n);
    RealtimeTrap trap;
    {
        const RealtimeScope realtime;
        for (int n = 0; n < 200; ++n) round(n);
    }
    EXPECT_EQ(trap.total(), 0) << trap.report();
}

TEST_P(FormatContract, AnyRateAndBlockSizeRunsOrIsRefused) {
    for (const double rate : {0.0, 7999.0, 768001.0, -48000.0, std::nan(""), 1e300}) {
        EXPECT_FALSE(GetParam()()->open(kStereoLayout, rate, kLargest, false)) << rate;
    }
    const auto host = opened();
    const Channels input = programme(2, 22000);
    constexpr std::array kSizes{1, 0, 7, 512, 4097, 16384};
    for (const double rate : {8000.0, 11025.0, 22254.5, 44100.0, 47999.7, 96000.0, 352800.0, 768000.0}) {
        for (const int largest : {1, 16384, 64}) {
            ASSERT_TRUE(host->reactivate(rate, largest)) << rate;
            const Channels output =
                play(*host, input,
                     {.blockSize = [&](int block) { return kSizes[static_cast<std::size_t>(block) % 6]; }});
            EXPECT_TRUE(isFinite(output)) << rate;
        }
    }
}

TEST_P(FormatContract, InstancesComeAndGoAndLiveSideBySide) {
    const Channels input = programme(2, 4000);
    const FormatHost::Traits traits = GetParam()()->traits();
    for (int round = 0; round < 1000; ++round) {
        {
            const auto host = GetParam()();
            if (round % 20 == 0) {
                const auto layout = static_cast<std::size_t>(round / 20) % traits.layouts.size();
                ASSERT_TRUE(host->open(traits.layouts[layout], kRate, kLargest, false));
            }
        }
        ASSERT_EQ(::dlopen(traits.module.c_str(), RTLD_NOLOAD | RTLD_NOW), nullptr) << "it goes whole";
    }
    std::vector<std::unique_ptr<FormatHost>> hosts;
    for (int i = 0; i < 200; ++i) {
        hosts.push_back(opened());
        hosts.back()->setValue(kGain, 5.0 * (i % 4));
        hosts.back()->idle();
    }
    for (std::size_t i = 0; i < hosts.size(); i += 2) hosts[i].reset();
    const Channels expected[] = {play(*hosts[1], input), play(*hosts[3], input)};
    EXPECT_GT(differenceDb(expected[0], expected[1]), -40.0);
    for (std::size_t i = 5; i < hosts.size(); i += 2) {
        EXPECT_EQ(differenceDb(play(*hosts[i], input), expected[i % 4 / 2]), -400.0) << i;
    }
}

TEST_P(FormatContract, OtherThreadsMayAskAndSetWhileAudioRuns) {
    const auto host = opened();
    if (!host->traits().hasCallsBesideBlocks) GTEST_SKIP() << "there are none";
    const auto state = host->save();
    std::atomic<bool> done{false};
    std::thread audio([&] {
        const Channels input = programme(2, 64);
        Channels output = input;
        const float* const inputs[] = {input[0].data(), input[1].data()};
        float* const outputs[] = {output[0].data(), output[1].data()};
        for (int n = 0; n < 1000; ++n) {
            const FormatHost::Change changes[] = {{n % 64, kGain, 0.01 * n}};
            const FormatHost::Midi midi[] = {{20, {0xB0, 7, static_cast<std::uint8_t>(n % 128)}}};
            host->process({inputs, {}, outputs, 64, changes, midi});
        }
        done = true;
    });
    std::vector<std::thread> others(2);
    for (std::thread& other : others) {
        other = std::thread([&] {
            for (int n = 0; !done; ++n) host->touch(n % kStyle, 0.5);
        });
    }
    for (int n = 0; !done; ++n) {
        EXPECT_FALSE(host->save().empty());
        EXPECT_GT(host->latency(), 0);
        EXPECT_TRUE(n % 7 != 0 || host->restore(state));
        host->callBack();
    }
    audio.join();
    for (std::thread& other : others) other.join();
    host->setValue(kGain, 15.0);
    play(*host, programme(2, 64));
    EXPECT_NEAR(host->value(kGain), 15.0, 1e-4);
}

INSTANTIATE_TEST_SUITE_P(Formats, FormatContract,
                         testing::Values(&makeClapHost, &makeVst3Host, &makeLv2Host, &makeAaxHost),
                         [](const auto& tested) { return tested.param()->traits().name; });

}  // namespace
}  // namespace vanta::test
