#include "interface/meters/level_meter_display.hpp"

#include <gtest/gtest.h>

#include <memory>

#include <fmt/format.h>

#include "dsp/metering/level_meter.hpp"
#include "gui/tree/root_control.hpp"
#include "interface/meters/channel_letters.hpp"
#include "interface/meters/level_meter_delegate.hpp"
#include "interface/meters/level_meter_label.hpp"
#include "interface/meters/meter_scale.hpp"
#include "tests/gui/pictures.hpp"
#include "tests/gui/test_interface.hpp"
#include "tests/interface/fake_source.hpp"

namespace vanta::interface {
namespace {

using gui::Rect;
using test::FakeSource;

constexpr gui::Color kTop{185, 197, 232, 255}, kBottom{99, 107, 136, 255};

struct Rack {
    explicit Rack(float width, float height) : ui(width, height), animator(ui.make<gui::Animator>()) {
        animator.framesPerSecond = 50;
        animator.running = true;
    }

    LevelMeterDisplay& addMeter(const Rect& at, MeterScale scale, ChannelLayout layout,
                                Orientation orientation) {
        auto& style = ui.make<LevelMeterStyle>();
        style.setImages("LevelMeterPart", "MeterLabelsVer");
        auto& meter = ui.make<LevelMeterDisplay>(&animator, &style);
        meter.bounds = at;
        meter.parent = ui.root;
        meter.orientation = orientation;
        const bool isUp = orientation == Orientation::Vertical;
        const float length = isUp ? at.height() : at.width();
        meter.curve = curveOf(scale);
        meter.scale = (length - 2.0f) / -meter.curve.value().toDisplay(-rangeOf(scale));
        meter.offset = isUp ? 2.0f : length - 2.0f;
        meter.layout = layout;
        meter.labelInset = 2.0f;
        style.setGradient(gui::Gradient(kTop, kBottom));
        if (isKScale(scale)) {
            const float k = referenceOf(scale);
            const float a = meter.fractionOf(meter.levelToPosition(4.0f - k));
            const float c = meter.fractionOf(meter.levelToPosition(-k));
            style.setGradient(gui::Gradient({{{172, 42, 51, 255}, 0.0f},
                                             {{202, 86, 106, 255}, a},
                                             {{247, 183, 83, 255}, a},
                                             {{255, 235, 201, 255}, c},
                                             {kTop, c},
                                             {kBottom, 1.0f}}));
            meter.setColorStops({-k, 4.0f - k});
        }
        meter.rebuild();
        return meter;
    }
    FakeSource& source(float current, float highest) {
        return *sources.emplace_back(std::make_unique<FakeSource>(current, highest));
    }
    std::vector<std::unique_ptr<FakeSource>> sources;
    gui::TestInterface ui;
    gui::Animator& animator;
};

TEST(LevelMeterDisplay, LooksAsReviewed) {
    for (const float scale : {1.0f, 1.5f, 2.0f}) {
        Rack rack(800.0f, 540.0f);
        rack.ui.setScale(scale);
        rack.ui.loadBackdrop("Background");
        float x = 8.0f;
        for (ChannelLayout layout = 0; layout < kChannelLayoutCount; ++layout) {
            const auto meterScale = static_cast<MeterScale>(layout % 7);
            const float width = static_cast<float>(std::max(32, 12 * channelCount(layout)));
            if (x + width > 790.0f) break;
            LevelMeterDisplay& meter = rack.addMeter(Rect::ofSize(x, 8.0f, width, 240.0f), meterScale, layout,
                                                     Orientation::Vertical);
            for (int c = 0; c < channelCount(layout); ++c) {
                const float level = -3.0f - 2.0f * static_cast<float>(c);
                meter.setSources(c, &rack.source(level, c == 0 ? 0.2f : level + 2.0f),
                                 layout % 2 ? &rack.source(level - 12.0f, level - 8.0f) : nullptr);
            }
            meter.barAlpha = 255;
            x += width + 8.0f;
        }
        rack.ui.advance(20);
        test::expectPicture(*rack.ui.picture(), test::atScale("meters", scale));
    }
}

}  // namespace
}  // namespace vanta::interface
