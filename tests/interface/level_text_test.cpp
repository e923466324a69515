#include "interface/meters/level_text.hpp"

#include <gtest/gtest.h>

#include "interface/meters/meter_scale.hpp"

namespace vanta::interface {
namespace {

TEST(LevelText, NeverShowsALevelAsLessThanItIs) {
    constexpr auto kLevel = LevelInterpretation::Level;
    constexpr auto kReduction = LevelInterpretation::Reduction;
    const struct {
        float level;
        LevelFormat format;
        const char* text;
        bool isOver;
    } cases[] = {
        {-0.14f, {}, "-0.1", false},
        {-0.14f, {.interpretation = kReduction}, "-0.2", false},
        {-0.04f, {}, "+0.0", false},
        {-0.04f, {.interpretation = kReduction}, "-0.1", false},
        {0.0f, {.interpretation = kReduction}, "+0.0", false},
        {9.96f, {}, "+10", false},
        {9.96f, {.precision = FloatPrecision::Fixed}, "+10.0", false},
        {-9.91f, {}, "-9.9", false},
        {-10.2f, {}, "-10", false},
        {-10.2f, {.interpretation = kReduction}, "-11", false},
        {-14.24f, {.precision = FloatPrecision::Fixed}, "-14.2", false},
        {-123.4f, {.decimals = 2}, "-123", false},
        {-12.34f, {.decimals = 2}, "-12.3", false},
        {-180.0f, {}, "-INF", false},
        {-179.8f, {}, "-179", false},
        {-1.0f, {.limit = -1.0f}, "-1.0", false},
        {-0.95f, {.limit = -1.0f}, "-0.9", true},
        {-0.25f, {.limit = -0.25f}, "-0.2", false},
        {0.3f, {.interpretation = kReduction, .limit = 0.0f}, "+0.3", false},
        {0.01f, {.interpretation = kLevel, .limit = 0.0f}, "+0.1", true},
    };
    for (const auto& c : cases) {
        const LevelText found = formatLevel(c.level, c.format);
        EXPECT_EQ(found.text, c.text) << c.level;
        EXPECT_EQ(found.isOver, c.isOver) << c.level;
    }
}

TEST(MeterScale, SqueezesWhatLiesFarBelowFullScale) {
    const LevelCurve curve16 = curveOf(MeterScale::Db16), curve48 = curveOf(MeterScale::Db48);
    EXPECT_FLOAT_EQ(curve16.toDisplay(-15.0f), -7.5f);
    EXPECT_FLOAT_EQ(curve16.toDisplay(-4.0f), -4.0f);
    EXPECT_FLOAT_EQ(curve48.toDisplay(-100.0f), -27.0f);
    EXPECT_FLOAT_EQ(curve48.fromDisplay(-27.0f), -72.0f);
    for (const MeterScale scale : {MeterScale::Db16, MeterScale::Db32, MeterScale::Db48, MeterScale::K14}) {
        const LevelCurve curve = curveOf(scale);
        for (float level = -39.9f; level < 6.0f; level += 0.1f) {
            EXPECT_NEAR(curve.fromDisplay(curve.toDisplay(level)), level, 1e-4f) << static_cast<int>(scale);
            EXPECT_GT(curve.toDisplay(level + 0.1f), curve.toDisplay(level)) << level;
        }
    }
}

}  // namespace
}  // namespace vanta::interface
