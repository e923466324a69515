#include <algorithm>
#include <cmath>
#include <vector>

#include "app/gallery/section.hpp"
#include "gui/controls/image.hpp"
#include "gui/graphics/canvas.hpp"
#include "gui/graphics/curve_shapes.hpp"
#include "gui/tree/user_interface.hpp"

namespace vanta::gallery {
namespace {

constexpr gui::Color kGround = gui::Color::of(0xFF15100E);
constexpr gui::Color kGridLine = gui::Color::of(0xFF231D1A);
constexpr gui::Color kReduction = gui::Color::of(0xFF5C52F0);
constexpr gui::Color kLevel = gui::Color::of(0xFFFFBBA9);
constexpr gui::Color kLoudness = gui::Color::of(0xFF4FC2F2);
constexpr float kGridStep = 16.0f;

/// A level, what a limiter takes from it at a ceiling, and a smooth line over both. The ceiling is a
/// control's value.
class CurveView : public gui::Control {
public:
    CurveView(gui::UserInterface& interface, gui::ValueControl& ceiling)
        : Control(interface), ceiling_(ceiling) {
        ceiling.onValueChanged.addHandler(this, &CurveView::ceilingChanged);
    }

    void resized() override {
        tabulate();
        Control::resized();
    }

    void paint(gui::Canvas& canvas) override {
        const gui::Rect& area = localBounds();
        canvas.fillRect(area, kGround);
        for (float y = kGridStep; y < area.bottom; y += kGridStep) {
            canvas.fillRect({0.0f, y, area.right, y + 1.0f}, kGridLine);
        }
        paintBands(canvas);
        paintSmoothLine(canvas);
    }

private:
    void ceilingChanged(void*) {
        tabulate();
        markDirty();
    }

    /// A value for each unit of the width, as heights from the top.
    void tabulate() {
        const auto count = static_cast<std::size_t>(std::ceil(localBounds().right)) + 1;
        const float height = localBounds().bottom;
        const float ceiling = (1.0f - ceiling_.normalized()) * height * 0.7f;
        level_.resize(count);
        reduction_.resize(count);
        for (std::size_t i = 0; i < count; ++i) {
            const auto x = static_cast<float>(i);
            const float sinceBeat = std::fmod(x, 95.0f);
            const float beat = std::min(sinceBeat / 12.0f, 1.0f) * std::exp(-sinceBeat / 40.0f);
            const float grain = 0.5f + 0.5f * std::sin(x * 0.31f) * std::sin(x * 0.083f);
            const float input = height * (0.95f - beat - 0.12f * grain);
            level_[i] = std::max(input, ceiling);
            reduction_[i] = std::max(ceiling - input, 0.0f) * 0.8f;
        }
        levelGraph_.setTable(level_);
        reductionGraph_.setTable(reduction_);
    }

    void paintBands(gui::Canvas& canvas) {
        gui::CurveSet set;
        set.count = 2;
        set.top = kReduction.withAlpha(170);
        set.entries[0].curve = &reductionGraph_;
        set.entries[0].above = kReduction.withAlpha(110);
        set.entries[0].line = kReduction;
        set.entries[1].curve = &levelGraph_;
        set.entries[1].line = kLevel;
        set.entries[1].lineWidth = 1.5f;
        set.entries[1].glowWidth = 2;
        set.entries[1].below = kLevel.withAlpha(130);
        set.bottom = kLevel.withAlpha(30);
        canvas.drawCurves(set, localBounds(), {}, gui::Canvas::CurveOrientation::OverX);
    }

    /// Joins every 48th value without overshoot.
    void paintSmoothLine(gui::Canvas& canvas) {
        constexpr int kStep = 48;
        const auto knot = [this](int x) {
            float sum = 0.0f;
            for (int i = x; i < x + kStep; ++i) sum += levelGraph_.valueAt(static_cast<float>(i));
            return gui::Point{static_cast<float>(x), sum / kStep};
        };
        for (int x = 0; static_cast<float>(x) < localBounds().right; x += kStep) {
            gui::Cubic cubic({knot(x - kStep), knot(x), knot(x + kStep), knot(x + 2 * kStep)});
            const auto left = static_cast<float>(x);
            const gui::Rect part{left, 0.0f, std::min(left + kStep, localBounds().right),
                                 localBounds().bottom};
            canvas.drawCurve(cubic, kLoudness, {}, {}, 1.5f, part, {}, gui::Canvas::CurveOrientation::OverX);
        }
    }

    gui::ValueControl& ceiling_;
    std::vector<float> level_;
    std::vector<float> reduction_;
    gui::Graph levelGraph_;
    gui::Graph reductionGraph_;
};

}  // namespace

void addCurves(const Workshop& shop, const gui::Rect& at, gui::ValueControl& ceiling) {
    addCaption(shop, "Curves: the upright slider is their ceiling",
               gui::Rect::ofSize(at.left, at.top - 16.0f, at.width(), 14.0f));
    auto& view = shop.ui().make<CurveView>(ceiling);
    view.opaque = true;
    view.bounds = at;
    view.parent = &shop.parent;
}

}  // namespace vanta::gallery
