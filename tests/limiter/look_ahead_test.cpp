// Look-ahead in motion: the order in which what it depends on changes, and what comes of it.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <memory>
#include <vector>

#include "foundation/binary_data.hpp"
#include "limiter/engine/engine_parameters.hpp"
#include "limiter/processor/style_routing.hpp"
#include "limiter/resources/style_resources.hpp"
#include "tests/support/engine_rig.hpp"
#include "tests/support/limiter_rig.hpp"

namespace vanta::test {
namespace {

TEST(StagedControl, KeepsTheLeadBetweenWindowAndHold) {
    Random random(3);
    Signal in(500, 0.5f);
    while (in.size() < 20000) {
        in.insert(in.end(), static_cast<std::size_t>(random.between(1, 500)),
                  static_cast<float>(std::abs(random.bipolar())));
    }
    in.resize(30000, 0.25f);
    const auto run = [&](const std::vector<int>& blocks) {
        wave::Environment environment(128);
        VectorSource source(environment, in, ConstantFlag::WhereTrue);
        LookAheadCourse course;
        course.fade = 20;
        course.turn = 100;
        course.period = 140;
        std::vector<std::unique_ptr<StagedControl>> controls;
        std::vector<wave::Producer*> ends;
        for (const auto role : {StagedControl::Window, StagedControl::Lead, StagedControl::Hold}) {
            controls.push_back(std::make_unique<StagedControl>(environment, role, 0, source));
            controls.back()->follow(&course);
            ends.push_back(controls.back().get());
        }
        course.lead = controls[1].get();
        return runElements(environment, ends, blocks);
    };
    const auto out = run(evenBlocks(30000, 128));
    EXPECT_EQ(out, run(randomBlocks(30000, 128, 4)));
    for (std::size_t i = 200; i < in.size(); ++i) {
        // Both leads count during the fade, a window for what is heard up to the turn later, and a hold is
        // full a fade after it began to grow.
        for (const float lead : {out[1][i], out[1][i - 20]}) {
            for (const std::size_t earlier : {0u, 50u, 100u}) ASSERT_LE(out[0][i - earlier], lead) << i;
        }
        for (const std::size_t earlier : {0u, 40u, 80u}) ASSERT_GE(out[2][i - earlier], out[1][i]) << i;
        ASSERT_GE(out[2][i], out[1][i - 20]) << i;
        ASSERT_LE(std::abs(out[2][i] - out[2][i - 1]), 2.0f / 20) << "a hold that jumps at " << i;
    }
    for (const Signal& each : out) EXPECT_EQ(each.back(), 0.25f);
}

/// The engine of one channel in a style.
struct StyledRig : EngineRig {
    StyledRig(Style style, Signal in) : EngineRig(limiterConfiguration(), {std::move(in)}) {
        addResources(styleResources());
        for (const Resource& record : styleResources()) engine.loadStyle(std::string(record.name));
        engine.applyStyle(static_cast<int>(style));
        engine.applyAllParameters();
        channels[0]->setTap(styleRouting(style).tappedConvolver);
    }
};

class LookAheadInMotion : public testing::TestWithParam<Style> {};
INSTANTIATE_TEST_SUITE_P(Styles, LookAheadInMotion, testing::ValuesIn(kStyles),
                         [](const auto& instance) { return nameOf(instance.param); });

// Peaks at irregular distances over a tone. Safe takes its look-ahead from Release.
TEST_P(LookAheadInMotion, LetsNoPeakThroughInWhateverBlocks) {
    constexpr int kHalf = 60000;
    constexpr float kThresholdDb = -12.0f;
    Signal in = sine(97.0, 44100.0, 3 * kHalf, 0.12);
    Random random(5);
    for (std::size_t at = 200; at < in.size() - 50;
         at += static_cast<std::size_t>(random.between(40, 2000))) {
        const double height = 0.5 + 0.4 * std::abs(random.bipolar());
        for (int i = 0, length = random.between(1, 50); i < length; ++i) {
            in[at + static_cast<std::size_t>(i)] = static_cast<float>(height * std::cos(i * 0.4));
        }
    }
    const auto run = [&](unsigned seed) {
        StyledRig rig(GetParam(), in);
        const int knob = GetParam() == Style::Safe ? kMainReleasePosition : kCustom1Position;
        rig.set(kMainThresholdPosition, kThresholdDb);
        for (const float share : {1.0f, 0.02f, 1.0f}) {
            rig.set(knob, share);
            rig.run(randomBlocks(kHalf, 256, seed++));
        }
        return rig.out[0];
    };
    const Signal out = run(1);
    const double ceiling = std::pow(10.0, kThresholdDb / 20);
    report("{}: {:.1f} dB of the ceiling above it\n", nameOf(GetParam()),
           db(std::max(peak(out) / ceiling - 1.0, 1e-20)));
    EXPECT_GT(peak(out), 0.9 * ceiling);
    EXPECT_LT(peak(out), ceiling * (1 + 1e-5));
    EXPECT_LT(nullDb(out, run(50)), -110.0);
}

}  // namespace
}  // namespace vanta::test
