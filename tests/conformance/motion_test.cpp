// Whatever is moved while a signal plays: no click, nothing above the ceiling, and the same in any blocks.

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>
#include <tuple>

#include "foundation/numbers.hpp"
#include "tests/conformance/motion.hpp"

namespace vanta::test {
namespace {

constexpr double kRate = 44100.0;
constexpr ChannelLayout k51 = 6;
constexpr double kOutputLevelDb = -1.0;
/// There and back, then there once more while it is still on its way; each in a burst of the first channel.
constexpr std::size_t kMoves[] = {3060, 5460, 5861, 7860};
constexpr std::size_t kCount = 12000;
/// A makeup of 30 dB lifts what rounding leaves, and no two limiters have the same 24 bits of dither.
constexpr double kEqualDb = -110.0;

/// Another path through the limiter with another latency: it begins anew with silence. These promise only
/// that what follows is what a fresh limiter makes of the signal from there on.
constexpr std::string_view kRestarting[] = {"Style", "Oversampling", "True Peak Limiting"};
/// They move the audio itself along a range in dB, which rests of equal loudness do not show.
constexpr std::string_view kLevels[] = {"Gain", "Output Level"};
/// What another signal triggers knows no ceiling.
constexpr std::string_view kTriggered = "Side Chain Triggering";

bool isIn(std::span<const std::string_view> names, std::string_view name) {
    return std::ranges::find(names, name) != names.end();
}

/// Drum-like bursts over a bass, with soft noise and a little DC: rich in transients, but with next to
/// nothing above a few kHz, where a click has its energy. No two channels have the same, nor as loud.
Channels material(std::size_t channels, double later) {
    Channels made;
    for (std::size_t c = 0; c < channels; ++c) {
        const double number = static_cast<double>(c);
        Signal signal = sine(60.0 + 7.0 * number, kRate, kCount, 0.25, number + later);
        const Signal noise = whiteNoise(c + static_cast<std::uint64_t>(later), kCount, 0.75);
        std::array<double, 4> poles{};
        for (std::size_t i = 0; i < kCount; ++i) {
            double soft = static_cast<double>(noise[i]);
            for (double& pole : poles) soft = pole += 0.07 * (soft - pole);
            const double place =
                std::fmod(static_cast<double>(i) + 1800.0 + 70.0 * number + later, 2400.0 + 90.0 * number);
            const double attack = 0.5 - 0.5 * std::cos(std::numbers::pi * std::min(place / 90.0, 1.0));
            const double burst = 0.6 * attack * std::sin(place * 0.03) * std::exp(-place / 200.0);
            signal[i] += static_cast<float>(0.02 + soft + burst);
        }
        constexpr double kPeaks[] = {0.95, 0.1, 0.6, 0.2, 0.8, 0.3};
        const double scale = kPeaks[c] / peak(signal);
        for (float& sample : signal) sample *= static_cast<float>(scale);
        made.push_back(std::move(signal));
    }
    return made;
}

/// What a click leaves and soft signals do not: the fourth difference, up to 3 for a step of 1.
std::vector<double> edges(const Signal& signal) {
    std::vector<double> found(signal.size(), 0.0);
    for (std::size_t i = 2; i + 2 < signal.size(); ++i) {
        const auto at = [&](std::size_t k) { return static_cast<double>(signal[k]); };
        found[i] = std::abs(at(i - 2) - 4.0 * at(i - 1) + 6.0 * at(i) - 4.0 * at(i + 1) + at(i + 2));
    }
    return found;
}

/// The largest of `values` from 5 to 10 ms around each place.
std::vector<double> around(const std::vector<double>& values) {
    constexpr std::size_t kReach = 220;
    std::vector<double> largest;
    for (std::size_t i = 0; i < values.size(); i += kReach) {
        const std::size_t first = i - std::min(i, kReach), last = std::min(i + 2 * kReach, values.size());
        const auto part = std::span(values).subspan(first, last - first);
        largest.resize(std::min(i + kReach, values.size()), *std::ranges::max_element(part));
    }
    return largest;
}

struct Click {
    double excess = 0.0;  ///< as a factor of what is allowed
    std::size_t at = 0;
};

/// What the smooth stages of these styles let through they leave to a clipper. It draws its gain in straight
/// lines, whose corners are the sharper the faster these stages move.
double roomOf(Style style) {
    if (style == Style::Modern || style == Style::Safe) return 7.0;
    return style == Style::Aggressive || style == Style::Bus ? 5.0 : 3.0;
}

/// Looks for edges in `moving` that none of the rests has in that neighbourhood and that are sharper than
/// those of a glide of 20 ms: from the first rest to the last or, if a `level` moves, over 30 dB.
Click worstClick(Style style, const Channels& moving, const std::vector<Channels>& rests,
                 bool level = false) {
    constexpr double kGlide = 14.0 / 882.0, kFloor = 5e-4;
    const double room = roomOf(style);
    Click worst;
    for (std::size_t c = 0; c < moving.size(); ++c) {
        std::vector<double> apart(kCount), atRest(kCount), found = edges(moving[c]);
        for (std::size_t i = 0; i < kCount; ++i) {
            const double a = rests.front()[c][i], b = rests.back()[c][i];
            apart[i] = level ? std::max(std::abs(a), std::abs(b)) : std::abs(a - b);
        }
        for (const Channels& rest : rests) {
            const auto own = edges(rest[c]);
            for (std::size_t i = 0; i < kCount; ++i) atRest[i] = std::max(atRest[i], own[i]);
        }
        const auto allowed = around(atRest), glide = around(apart);
        for (std::size_t i = kMoves[0] - 50; i < kCount; ++i) {
            const double excess = found[i] / (room * allowed[i] + kGlide * glide[i] + kFloor);
            if (excess > worst.excess) worst = {excess, i};
        }
    }
    return worst;
}

Channels from(std::size_t first, Channels signals) {
    for (Signal& signal : signals) {
        signal.erase(signal.begin(), signal.begin() + static_cast<std::ptrdiff_t>(first));
    }
    return signals;
}

/// Where a controller moves a parameter from and to: all the way, or to the choice next to it.
std::pair<int, int> positionsOf(const AbstractPluginParameter& parameter) {
    if (!isIn(kRestarting, parameter.name())) return {0, 127};
    const float value = parameter.value();
    const auto position = [&](float choice) {
        return static_cast<int>(std::lround(parameter.normalize(choice) * 127.0f));
    };
    return {position(value), position(value < parameter.maximum() ? value + 1.0f : value - 1.0f)};
}

using Combination = std::tuple<Style, int, ChannelLayout>;

class Motion : public testing::TestWithParam<Combination> {
protected:
    /// With `parameter` where a controller at `position` puts it.
    LimiterSetup resting(int parameter = -1, int position = 0) const {
        const auto [style, index, layout] = GetParam();
        LimiterSetup setup{.style = style,
                           .oversamplingIndex = index,
                           .truePeak = index > 0,
                           .gainDb = 10.0f,
                           .outputLevelDb = static_cast<float>(kOutputLevelDb),
                           .layout = layout};
        // Where one link is complete the other one is not heard, and a long look-ahead softens what they do.
        const bool link =
            parameter >= 0 &&
            kParameterTable[static_cast<std::size_t>(parameter)].name.starts_with("Channel Link");
        const float transients = parameter == indexOf("Channel Link Release") ? 0.0f : 1.0f;
        const auto settings = with({{"Lookahead", link ? 0.2f : 3.0f},
                                    {"Channel Link Release", 0.0f},
                                    {"Channel Link Transients", transients}});
        setup.further = [=](VantaProcessor& limiter) {
            settings(limiter);
            if (parameter < 0) return;
            AbstractPluginParameter& moved = *limiter.parameterAt(parameter);
            moved.setValue(moved.denormalize(static_cast<float>(position) / 127.0f), 0);
        };
        return setup;
    }
    Channels rest(int parameter = -1, int position = 0) const {
        return LimiterRig(resting(parameter, position)).process(in_, 256, side_);
    }
    void expectGlide(int parameter) const;

