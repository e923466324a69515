#include <gtest/gtest.h>

#include <memory>
#include <set>
#include <span>

#include "dsp/metering/level_meter.hpp"
#include "gui/tree/root_control.hpp"
#include "interface/loudness/meter_colors.hpp"
#include "interface/meters/channel_letters.hpp"
#include "interface/meters/level_meter_delegate.hpp"
#include "interface/meters/level_meter_label.hpp"
#include "interface/meters/meter_scale.hpp"
#include "tests/gui/pictures.hpp"
#include "tests/gui/test_interface.hpp"
#include "tests/interface/fake_source.hpp"
#include "tests/support/element_rig.hpp"
#include "wave/float_parameter_source.hpp"

namespace vanta::interface {
namespace {

using gui::Rect;
using test::FakeSource;

constexpr int kFrameMs = 20;

struct Rack {
    explicit Rack(float width = 100.0f, float height = 300.0f)
        : ui(width, height), animator(ui.make<gui::Animator>()) {
        animator.framesPerSecond = 1000 / kFrameMs;
        animator.running = true;
        ui.loadBackdrop("Background");
    }

    LevelMeterDisplay& addMeter(const Rect& at, MeterScale scale, ChannelLayout layout,
                                Orientation orientation,
                                LevelInterpretation interpretation = LevelInterpretation::Level) {
        auto& style = ui.make<LevelMeterStyle>();
        const bool isUp = orientation == Orientation::Vertical;
        style.setImages("LevelMeterPart", isUp ? "MeterLabelsVer" : "MeterLabelsHor");
        auto& meter = ui.make<LevelMeterDisplay>(&animator, &style);
        meter.bounds = at;
        meter.parent = ui.root;
        meter.orientation = orientation;
        meter.interpretation = interpretation;
        meter.layout = layout;
        meter.labelInset = 2.0f;
        const float length = isUp ? at.height() : at.width();
        meter.curve = curveOf(scale);
        meter.scale = (length - 2.0f) / -meter.curve.value().toDisplay(-rangeOf(scale));
        meter.offset = isUp ? 2.0f : length - 2.0f;
        const bool isReduction = interpretation == LevelInterpretation::Reduction;
        const BarColors colors = isReduction ? reductionColors() : barColors(scale == MeterScale::Db32);
        style.setGradient(gui::Gradient(colors.top, colors.bottom));
        if (isKScale(scale) && !isReduction) {
            const BandLimits limits = bandsOfReference(referenceOf(scale));
            style.setGradient(bandGradient(meter, limits, colors));
            meter.setColorStops({limits[2], limits[1], limits[0]});
        }
        meter.rebuild();
        return meter;
    }
    FakeSource& source(float current, float highest) {
        return *sources.emplace_back(std::make_unique<FakeSource>(current, highest));
    }
    /// Whether the next frame paints anything.
    bool isRepainted() {
        ui.picture();
        ui.root->takeDirtyRect();
        ui.advance(kFrameMs);
        return !ui.root->takeDirtyRect().isEmpty();
    }

