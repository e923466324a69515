#include <charconv>
#include <cmath>

#include <fmt/format.h>

#include "app/gallery/section.hpp"
#include "gui/controls/knob.hpp"
#include "gui/controls/value_link_group.hpp"
#include "gui/tree/user_interface.hpp"

namespace vanta::gallery {
namespace {

/// 0 to 24 dB.
class Decibels : public gui::ValueText {
public:
    std::string textOf(const gui::ValueControl& control) const override {
        return fmt::format("{:.1f} dB", control.normalized() * kMost);
    }
    std::optional<int> valueOf(const gui::ValueControl& control, std::string_view text) const override {
        float decibels = 0.0f;
        const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), decibels);
        if (error != std::errc{} || !std::isfinite(decibels)) return std::nullopt;
        return control.valueAt(decibels / kMost);
    }

private:
    static constexpr float kMost = 24.0f;
};

const Decibels kDecibels;

gui::Knob& addKnob(const Workshop& shop, gui::Knob::Style& style, const std::string& caption,
                   const gui::Rect& at, float position) {
    auto& knob = shop.ui().make<gui::Knob>(shop.animator, &style);
    knob.bounds = at;
    knob.parent = &shop.parent;
    knob.text = &kDecibels;
    knob.defaultValue = knob.maximum / 2;
    knob.setNormalized(position);
    knob.accessibleName = caption;
    shop.entry.attach(knob);
    const float middle = (at.left + at.right) / 2.0f;
    addCaption(shop, caption, gui::Rect::ofSize(middle - 50.0f, at.top - 14.0f, 100.0f, 14.0f),
               gui::Alignment::Center);
    shop.ui().make<ValueLabel>(shop, knob);
    return knob;
}

gui::Knob::Style& makeStyle(const Workshop& shop, const std::string& family) {
    auto& style = shop.ui().make<gui::Knob::Style>();
    style.setImages(family);
    return style;
}

}  // namespace

void addKnobs(const Workshop& shop, gui::Point at) {
    auto& extraLarge = makeStyle(shop, "KnobExtraLarge");
    auto& large = makeStyle(shop, "KnobLarge");
    auto& small = makeStyle(shop, "KnobSmall");
    const auto place = [&](float x, float y, float size) {
        return gui::Rect::ofSize(at.x + x, at.y + y, size, size);
    };
    addKnob(shop, extraLarge, "Extra large", place(0, 0, 88), 0.65f);
    auto& linked = addKnob(shop, large, "Large, linked", place(100, 16, 58), 0.5f);
    auto& other = addKnob(shop, large, "Large, linked", place(176, 16, 58), 0.3f);
    gui::ValueLinkGroup::link(linked, other);
    auto& steps = addKnob(shop, small, "Small, 10 steps", place(252, 16, 58), 0.0f);
    steps.text = nullptr;
    steps.maximum = 10;
    steps.value = 3;
    auto& disabled = addKnob(shop, small, "Disabled", place(328, 16, 58), 0.8f);
    disabled.enabled = false;
    disabled.alpha = kDisabledAlpha;
}

}  // namespace vanta::gallery