    const std::size_t channels_ = static_cast<std::size_t>(channelCount(std::get<2>(GetParam())));
    const Channels in_ = material(channels_, 0.0), side_ = material(channels_, 700.0);
};

std::string nameOfCombination(const testing::TestParamInfo<Combination>& instance) {
    const auto [style, index, layout] = instance.param;
    return fmt::format("{}_{}x_{}", nameOf(style), 1 << index, layout == k51 ? "51" : "Stereo");
}

INSTANTIATE_TEST_SUITE_P(Limiter, Motion,
                         testing::Combine(testing::ValuesIn(kStyles), testing::Values(0, 2),
                                          testing::Values(kStereoLayout, k51)),
                         nameOfCombination);

void Motion::expectGlide(int parameter) const {
    LimiterRig table(resting());
    const AbstractPluginParameter& moved = *table.limiter().parameterAt(parameter);
    const auto [start, end] = positionsOf(moved);
    const Move moves[] = {{kMoves[0], parameter, end},
                          {kMoves[1], parameter, start},
                          {kMoves[2], parameter, end},
                          {kMoves[3], parameter, start}};
    const LimiterSetup setup = resting(parameter, start);
    const Channels out = playMoving(setup, in_, moves, std::array{8192}, side_),
                   before = rest(parameter, start);
    if (out == before) return;  // not heard at all
    constexpr std::array kAnySizes = {1, 64, 100, 7, 1, 1000, 2, 256, 3, 255, 31, 1, 513};
    const double sizesDb = nullDb(out, playMoving(setup, in_, moves, kAnySizes, side_));
    EXPECT_LT(sizesDb, kEqualDb) << moved.name() << " depends on the size of blocks";

    const Channels after = rest(parameter, end);
    const double ceiling = std::max({gainFromDb(kOutputLevelDb), peak(before), peak(after)});
    EXPECT_TRUE(db(peak(out)) <= db(ceiling) + 0.01 || moved.name() == kTriggered)
        << moved.name() << " passes the ceiling by " << db(peak(out)) - db(ceiling) << " dB";

    if (isIn(kRestarting, moved.name())) {
        LimiterRig fresh(setup);
        fresh.limiter().reset();
        const Channels anew = fresh.process(from(kMoves[3], in_), 256, from(kMoves[3], side_));
        const double anewDb = nullDb(from(kMoves[3], out), anew);
        report("{:<24} {:.0f} dB between blocks, {:.0f} dB from a fresh limiter\n", moved.name(), sizesDb,
               anewDb);
        EXPECT_LT(anewDb, kEqualDb) << moved.name() << " does not begin anew";
        return;
    }
    const bool level = isIn(kLevels, moved.name());
    const Style style = std::get<0>(GetParam());
    std::vector<Channels> rests = {before, after};
    Click click = worstClick(style, out, rests, level);
    if (click.excess >= 1.0) {
        // On the way it rests anywhere, and what a style does there neither end need show.
        for (int position = 16; position < 127; position += 16) {
            rests.insert(rests.begin() + 1, rest(parameter, position));
        }
        click = worstClick(style, out, rests, level);
    }
    report("{:<24} {:.0f} dB between blocks, edges {:.2f} times what is allowed, at {}\n", moved.name(),
           sizesDb, click.excess, click.at);
    EXPECT_LT(click.excess, 1.0) << moved.name() << " clicks at sample " << click.at;
}

TEST_P(Motion, OfAnyParameterIsHeardAsAGlide) {
    for (int parameter = 0; parameter < VantaParameters::kParameterCount; ++parameter) expectGlide(parameter);
}

// What the test above hears: a step of -60 dB of full scale; where a style moves the gain abruptly itself,
// -34.
TEST_P(Motion, WouldNotHideAClick) {
    const Channels quiet = rest();
    const Style style = std::get<0>(GetParam());
    const float step = style == Style::Modern ? 0.02f : 0.001f;
    int heard = 0, places = 0;
    for (std::size_t at = 4000; at < kCount - 100; at += 150, ++places) {
        Channels clicked = {quiet[0]};
        for (std::size_t i = at; i < kCount; ++i) clicked[0][i] += step;
        const Click click = worstClick(style, clicked, {quiet});
        heard += click.excess > 1.0 && click.at + 3 > at && click.at < at + 3;
    }
    report("hears {} of {} steps of {}\n", heard, places, step);
    EXPECT_GT(heard, 0.8 * places);
}

}  // namespace
}  // namespace vanta::test