    std::vector<std::unique_ptr<FakeSource>> sources;
    gui::TestInterface ui;
    gui::Animator& animator;
};

class LevelMeterPicture : public testing::TestWithParam<float> {};

TEST_P(LevelMeterPicture, ShowsEveryScaleAndLayout) {
    Rack rack(800.0f, 480.0f);
    rack.ui.setScale(GetParam());
    float x = 8.0f, y = 8.0f;
    const auto addAll = [&](LevelMeterDisplay& meter, float step, bool isSlow) {
        for (int c = 0; c < meter.barCount(); ++c) {
            const float level = -3.0f - step * static_cast<float>(c);
            meter.setSources(c, &rack.source(level, c == 0 ? 0.2f : level + 2.0f),
                             isSlow ? &rack.source(level - 12.0f, level - 8.0f) : nullptr);
        }
    };
    for (ChannelLayout layout = 0; layout < kChannelLayoutCount; ++layout) {
        const float width = static_cast<float>(std::max(32, 12 * channelCount(layout)));
        if (x + width > 792.0f) x = 8.0f, y += 196.0f;
        const auto scale = static_cast<MeterScale>(layout % 6);
        addAll(rack.addMeter(Rect::ofSize(x, y, width, 188.0f), scale, layout, Orientation::Vertical), 2.0f,
               layout % 2 == 1);
        x += width + 8.0f;
    }
    const auto reduction = LevelInterpretation::Reduction;
    addAll(rack.addMeter(Rect::ofSize(x, y, 32.0f, 188.0f), MeterScale::Db48, kStereoLayout,
                         Orientation::Vertical, reduction),
           3.0f, false);
    const auto lying = Orientation::Horizontal;
    addAll(rack.addMeter(Rect::ofSize(8.0f, 404.0f, 551.0f, 31.0f), MeterScale::K14, kStereoLayout, lying),
           9.0f, true);
    addAll(rack.addMeter(Rect::ofSize(8.0f, 440.0f, 551.0f, 31.0f), MeterScale::K14, kStereoLayout, lying,
                         reduction),
           9.0f, false);
    rack.ui.advance(kFrameMs);
    test::expectPicture(*rack.ui.picture(), test::atScale("meters", GetParam()), 1);
}

INSTANTIATE_TEST_SUITE_P(Scales, LevelMeterPicture, testing::Values(1.0f, 1.5f, 2.0f));

/// A real level meter that is fed samples, on a display, frame by frame.
struct PlayedMeter {
    PlayedMeter() : environment(kBlock), level(environment, 0.0f), source(environment, &clock) {
        environment.setSampleRate(48000.0f);
        environment.setHostBlockSamples(kBlock);
        level.parameter().setRange(-2.0f, 2.0f);
        source.source = &level;
        meter.setSources(0, &source);
    }
    void play(float sample, int samples) {
        level.parameter().setValue(sample, 0.0f);
        for (; samples > 0; samples -= kBlock) {
            const int count = std::min(samples, kBlock);
            test::runGraph(environment, {&count, 1});
        }
    }
    void silence(int milliseconds) {
        for (int ms = 0; ms < milliseconds; ms += kFrameMs) {
            play(0.0f, 48 * kFrameMs);
            rack.ui.advance(kFrameMs);
        }
    }
    /// The topmost lit pixel, and the topmost with lit pixels all below: the line of the peak, and the bar.
    struct Tops {
        int line;
        int bar;
    };
    Tops tops() {
        const std::unique_ptr<gui::Bitmap> picture = rack.ui.picture();
        Tops found{300, 300};
        bool isSolid = true;
        for (int y = 299; y >= 0; --y) {
            const bool isLit = gui::toColor(picture->row(y)[7]).red > 60;
            isSolid &= isLit;
            if (isSolid) found.bar = y;
            if (isLit) found.line = y;
        }
        return found;
    }
    float positionOf(float decibels) { return meter.levelToPosition(decibels); }

