#include <gtest/gtest.h>

#include <algorithm>
#include <array>

#include "foundation/numbers.hpp"
#include "tests/conformance/program_material.hpp"
#include "tests/support/limiter_rig.hpp"

namespace vanta::test {
namespace {

constexpr double kEqualDb = -110.0;

constexpr ChannelLayout k51 = 6;    // L R Ls Rs C LFE
constexpr ChannelLayout k712 = 14;  // L R and three more pairs, C, LFE

LimiterSetup hot(Style style, bool truePeak, ChannelLayout layout) {
    return {.style = style, .truePeak = truePeak, .gainDb = 15.0f, .layout = layout};
}

class ChannelSymmetry : public testing::TestWithParam<std::tuple<Style, float>> {};

INSTANTIATE_TEST_SUITE_P(StylesAndLinks, ChannelSymmetry,
                         testing::Combine(testing::ValuesIn(kStyles), testing::Values(0.0f, 0.25f, 0.5f)),
                         [](const auto& instance) {
                             return fmt::format("{}_link_{:.0f}", nameOf(std::get<0>(instance.param)),
                                                200.0f * std::get<1>(instance.param));
                         });

TEST_P(ChannelSymmetry, SwapsEqualsAndMono) {
    const auto [style, link] = GetParam();
    const Channels music = loudMusic(0.4);
    // Louder on one side, so that linking has something to do.
    Channels tilted = music;
    for (float& sample : tilted[1]) sample *= 0.3f;
    for (const bool truePeak : {false, true}) {
        LimiterSetup setup = hot(style, truePeak, kStereoLayout);
        const float amount = link;
        setup.further = [amount](VantaProcessor& limiter) {
            limiter.channelLinkTransients.setValue(amount, 0);
            limiter.channelLinkRelease.setValue(amount, 0);
        };
        SCOPED_TRACE(describe(setup));
        const Channels out = limited(setup, tilted);
        const Channels swapped = limited(setup, {tilted[1], tilted[0]});
        EXPECT_LT(nullDb(out, {swapped[1], swapped[0]}), kEqualDb);

        const Channels same = limited(setup, {music[0], music[0]});
        EXPECT_LT(nullDb(std::span(same[0]), std::span(same[1])), kEqualDb);

        LimiterSetup mono = setup;
        mono.layout = kMonoLayout;
        EXPECT_LT(nullDb(limited(mono, {music[0]}), {same[0]}), kEqualDb);
    }
}

TEST(Layouts, AllRunAndHoldTheCeiling) {
    for (ChannelLayout layout = 0; layout < kChannelLayoutCount; ++layout) {
        const LimiterSetup setup = hot(Style::Modern, true, layout);
        SCOPED_TRACE(describe(setup));
        Channels in;
        for (int c = 0; c < channelCount(layout); ++c) {
            in.push_back(whiteNoise(static_cast<std::uint64_t>(c), 9000, 0.1 + 0.02 * c));
        }
        const Channels out = limited(setup, in);
        EXPECT_LE(peak(out), 1.0);
        for (std::size_t c = 0; c < out.size(); ++c) {
            EXPECT_TRUE(std::all_of(out[c].begin(), out[c].end(), [](float x) { return std::isfinite(x); }));
            EXPECT_GT(rms(out[c]), rms(in[c])) << "channel " << c;
        }
    }
}

TEST(Layouts, TreatEqualPairsOfAllChannelsAlike) {
    for (const Style style : kStyles) {
        const LimiterSetup setup = hot(style, false, k712);
        SCOPED_TRACE(describe(setup));
        const Channels music = loudMusic(0.25);
        const Channels out = limited(setup, Channels(10, music[0]));
        for (std::size_t c = 1; c < out.size(); ++c) {
            EXPECT_LT(nullDb(std::span(out[0]), std::span(out[c])), kEqualDb) << "channel " << c;
        }
    }
}

/// How far each channel of a layout is turned down while one of them is far too loud, in dB.
std::vector<double> reductions(Style style, ChannelLayout layout, std::size_t loud, float link, bool center,
                               bool lfe) {
    LimiterSetup setup = hot(style, false, layout);
    setup.further = [=](VantaProcessor& limiter) {
        limiter.channelLinkTransients.setValue(link, 0);
        limiter.channelLinkRelease.setValue(link, 0);
        limiter.channelLinkCenter.setMapped(center);
        limiter.channelLinkLfe.setMapped(lfe);
    };
    constexpr std::size_t kCount = 9000;
    constexpr double kQuiet = 0.01;
    Channels in(static_cast<std::size_t>(channelCount(layout)), sine(400.0, 44100.0, kCount, kQuiet));
    in[loud] = sine(400.0, 44100.0, kCount, 0.9);
    const Channels out = limited(setup, in);
    std::vector<double> result;
    for (std::size_t c = 0; c < in.size(); ++c) {
        const std::size_t from = kCount / 2;
        const double before = rms(std::span(in[c]).subspan(from));
        const double after = rms(std::span(out[c]).subspan(from));
        result.push_back(static_cast<double>(setup.gainDb) - db(after / before));
    }
    return result;
}

/// What a channel that is not linked may change. One detector of Dynamic always hears the pair, and raises
/// what comes with a loud neighbour a little.
double untouchedDb(Style style) {
    return style == Style::Dynamic ? 1.0 : 0.01;
}

struct LinkCase {
    const char* name;
    ChannelLayout layout;
    std::size_t loud;
    float link;  ///< up to 0.5 within pairs, from there on among all
    bool center;
    bool lfe;
    std::vector<std::size_t>
        alike;  ///< turned down as the loud one is; all others are not turned down at all
};

const std::vector<LinkCase> kLinkCases = {
    {"no link", k51, 0, 0.0f, false, false, {}},
    {"the pair", k51, 0, 0.5f, false, false, {1}},
    {"the pair with the centre", k51, 0, 0.5f, true, false, {1, 4}},
    {"the rear pair, to which the centre does not belong", k51, 2, 0.5f, true, false, {3}},
    {"all pairs", k51, 0, 1.0f, false, false, {1, 2, 3}},
    {"all pairs and the centre", k51, 0, 1.0f, true, false, {1, 2, 3, 4}},
    {"all pairs and the LFE", k51, 0, 1.0f, false, true, {1, 2, 3, 5}},
    {"everything", k51, 0, 1.0f, true, true, {1, 2, 3, 4, 5}},
    {"a loud centre left out", k51, 4, 1.0f, false, false, {}},
    {"a loud centre", k51, 4, 1.0f, true, false, {0, 1, 2, 3}},
    {"a loud centre within its pair", k51, 4, 0.5f, true, false, {0, 1}},
    {"a loud LFE left out", k51, 5, 1.0f, true, false, {}},
    {"a loud LFE", k51, 5, 1.0f, false, true, {0, 1, 2, 3}},
    {"all of ten channels", k712, 6, 1.0f, true, true, {0, 1, 2, 3, 4, 5, 7, 8, 9}},
    {"a height pair", k712, 6, 0.5f, true, true, {7}},
};

TEST(ChannelLink, JoinsWhatItSays) {
    for (const Style style : kStyles) {
        for (const LinkCase& c : kLinkCases) {
            if (c.layout == k712 && style != Style::Transparent && style != Style::Modern) continue;
            SCOPED_TRACE(fmt::format("{}, {}", nameOf(style), c.name));
            const auto down = reductions(style, c.layout, c.loud, c.link, c.center, c.lfe);
            EXPECT_GT(down[c.loud], 6.0);
            for (std::size_t channel = 0; channel < down.size(); ++channel) {
                if (channel == c.loud) continue;
                const bool linked = std::find(c.alike.begin(), c.alike.end(), channel) != c.alike.end();
                EXPECT_NEAR(down[channel], linked ? down[c.loud] : 0.0, linked ? 0.1 : untouchedDb(style))
                    << "channel " << channel;
            }
        }
    }
}

TEST(ChannelLink, GrowsSteadilyInStereo) {
    for (const Style style : kStyles) {
        SCOPED_TRACE(nameOf(style));
        double previous = -untouchedDb(style);
        for (const float link : {0.0f, 0.125f, 0.25f, 0.375f, 0.5f}) {
            const auto down = reductions(style, kStereoLayout, 0, link, false, false);
            report("{:<12} link {:.0f}%: loud channel {:.2f} dB, quiet channel {:.2f} dB down\n",
                   nameOf(style), static_cast<double>(200.0f * link), down[0], down[1]);
            EXPECT_GE(down[1], previous - 1e-3);
            previous = down[1];
            // What lies above the half means the link of all channels, and stereo has no more than a pair.
            if (link == 0.5f) {
                EXPECT_NEAR(reductions(style, kStereoLayout, 0, 1.0f, false, false)[1], down[1], 0.01);
            }
        }
    }
}

}  // namespace
}  // namespace vanta::test
