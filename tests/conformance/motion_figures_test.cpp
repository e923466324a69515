// What is heard and shown at the moment of a change. VANTA_VERBOSE=1 prints the figures.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include "foundation/numbers.hpp"
#include "tests/conformance/motion.hpp"
#include "tests/support/realtime_trap.hpp"

namespace vanta::test {
namespace {

constexpr double kRate = 44100.0;
constexpr float kGainDb = 12.0f;
const double kMakeup = gainFromDb(double{kGainDb} - 0.001);

std::size_t atMs(double ms, double rate = kRate) {
    return static_cast<std::size_t>(std::lround(ms * rate / 1000.0));
}
Channels tone(double frequency, double ms, double amplitude, std::size_t channels = 2) {
    return Channels(channels, sine(frequency, kRate, atMs(ms), amplitude));
}
Channels steady(double ms, float value) {
    return Channels(2, Signal(atMs(ms), value));
}
void append(const wave::Producer& from, std::size_t count, Signal& to) {
    to.insert(to.end(), from.current().data(), from.current().data() + count);
}

class InMotion : public testing::TestWithParam<Style> {
protected:
    std::string of(const std::string& what) const { return what + ", " + nameOf(GetParam()); }
};
INSTANTIATE_TEST_SUITE_P(Styles, InMotion, testing::ValuesIn(kStyles),
                         [](const auto& instance) { return nameOf(instance.param); });

TEST_P(InMotion, UnityGainNeverLetsOutMoreThanCameIn) {
    for (const float from : {30.0f, 0.0f}) {
        LimiterRig rig({.style = GetParam(), .gainDb = from, .further = with({{"Unity Gain", 1}})});
        const Channels in = tone(1000.0, 800.0, gainFromDb(-26.0));
        const double above = db(peak(playChanging(rig, in, {{atMs(400.0), {"Gain", 30.0f - from}}}))) + 26.0;
        figure(of(fmt::format("Unity Gain, Gain {} to {}", from, 30.0f - from)), above, "dB above the input");
        EXPECT_LT(above, 0.01);
    }
}

TEST_P(InMotion, OutputLevelLoweredAddsNoHarmonics) {
    for (const int index : {0, 2}) {
        LimiterRig rig({.style = GetParam(), .oversamplingIndex = index, .truePeak = index == 0});
        const Signal out =
            playChanging(rig, tone(100.0, 900.0, 0.98), {{atMs(400.0), {"Output Level", -3.0f}}})[0];
        double worst = -400.0;
        for (std::size_t at = atMs(380.0); at < atMs(600.0); at += atMs(10.0)) {
            const auto part = std::span(out).subspan(at, atMs(100.0));
            worst = std::max(worst, db(amplitudeAt(part, 300.0 / kRate) / amplitudeAt(part, 100.0 / kRate)));
        }
        figure(of(index == 0 ? "Output Level -3 dB, true peak" : "Output Level -3 dB, 4x"), worst,
               "dB, third harmonic");
        EXPECT_LT(worst, -80.0);
    }
}

TEST_P(InMotion, LookaheadLoweredLetsNothingThroughWhateverTheBlockSize) {
    constexpr int kLow = 3;  // of 127, 0.12 ms
    const Channels in(2, bursts(441.0, kRate, atMs(900.0), atMs(30.0), atMs(17.0), 0.9));
    const auto render = [&](float first, int position, int block) {
        const LimiterSetup setup{.style = GetParam(),
                                 .gainDb = 6.0f,
                                 .outputLevelDb = -1.0f,
                                 .further = with({{"Lookahead", first}})};
        return playMoving(setup, in, std::array{Move{atMs(400.0), indexOf("Lookahead"), position}},
                          std::array{block})[0];
    };
    const Signal moving = render(5.0f, kLow, 8192), a = render(5.0f, 127, 8192),
                 b = render(5.0f * kLow / 127.0f, kLow, 8192);
    double apart = -400.0, louder = 0.0;
    for (const int block : {1, 64, 1024}) apart = std::max(apart, nullDb(moving, render(5.0f, kLow, block)));
    for (std::size_t i = 0; i < moving.size(); ++i) {
        const float rest = std::max(std::abs(a[i]), std::abs(b[i]));
        louder = std::max(louder, double{std::abs(moving[i]) - rest});
    }
    figure(of("Lookahead lowered, blocks of 1 to 8192"), apart, "dB apart");
    figure(of("Lookahead lowered, louder than both rests"), db(louder), "dB");
    EXPECT_LT(apart, -110.0);
    // Nothing passes the engine's ceiling; what is left is how the release has gone on meanwhile.
    EXPECT_LT(db(louder), -60.0);
}

/// `signal` at `place`, between its samples by a cubic through four of them.
double between(const Signal& signal, double place) {
    const auto i = static_cast<std::size_t>(place);
    const double t = place - static_cast<double>(i);
    const double a = signal[i - 1], b = signal[i], c = signal[i + 1], d = signal[i + 2];
    return b + 0.5 * t * (c - a + t * (2 * a - 5 * b + 4 * c - d + t * (3 * (b - c) + d - a)));
}

/// What is left of the output without the dry signal times the gain that is shown `early` samples before, in
/// dB: for each eighth of a sample from -2 to 2.
std::vector<double> residuals(const LimiterSetup& setup) {
    LimiterRig rig(setup);
    Signal in = sine(1900.0, setup.rate, atMs(250.0, setup.rate), 0.45), dry, gain;
    const Signal loudness = sine(90.0, setup.rate, in.size());
    for (std::size_t i = 0; i < in.size(); ++i) in[i] *= 1.0f + loudness[i];
    const Signal out = playChanging(rig, {in}, {}, {}, [&](std::size_t count) {
        append(rig.limiter().channel(0).drySignal(), count, dry);
        append(rig.limiter().channel(0).totalGain(), count, gain);
    })[0];
    std::vector<double> found;
    for (double early = -2.0; early <= 2.0; early += 0.125) {
        double sum = 0.0, whole = 0.0;
        for (std::size_t i = atMs(150.0, setup.rate); i + 4 < out.size(); ++i) {
            const double heard = static_cast<double>(out[i]) / kMakeup;
            const double left =
                heard - static_cast<double>(dry[i]) * between(gain, static_cast<double>(i) - early);
            sum += left * left;
            whole += heard * heard;
        }
        found.push_back(10.0 * std::log10(sum / whole + 1e-20));
    }
    return found;
}

TEST(GainInMotion, IsShownWhenItIsHeard) {
    for (const double rate : {44100.0, 48000.0, 96000.0, 192000.0}) {
        for (const int index : {0, 1, 2, 3, 4, 5}) {
            double early = 0.0, asItIs = -400.0;
            for (const Style style : {Style::Transparent, Style::Dynamic, Style::Bus}) {
                for (const bool truePeak : {false, true}) {
                    const auto left =
                        residuals({.style = style,
                                   .oversamplingIndex = index,
                                   .truePeak = truePeak,
                                   .gainDb = kGainDb,
                                   .rate = rate,
                                   .layout = kMonoLayout,
                                   .further = with({{"Lookahead", 2.0f}, {"Release", 0.143f}})});
                    const double best =
                        0.125 * static_cast<double>(std::ranges::min_element(left) - left.begin()) - 2.0;
                    if (std::abs(best) > std::abs(early)) early = best;
                    asItIs = std::max(asItIs, left[16]);
                }
            }
            const std::string at = fmt::format("Gain shown, {} Hz {}x", rate, 1 << index);
            figure(at, early, fmt::format("samples early, {:.1f} dB left", asItIs).c_str());
            // The smallest gain of each group is shown, which of a falling one is the last.
            EXPECT_LE(std::abs(early), 0.25) << at;
            EXPECT_LT(asItIs, index == 0 ? -110.0 : -52.0) << at;
        }
    }
}

TEST_P(InMotion, ASideChainThatRestedStartsAnew) {
    const Channels quiet = tone(500.0, 500.0, 0.05);
    LimiterRig rig({.style = GetParam(),
                    .gainDb = kGainDb,
                    .further = with({{"Filter DC Offset", 1}, {"Side Chain Triggering", 1}})});
    rig.process(steady(500.0, 0.0f), 512, steady(500.0, 0.9f));
    set(rig.limiter(), {"Side Chain Triggering", 0});
    const Signal rest = rig.process(quiet, 512, steady(500.0, 0.9f))[0];
    set(rig.limiter(), {"Side Chain Triggering", 1});
    const Signal out = rig.process(quiet, 512, steady(500.0, 0.0f))[0];
    // The engine lets go of what it has limited in its own time.
    const double before = rms(std::span(rest).last(atMs(10.0)));
    double lowest = 0.0;
    for (std::size_t at = 0; at + atMs(10.0) < out.size(); at += atMs(2.0)) {
        lowest = std::min(lowest, db(rms(std::span(out).subspan(at, atMs(10.0))) / before));
    }
    figure(of("Side chain back after an offset"), -lowest, "dB of reduction from nothing");
    EXPECT_GT(lowest, -0.02);
}

TEST(BypassInMotion, OutlivesAChangeOfLatency) {
    for (const Value& change : {Value{"Style", 7}, {"True Peak Limiting", 1}, {"Oversampling", 2}}) {
        const Signal in = sine(100.0, kRate, atMs(1500.0), 0.7, 0.1);
        LimiterRig rig({.style = Style::Transparent, .further = with({{"Bypass", 1}})});
        RealtimeTrap trap;
        const std::size_t at = atMs(750.0);
        const Signal out = playChanging(rig, {in, in}, {{at, change}})[0];
        const int allocations = trap.count(RealtimeTrap::Kind::Allocation);
        int silent = 0, run = 0;
        for (std::size_t i = at; i < out.size(); ++i)
            silent = std::max(silent, run = out[i] == 0.0f ? run + 1 : 0);
        const double step = largestStep(out, at - 10);
        figure(fmt::format("{} changed while bypassed", change.name), silent,
               fmt::format("samples of silence, step of {:.3f}, {} allocations", step, allocations).c_str());
        EXPECT_LE(silent, 1) << change.name;
        EXPECT_LT(step, 1.5 * largestStep(in)) << change.name;
        // Another factor is another size of every block.
        EXPECT_TRUE(allocations == 0 || change.name == "Oversampling") << trap.report();
        for (std::size_t i = atMs(1400.0); i < out.size(); ++i) ASSERT_EQ(out[i], in[i - rig.latency()]);
    }
}

// A fade of 20 ms that is turned round after 5 has let a quarter of the other signal in, and no more.
TEST_P(InMotion, ASideChainSwitchedBackWithinItsFadeTurnsRoundWhereItStands) {
    const Channels in = steady(800.0, 0.05f), side = steady(800.0, 1.0f);
    for (const int index : {0, 1}) {
        const auto switched = [&](float before) {
            const std::string_view name = "Side Chain Triggering";
            LimiterRig rig({.style = GetParam(),
                            .oversamplingIndex = index,
                            .gainDb = kGainDb,
                            .further = with({{"Release", 0.0f}, {"Attack", 1.0f}, {name, before}})});
            Signal gain = playChanging(
                rig, in, {{atMs(400.0), {name, 1.0f - before}}, {atMs(405.0), {name, before}}}, side)[0];
            gain.erase(gain.begin(), gain.begin() + static_cast<std::ptrdiff_t>(atMs(300.0)));
            for (float& sample : gain) sample /= static_cast<float>(0.05 * kMakeup);
            return gain;
        };
        const Signal off = switched(1.0f), on = switched(0.0f);
        const double step = std::max(largestStep(off), largestStep(on));
        figure(of(fmt::format("Side chain off for 5 ms {}x, 0.25 rises to", 1 << index)),
               *std::ranges::max_element(off),
               fmt::format("largest step {:.4f}; on for 5 ms, 1 falls to {:.4f}", step,
                           *std::ranges::min_element(on))
                   .c_str());
        EXPECT_LT(*std::ranges::max_element(off), 1.05 * 0.251 / 0.75);
        EXPECT_GT(*std::ranges::min_element(on), 0.95 * 0.251 / (0.05 * 0.75 + 0.25));
        EXPECT_LT(step, 0.01);
    }
}

}  // namespace
}  // namespace vanta::test