    static std::int64_t clock() { return gui::TestInterface::now; }
    static constexpr int kBlock = 240;
    Rack rack;
    wave::Environment environment;
    wave::FloatParameterSource level;
    LevelMeter source;
    LevelMeterDisplay& meter = rack.addMeter(Rect::ofSize(0.0f, 0.0f, 32.0f, 300.0f), MeterScale::K20,
                                             kMonoLayout, Orientation::Vertical);
};

TEST(LevelMeterDisplay, ShowsAPeakOfOneSampleAsItHoldsAndFalls) {
    PlayedMeter played;
    const float peak = 20.0f * std::log10(0.5f);
    played.play(0.5f, 1);
    played.silence(kFrameMs);
    EXPECT_NEAR(static_cast<float>(played.tops().line), played.positionOf(peak), 1.0f);
    EXPECT_NEAR(static_cast<float>(played.tops().bar), played.positionOf(peak), 1.0f);
    played.silence(220);  // 240 ms: of these it has held 50 and fallen for 190, give or take a frame
    EXPECT_NEAR(static_cast<float>(played.tops().line), played.positionOf(peak), 1.0f);
    EXPECT_NEAR(static_cast<float>(played.tops().bar), played.positionOf(peak - 150.0f * 0.19f),
                1.0f + 3.0f * played.meter.scale);
    played.silence(1700);
    EXPECT_NEAR(static_cast<float>(played.tops().line), played.positionOf(peak), 1.0f)
        << "2 seconds are not over";
    played.silence(1060);  // 3 s
    EXPECT_NEAR(static_cast<float>(played.tops().line), played.positionOf(peak - 15.0f),
                1.0f + 0.6f * played.meter.scale);
    EXPECT_EQ(played.tops().bar, 300);
    played.silence(6000);
    EXPECT_EQ(played.tops().line, 300) << "nothing is left";
    EXPECT_FALSE(played.rack.isRepainted());
}

TEST(LevelMeterDisplay, HoldsAnOverUntilSomebodyClicks) {
    PlayedMeter played;
    auto& label = played.rack.ui.make<LevelPeakLabel>(&played.rack.animator);
    label.setSource(&played.source);
    label.bounds = Rect::ofSize(50.0f, 0.0f, 32.0f, 16.0f);
    label.parent = played.rack.ui.root;
    played.play(1.2f, 1);
    played.silence(8000);
    EXPECT_EQ(played.tops().line, 0) << "a block above full scale";
    const auto isLit = [&](int y) { return gui::toColor(played.rack.ui.picture()->row(y)[7]).red > 60; };
    EXPECT_TRUE(isLit(1)) << "that reaches down to it";
    played.meter.splitAtOffset = true;
    EXPECT_TRUE(isLit(0) && !isLit(1)) << "or stands apart";
    EXPECT_EQ(label.shownText(), "+1.6");
    EXPECT_EQ(label.textColor.value(), label.clipColor.value());
    played.rack.ui.root->platformMouseDown(gui::kLeftPress, {60.0f, 8.0f}, 0);
    played.rack.ui.root->platformMouseUp(gui::kLeftPress, {60.0f, 8.0f}, 0);
    played.silence(8000);
    EXPECT_EQ(played.tops().line, 300);
    EXPECT_NE(label.shownText(), "+1.6");
}

TEST(LevelMeterDisplay, PaintsNothingWhileNothingMovesAndReadsNothingWhileHidden) {
    Rack rack;
    LevelMeterDisplay& meter = rack.addMeter(Rect::ofSize(0.0f, 0.0f, 32.0f, 300.0f), MeterScale::Db48,
                                             kStereoLayout, Orientation::Vertical);
    FakeSource& left = rack.source(-20.0f, -10.0f);
    meter.setSources(0, &left, &rack.source(-30.0f, -30.0f));
    rack.ui.advance(kFrameMs);
    EXPECT_FALSE(rack.isRepainted());
    left.values[1] = -9.0f;
    EXPECT_TRUE(rack.isRepainted());
    EXPECT_FALSE(rack.isRepainted());
    meter.visible = false;
    const int reads = left.reads;
    rack.ui.advance(200);
    EXPECT_EQ(left.reads, reads);
    meter.visible = true;
    meter.click();
    EXPECT_EQ(left.peakResets, 1);
}

TEST(LevelMeterDisplay, GrowsFromWhereItsScaleBegins) {
    Rack rack(400.0f, 400.0f);
    const auto litOf = [&](LevelMeterDisplay& meter, float level) {
        FakeSource& source = rack.source(level, level);
        meter.setSources(0, &source);
        rack.ui.advance(kFrameMs);
        const std::unique_ptr<gui::Bitmap> picture = rack.ui.picture();
        const Rect& at = meter.bounds.value();
        Rect lit{};
        for (int y = static_cast<int>(at.top); y < static_cast<int>(at.bottom); ++y) {
            for (int x = static_cast<int>(at.left); x < static_cast<int>(at.right); ++x) {
                const gui::Color color = gui::toColor(picture->row(y)[x]);
                if (color.red > 60)
                    lit = lit.united(Rect::ofSize(static_cast<float>(x), static_cast<float>(y), 1.0f, 1.0f));
            }
        }
        meter.visible = false;
        return lit.translated({-at.left, -at.top});
    };
    const auto add = [&](Orientation orientation, LevelInterpretation interpretation) -> LevelMeterDisplay& {
        const Rect at = orientation == Orientation::Vertical ? Rect::ofSize(10.0f, 10.0f, 33.0f, 302.0f)
                                                             : Rect::ofSize(10.0f, 10.0f, 302.0f, 33.0f);
        return rack.addMeter(at, MeterScale::K12, kMonoLayout, orientation, interpretation);
    };
    const float scale = 300.0f / 46.0f, zero = 2.0f;
    const Rect up = litOf(add(Orientation::Vertical, LevelInterpretation::Level), -23.0f);
    EXPECT_EQ(up, (Rect{0.0f, zero + 23.0f * scale, 33.0f, 302.0f}));
    const Rect right = litOf(add(Orientation::Horizontal, LevelInterpretation::Level), -23.0f);
    EXPECT_EQ(right, (Rect{0.0f, 0.0f, 300.0f - 23.0f * scale, 33.0f}));
    const Rect down = litOf(add(Orientation::Vertical, LevelInterpretation::Reduction), -23.0f);
    EXPECT_EQ(down, (Rect{0.0f, zero, 33.0f, zero + 23.0f * scale}));
    const Rect left = litOf(add(Orientation::Horizontal, LevelInterpretation::Reduction), -23.0f);
    EXPECT_EQ(left, (Rect{300.0f - 23.0f * scale, 0.0f, 300.0f, 33.0f}));
    EXPECT_TRUE(litOf(add(Orientation::Vertical, LevelInterpretation::Reduction), -180.0f).isEmpty())
        << "before a processor has run nothing is reduced";
}

TEST(LevelMeterDisplay, NamesTheChannelsOfEveryLayout) {
    // As tools/artwork/meters.py draws them.
    const char* letters[] = {"L",  "R",  "L",  "R",  "Ls", "Rs", "Lb", "Rb",
                             "Lb", "Rb", "Cs", "Cs", "C",  "Lt", "Rt", "LF"};
    const auto namesOf = [&](const char* layout) {
        std::string names;
        for (const int type : channelTypes(*findLayout(layout)))
            names += std::string(letters[letterCell(type)]) + " ";
        return names;
    };
    EXPECT_EQ(namesOf("stereo"), "L R ");
    EXPECT_EQ(namesOf("LCRS"), "L R C Cs ");
    EXPECT_EQ(namesOf("quad"), "L R Lb Rb ");
    EXPECT_EQ(namesOf("5.1"), "L R Ls Rs C LF ");
    EXPECT_EQ(namesOf("6.1"), "L R Ls Rs C Cs LF ");
    EXPECT_EQ(namesOf("7.1"), "L R Ls Rs Lb Rb C LF ");
    EXPECT_EQ(namesOf("7.1.2"), "L R Ls Rs Lb Rb Lt Rt C LF ");
    for (ChannelLayout layout = 0; layout < kChannelLayoutCount; ++layout) {
        std::set<int> cells;
        for (const int type : channelTypes(layout)) cells.insert(letterCell(type));
        EXPECT_EQ(static_cast<int>(cells.size()), channelCount(layout)) << channelLayoutName(layout);
    }
}

TEST(LevelMeterDisplay, TakesTheSourcesOfItsLayout) {
    Rack rack;
    LevelMeterDisplay& meter = rack.addMeter(Rect::ofSize(0.0f, 0.0f, 120.0f, 300.0f), MeterScale::Db48,
                                             kMonoLayout, Orientation::Vertical);
    std::vector<FakeSource> list(3 + 3 * kMaxChannels);
    ChannelLayoutLevelMeterDelegate delegate(
        meter, [&](int place) { return &list[static_cast<std::size_t>(place)]; },
        {.first = 3, .stride = 3, .fast = 0, .slow = 1});
    delegate.channelLayoutChanged(*findLayout("7.1.2"));
    EXPECT_EQ(meter.fastSource(9), &list[3 + 9 * 3]);
    EXPECT_EQ(meter.slowSource(9), &list[3 + 9 * 3 + 1]);
    delegate.channelLayoutChanged(kStereoLayout);
    EXPECT_EQ(meter.barCount(), 2);
    EXPECT_EQ(meter.fastSource(1), &list[6]);
    EXPECT_EQ(meter.fastSource(2), nullptr);
}

TEST(LevelMeterLabel, ChangesItsTextAtAPaceAndItsColourAtOnce) {
    Rack rack;
    auto& label = rack.ui.make<LevelMeterLabel>(&rack.animator);
    label.bounds = Rect::ofSize(0.0f, 0.0f, 32.0f, 16.0f);
    label.parent = rack.ui.root;
    EXPECT_EQ(label.shownText(), "");
    FakeSource& source = rack.source(-6.0f, -6.0f);
    label.targetLevel = -1.0f;
    label.setSource(&source);
    EXPECT_EQ(label.shownText(), "-6.0");
    int texts = 0;
    for (int frame = 0; frame < 100; ++frame) {  // 2 seconds
        const std::string before = label.shownText();
        source.values[0] = -6.0f + 0.04f * static_cast<float>(frame);
        rack.ui.advance(kFrameMs);
        texts += label.shownText() != before ? 1 : 0;
    }
    EXPECT_GE(texts, 11);
    EXPECT_LE(texts, 13) << "about six a second";
    EXPECT_EQ(label.textColor.value(), label.normalColor.value());
    source.values[0] = -0.5f;
    rack.ui.advance(kFrameMs);
    EXPECT_EQ(label.shownText(), "-0.5");
    EXPECT_EQ(label.textColor.value(), label.targetColor.value());
    source.values[0] = 0.5f;
    rack.ui.advance(kFrameMs);
    EXPECT_EQ(label.textColor.value(), label.clipColor.value());
    rack.ui.advance(400);
    EXPECT_FALSE(rack.isRepainted());
    label.fadeRange = 6.0f;
    source.values[0] = -3.0f;
    rack.ui.advance(400);
    EXPECT_EQ(label.textColor.value(), label.warningColor.value()) << "half-way to the limit";
}

}  // namespace
}  // namespace vanta::interface
