// What the limiter does at the moment of a change, fault by fault. VANTA_VERBOSE=1 prints the figures.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <numeric>
#include <sstream>

#include "foundation/binary_data.hpp"
#include "tests/support/motion.hpp"
#include "tests/support/realtime_trap.hpp"

namespace vanta::test {
namespace {

constexpr double kRate = 44100.0;
constexpr ChannelLayout k51 = 6;
constexpr double kMarginDb = 0.001;

std::size_t atMs(double ms, double rate = kRate) {
    return static_cast<std::size_t>(std::lround(ms * rate / 1000.0));
}

Signal constant(double seconds, double value) {
    return Signal(atMs(1000.0 * seconds), static_cast<float>(value));
}

class InMotion : public testing::TestWithParam<Style> {};
INSTANTIATE_TEST_SUITE_P(Styles, InMotion, testing::ValuesIn(kStyles),
                         [](const auto& instance) { return nameOf(instance.param); });

std::string named(const char* figure, Style style) {
    return fmt::format("{}, {}", figure, nameOf(style));
}

TEST_P(InMotion, UnityGainNeverLetsOutMoreThanCameIn) {
    const double toneDb = -26.0;
    const Channels in(2, sine(1000.0, kRate, atMs(800.0), gainFromDb(toneDb)));
    for (const auto& [from, to] : {std::pair(30.0f, 0.0f), {0.0f, 30.0f}}) {
        LimiterRig rig({.style = GetParam(), .gainDb = from, .further = [](VantaProcessor& limiter) {
                            limiter.unityGain.setMapped(true);
                        }});
        const Channels out = playChanging(
            rig, in, {{atMs(400.0), [to = to](VantaProcessor& limiter) { limiter.gain.setValue(to, 0); }}});
        const double above = db(peak(out)) - toneDb;
        figure(named(to > from ? "1 Unity Gain, Gain 0 to 30" : "1 Unity Gain, Gain 30 to 0", GetParam()),
               above, "dB above the tone");
        EXPECT_LT(above, 0.01);
    }
}

/// What a channel hands out beside its output, taken after each block.
void append(wave::Producer& from, std::size_t count, Signal& to) {
    to.insert(to.end(), from.current().data(), from.current().data() + count);
}

using Setting = std::function<void(VantaProcessor&)>;

/// The largest step of any channel's gain while tones play and a setting goes `from` one value `to` another
/// after `changeMs`, from then on.
double gainStep(Style style, ChannelLayout layout, std::size_t loud, const Setting& from, const Setting& to,
                double changeMs) {
    Channels in(static_cast<std::size_t>(channelCount(layout)), sine(441.0, kRate, atMs(500.0), 0.05));
    in[loud] = sine(130.0, kRate, atMs(500.0), 1.0);
    LimiterRig rig(
        {.style = style, .gainDb = 12.0f, .layout = layout, .further = [&](VantaProcessor& limiter) {
             limiter.channelLinkRelease.setValue(0.0f, 0);
             from(limiter);
         }});
    Channels gains(in.size());
    playChanging(rig, in, {{atMs(changeMs), to}}, 256, {}, [&](std::size_t, std::size_t count) {
        for (std::size_t c = 0; c < in.size(); ++c) {
            append(rig.limiter().channel(static_cast<int>(c)).totalGain(), count, gains[c]);
        }
    });
    double largest = 0.0;
    for (const Signal& gain : gains) largest = std::max(largest, largestStep(gain, atMs(300.0)));
    return largest;
}

TEST_P(InMotion, LinksDoNotStepTheGain) {
    // An envelope that glides from 0.05 to 1 within half of 20 ms passes the threshold of -12 dB, where the
    // gain falls four times as fast as it rises.
    constexpr double kGlide = 0.95 / 441.0 * 4.0;
    const auto transients = [](float value) -> Setting {
        return [=](VantaProcessor& limiter) { limiter.channelLinkTransients.setValue(value, 0); };
    };
    const auto center = [](float value) -> Setting {
        return [=](VantaProcessor& limiter) { limiter.channelLinkCenter.setValue(value, 0); };
    };
    const auto lfe = [](float value) -> Setting {
        return [=](VantaProcessor& limiter) {
            limiter.channelLinkTransients.setValue(1.0f, 0);
            limiter.channelLinkLfe.setValue(value, 0);
        };
    };
    const struct {
        const char* name;
        ChannelLayout layout;
        std::size_t loud;
        Setting off, on;
    } cases[] = {{"2 Transients 0 to 100 %, 5.1", k51, 0, transients(0.0f), transients(1.0f)},
                 {"2 Transients 0 to 50 %, stereo", kStereoLayout, 0, transients(0.0f), transients(0.5f)},
                 {"2 Center, 5.1", k51, 4, center(0.0f), center(1.0f)},
                 {"2 LFE, 5.1", k51, 0, lfe(0.0f), lfe(1.0f)}};
    for (const auto& [name, layout, loud, off, on] : cases) {
        const double rest = std::max(gainStep(GetParam(), layout, loud, off, off, 0.0),
                                     gainStep(GetParam(), layout, loud, on, on, 0.0));
        double step = 0.0;
        for (double ms = 320.0; ms < 329.0; ms += 0.7) {
            step = std::max({step, gainStep(GetParam(), layout, loud, off, on, ms),
                             gainStep(GetParam(), layout, loud, on, off, ms)});
        }
        figure(named(name, GetParam()), step,
               fmt::format("of gain, largest step (at rest {:.4f})", rest).c_str());
        EXPECT_LT(step, 1.1 * rest + kGlide) << name;
    }
}

TEST_P(InMotion, OutputLevelLoweredAddsNoHarmonics) {
    const Channels in(2, sine(100.0, kRate, atMs(900.0), 0.98));
    for (const int index : {0, 2}) {
        LimiterRig rig({.style = GetParam(), .oversamplingIndex = index, .truePeak = index == 0});
        const Channels out = playChanging(
            rig, in,
            {{atMs(400.0), [](VantaProcessor& limiter) { limiter.outputLevel.setValue(-3.0f, 0); }}});
        double worst = -400.0;
        for (std::size_t at = atMs(380.0); at < atMs(600.0); at += atMs(10.0)) {
            const auto window = std::span(out[0]).subspan(at, atMs(100.0));
            worst =
                std::max(worst, db(amplitudeAt(window, 300.0 / kRate) / amplitudeAt(window, 100.0 / kRate)));
        }
        figure(named(index == 0 ? "3 Output Level -3 dB, true peak" : "3 Output Level -3 dB, 4x", GetParam()),
               worst, "dB, third harmonic of 100 Hz");
        EXPECT_LT(worst, -80.0);
    }
}

/// How far `x` leaves the space between two rests, in dB of full scale.
double outsideDb(const Channels& x, const Channels& a, const Channels& b) {
    double largest = 0.0;
    for (std::size_t c = 0; c < x.size(); ++c) {
        for (std::size_t i = 0; i < x[c].size(); ++i) {
            const auto [low, high] = std::minmax(a[c][i], b[c][i]);
            largest =
                std::max({largest, static_cast<double>(x[c][i]) - high, static_cast<double>(low) - x[c][i]});
        }
    }
    return db(largest);
}

TEST_P(InMotion, LookaheadLoweredStaysBetweenItsRestsWhateverTheBlockSize) {
    const Channels in(2, sine(441.0, kRate, atMs(900.0), 0.9));
    const auto render = [&](float first, int position, int block) {
        LimiterSetup setup{.style = GetParam(), .gainDb = 6.0f, .outputLevelDb = -1.0f};
        setup.further = [=](VantaProcessor& limiter) { limiter.lookahead.setValue(first, 0); };
        LimiterRig rig(setup);
        const Move move{atMs(400.0), rig.limiter().lookahead.index(), position};
        return playMoving(rig, in, std::span(&move, 1), block);
    };
    constexpr int kLow = 3;  // 0.12 ms
    const Channels moving = render(5.0f, kLow, 8192);
    double differ = -400.0;
    for (const int block : {1, 64, 1024})
        differ = std::max(differ, nullDb(moving, render(5.0f, kLow, block)));
    figure(named("4 Lookahead lowered, blocks of 1 to 8192", GetParam()), differ, "dB apart");
    EXPECT_LT(differ, -130.0);
    const double outside =
        outsideDb(moving, render(5.0f, 127, 8192), render(5.0f * kLow / 127.0f, kLow, 8192));
    figure(named("4 Lookahead lowered, outside of both rests", GetParam()), outside, "dB");
    EXPECT_LT(outside, -100.0);
    EXPECT_LE(db(peak(moving)), -1.0);
}

TEST_P(InMotion, SwitchesInsideALargeBlockSoundAsInSmallOnes) {
    const Channels in = {whiteNoise(1, 40000, 0.8), whiteNoise(2, 40000, 0.8)};
    const Channels side = {whiteNoise(3, 40000, 0.9), whiteNoise(4, 40000, 0.2)};
    const VantaProcessor table(kStereoLayout);
    for (const AbstractPluginParameter* parameter :
         {static_cast<const AbstractPluginParameter*>(&table.bypass),
          static_cast<const AbstractPluginParameter*>(&table.sideChainTriggering)}) {
        const auto render = [&](int block) {
            LimiterRig rig({.style = GetParam(), .gainDb = 9.0f, .further = [](VantaProcessor& limiter) {
                                limiter.setSideChainInUse(true);
                            }});
            const int p = parameter->index();
            const Move moves[] = {
                {4096, p, 127}, {8192 + 4096, p, 0}, {8192 + 4500, p, 127}, {3 * 8192 + 10, p, 0}};
            return playMoving(rig, in, moves, block, side);
        };
        const std::size_t differ = differingSamples(render(64), render(8192));
        figure(named(("5 " + parameter->name() + " switched inside 8192").c_str(), GetParam()),
               static_cast<double>(differ), "samples differ");
        EXPECT_EQ(differ, 0u) << parameter->name();
    }
}

/// `signal` at `place`, between its samples by a cubic through four of them.
double between(const Signal& signal, double place) {
    const auto i = static_cast<std::size_t>(place);
    const double t = place - static_cast<double>(i);
    const double a = signal[i - 1], b = signal[i], c = signal[i + 1], d = signal[i + 2];
    return b + 0.5 * t * (c - a + t * (2 * a - 5 * b + 4 * c - d + t * (3 * (b - c) + d - a)));
}

/// How many samples the gain that is shown stands before the gain that is heard, and what is left of the
/// output if the dry signal times that gain is taken from it, in dB: as it is, and moved to where it fits
/// best.
struct Fit {
    double early, asItIsDb, atBestDb;
};

Fit fitOf(const LimiterSetup& setup) {
    LimiterRig rig(setup);
    Signal in = sine(1900.0, setup.rate, atMs(250.0, setup.rate), 0.45);
    const Signal loudness = sine(90.0, setup.rate, in.size());
    for (std::size_t i = 0; i < in.size(); ++i) in[i] *= 1.0f + loudness[i];
    Signal dry, gain;
    const Channels out = playChanging(rig, {in}, {}, 256, {}, [&](std::size_t, std::size_t count) {
        append(rig.limiter().channel(0).drySignal(), count, dry);
        append(rig.limiter().channel(0).totalGain(), count, gain);
    });
    const double makeup = gainFromDb(static_cast<double>(setup.gainDb) - kMarginDb);
    const auto residualDb = [&](double late) {
        double sum = 0.0, whole = 0.0;
        for (std::size_t i = atMs(150.0, setup.rate); i + 4 < out[0].size(); ++i) {
            const double heard = static_cast<double>(out[0][i]) / makeup;
            const double shown = static_cast<double>(dry[i]) * between(gain, static_cast<double>(i) - late);
            sum += (heard - shown) * (heard - shown);
            whole += heard * heard;
        }
        return 10.0 * std::log10(sum / whole + 1e-20);
    };
    Fit fit{0.0, residualDb(0.0), residualDb(0.0)};
    for (double late = -2.0; late <= 2.0; late += 0.125) {
        const double residual = residualDb(late);
        if (residual < fit.atBestDb) fit = {late, fit.asItIsDb, residual};
    }
    return fit;
}

TEST(GainInMotion, IsShownWhenItIsHeard) {
    for (const double rate : {44100.0, 48000.0, 96000.0, 192000.0}) {
        for (const int index : {0, 1, 2, 3, 4, 5}) {
            Fit worst{0.0, -400.0, -400.0};
            for (const Style style : {Style::Transparent, Style::Dynamic, Style::Bus}) {
                for (const bool truePeak : {false, true}) {
                    const Fit fit =
                        fitOf({.style = style,
                               .oversamplingIndex = index,
                               .truePeak = truePeak,
                               .gainDb = 12.0f,
                               .rate = rate,
                               .layout = kMonoLayout,
                               .further = [](VantaProcessor& limiter) {
                                   limiter.lookahead.setValue(2.0f, 0);
                                   limiter.release.setValue(limiter.release.fromDisplay(20.0f), 0);
                               }});
                    if (std::abs(fit.early) >= std::abs(worst.early)) worst.early = fit.early;
                    worst.asItIsDb = std::max(worst.asItIsDb, fit.asItIsDb);
                    worst.atBestDb = std::max(worst.atBestDb, fit.atBestDb);
                }
            }
            const std::string at = fmt::format("6 gain shown, {} Hz {}x", rate, 1 << index);
            figure(at + ", early by", worst.early, "samples");
            figure(at + ", residual as it is", worst.asItIsDb, "dB");
            figure(at + ", residual at best fit", worst.atBestDb, "dB");
            // The smallest gain of each group is shown, which of a falling one is the last.
            EXPECT_LE(std::abs(worst.early), 0.5) << at;
            EXPECT_LT(worst.asItIsDb, index == 0 ? -110.0 : -48.0) << at;
        }
    }
}

TEST_P(InMotion, ASideChainThatRestedStartsAnew) {
    const Channels in(2, constant(1.0, 0.0)), quiet(2, sine(500.0, kRate, atMs(500.0), 0.05));
    const Channels offset(2, constant(1.0, 0.9)), silence(2, constant(1.0, 0.0));
    for (const bool delivered : {false, true}) {
        LimiterRig rig({.style = GetParam(), .gainDb = 12.0f, .further = [](VantaProcessor& limiter) {
                            limiter.filterDcOffset.setMapped(true);
                            limiter.sideChainTriggering.setMapped(true);
                            limiter.setSideChainInUse(true);
                        }});
        rig.process(in, 512, offset);
        rig.limiter().sideChainTriggering.setMapped(false);
        rig.process(quiet, 512, delivered ? offset : silence);
        rig.process(quiet, 512, silence);
        rig.limiter().sideChainTriggering.setMapped(true);
        const Channels out = rig.process(quiet, 512, silence);
        double lowest = 0.0;
        for (std::size_t at = 0; at + atMs(10.0) < out[0].size(); at += atMs(2.0)) {
            lowest = std::min(lowest, db(rms(std::span(out[0]).subspan(at, atMs(10.0)))) -
                                          db(rms(std::span(quiet[0]).first(atMs(10.0)))) - 12.0 + kMarginDb);
        }
        figure(named(delivered ? "7 side chain after an offset, delivered at rest"
                               : "7 side chain after an offset",
                     GetParam()),
               -lowest, "dB of reduction from nothing");
        EXPECT_LT(-lowest, 0.02);
    }
}

TEST(BypassInMotion, OutlivesAChangeOfLatency) {
    const std::tuple<const char*, bool, void (*)(VantaProcessor&)> cases[] = {
        {"style", true, [](VantaProcessor& limiter) { limiter.style.setMapped(Style::Safe); }},
        {"true peak", true, [](VantaProcessor& limiter) { limiter.truePeakLimiting.setMapped(true); }},
        {"oversampling", false, [](VantaProcessor& limiter) { limiter.oversampling.setValue(2, 0); }}};
    for (const auto& [name, standsOnNothing, change] : cases) {
        const Channels in(2, sine(100.0, kRate, atMs(1500.0), 0.7, 0.1));
        LimiterRig rig({.style = Style::Transparent,
                        .further = [](VantaProcessor& limiter) { limiter.bypass.setMapped(true); }});
        RealtimeTrap trap;
        const std::size_t at = atMs(750.0);
        const Channels out = playChanging(rig, in, {{at, [&, make = change](VantaProcessor& limiter) {
                                                         trap.clear();
                                                         make(limiter);
                                                     }}});
        const int allocations = trap.count(RealtimeTrap::Kind::Allocation);
        std::size_t silent = 0, run = 0;
        for (std::size_t i = at; i < out[0].size(); ++i)
            silent = std::max(silent, run = out[0][i] == 0.0f ? run + 1 : 0);
        const auto of = [&, what = name](const char* measured) {
            return fmt::format("8 bypassed, {} changed, {}", what, measured);
        };
        figure(of("longest silence"), static_cast<double>(silent), "samples");
        figure(of("largest step"), largestStep(out[0], atMs(700.0)), "");
        figure(of("allocations"), allocations, "");
        EXPECT_LE(silent, 1u) << name;
        EXPECT_LT(largestStep(out[0], atMs(700.0)), 1.5 * largestStep(in[0])) << name;
        EXPECT_TRUE(allocations == 0 || !standsOnNothing) << trap.report();
        // And in the end it is the input, late by the new latency.
        for (std::size_t i = atMs(1400.0); i < out[0].size(); ++i)
            ASSERT_EQ(out[0][i], in[0][i - rig.latency()]);
    }
}

// A fade of 20 ms that is turned round after 5 has let a quarter of the other signal in, and no more.
TEST_P(InMotion, ASideChainSwitchedBackWithinItsFadeTurnsRoundWhereItStands) {
    constexpr double kQuiet = 0.05, kGainDb = 12.0, kHeldMs = 5.0, kFadeMs = 20.0;
    const Channels in(2, constant(1.0, kQuiet)), side(2, constant(1.0, 1.0));
    for (const int index : {0, 1}) {
        const auto gainOf = [&](bool before, std::vector<double> turnsMs) {
            LimiterRig rig({.style = GetParam(),
                            .oversamplingIndex = index,
                            .gainDb = kGainDb,
                            .further = [before](VantaProcessor& limiter) {
                                limiter.sideChainTriggering.setMapped(before);
                                limiter.release.setValue(limiter.release.fromDisplay(1.0f), 0);
                                limiter.attack.setValue(limiter.attack.fromDisplay(1000.0f), 0);
                                limiter.setSideChainInUse(true);
                            }});
            std::vector<Change> changes;
            for (const double ms : turnsMs) {
                before = !before;
                changes.push_back({atMs(ms), [before](VantaProcessor& limiter) {
                                       limiter.sideChainTriggering.setMapped(before);
                                   }});
            }
            Signal gain = playChanging(rig, in, changes, 256, side)[0];
            for (float& sample : gain) sample /= static_cast<float>(kQuiet * gainFromDb(kGainDb - kMarginDb));
            return gain;
        };
        const auto range = [](const Signal& gain) {
            const auto [low, high] = std::minmax_element(gain.begin() + 13230, gain.end());
            return std::pair(static_cast<double>(*low), static_cast<double>(*high));
        };
        const double threshold = gainFromDb(-kGainDb);
        const Signal off = gainOf(true, {400.0, 400.0 + kHeldMs}),
                     on = gainOf(false, {400.0, 400.0 + kHeldMs});
        const auto of = [&](const char* name) {
            return named(fmt::format("9 {}, {}x", name, 1 << index).c_str(), GetParam());
        };
        figure(of("side chain off for 5 ms, gain rises to"), range(off).second, "");
        figure(of("side chain on for 5 ms, gain falls to"), range(on).first, "");
        figure(of("side chain switched back, largest step"),
               std::max(largestStep(off, 13230), largestStep(on, 13230)), "of gain");
        const double part = kHeldMs / kFadeMs;
        EXPECT_LT(range(off).second, 1.05 * threshold / (1.0 - part));
        EXPECT_GT(range(on).first, 0.95 * threshold / (kQuiet * (1.0 - part) + part));
        EXPECT_LT(std::max(largestStep(off, 13230), largestStep(on, 13230)), 0.01);
    }
}

float reading(LimiterRig& rig, int source, wave::LevelSource::Info info) {
    return rig.limiter().levels()[static_cast<std::size_t>(source)]->value(info);
}

std::string visualData(LimiterRig& rig) {
    std::ostringstream stream;
    BinaryDataWriter writer(stream);
    rig.limiter().writeVisualData(writer);
    return stream.str();
}

TEST(MetersInMotion, TruePeakMeteringSwitchedOnInventsNoOver) {
    double worst = -400.0;
    for (std::size_t at = 20000; at < 20090; at += 3) {
        LimiterRig rig({.style = Style::Transparent, .further = [](VantaProcessor& limiter) {
                            limiter.truePeakMetering.setMapped(false);
                        }});
        const Channels in(2, sine(997.0, kRate, 30000, gainFromDb(-0.45)));
        playChanging(rig, in,
                     {{at, [](VantaProcessor& limiter) { limiter.truePeakMetering.setMapped(true); }}});
        worst = std::max(worst, static_cast<double>(reading(rig, levelPosition(0, ChannelLevel::OutputPeak),
                                                            wave::LevelSource::Extreme)));
    }
    figure("10 True Peak Metering switched on, tone at -0.45 dB, meter shows", worst, "dB");
    EXPECT_LT(worst, -0.40);
}

TEST(MetersInMotion, TheIntegratedLoudnessGoesOn) {
    const std::pair<const char*, void (*)(VantaProcessor&)> cases[] = {
        {"style", [](VantaProcessor& limiter) { limiter.style.setMapped(Style::Safe); }},
        {"true peak", [](VantaProcessor& limiter) { limiter.truePeakLimiting.setMapped(true); }},
        {"oversampling", [](VantaProcessor& limiter) { limiter.oversampling.setValue(1, 0); }},
        {"bypass", [](VantaProcessor& limiter) { limiter.bypass.setMapped(true); }},
        {"end of bypass", [](VantaProcessor& limiter) { limiter.bypass.setMapped(false); }}};
    LimiterRig rig({.style = Style::Transparent});
    const Channels in(2, sine(997.0, kRate, atMs(4000.0), 0.1)),
        little(2, sine(997.0, kRate, atMs(300.0), 0.1));
    rig.process(in);
    for (const auto& [name, change] : cases) {
        const auto loudness = [&] { return reading(rig, 2, wave::LevelSource::Current); };
        const double before = loudness();
        change(rig.limiter());
        rig.process(little);
        const double moved = loudness() - before;
        figure(fmt::format("11 integrated loudness of {:.2f} LUFS, change of {}", before, name), moved, "LU");
        EXPECT_LT(std::abs(moved), 0.1) << name;
        rig.process(in);
    }
}

TEST(MetersInMotion, TheDisplayKeepsUpWithGrowingBlocks) {
    constexpr std::size_t kLarge = 16384;
    LimiterRig rig({.style = Style::Transparent});
    const Channels in(2, Signal(kLarge + 64, 0.1f));
    const auto samplesRead = [&] {
        std::istringstream stream(visualData(rig));
        BinaryDataReader reader(stream);
        reader.readInt();
        const int frames = reader.readInt();
        return static_cast<double>(frames * reader.readInt());
    };
    const int sizes[] = {static_cast<int>(kLarge), 64};
    for (int i = 0; i < 4; ++i) rig.process(in, 64), samplesRead();
    for (int i = 0; i < 4; ++i) rig.process(in, sizes), samplesRead();
    double delivered = 0.0;
    for (int i = 0; i < 8; ++i) rig.process(in, sizes), delivered += samplesRead();
    figure("12 display audio after blocks grew from 64 to 16384", 100.0 * delivered / (8.0 * (kLarge + 64)),
           "% delivered");
    EXPECT_GE(delivered, 8.0 * kLarge);
}

}  // namespace
}  // namespace vanta::test
