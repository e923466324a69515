#include "app/gallery/section.hpp"
#include "gui/controls/switch.hpp"
#include "gui/tree/user_interface.hpp"

namespace vanta::gallery {
namespace {

gui::Switch& addSlider(const Workshop& shop, gui::Switch::Style& style, const std::string& name,
                       const gui::Rect& at) {
    auto& slider = shop.ui().make<gui::Switch>(shop.animator, &style);
    slider.bounds = at;
    slider.parent = &shop.parent;
    slider.accessibleName = name;
    shop.entry.attach(slider);
    return slider;
}

}  // namespace

gui::ValueControl& addSliders(const Workshop& shop, gui::Point at) {
    const auto place = [&](float x, float y, float width, float height) {
        return gui::Rect::ofSize(at.x + x, at.y + y, width, height);
    };
    auto& gain = shop.ui().make<gui::Switch::Style>();
    gain.setImages("GainSliderBackgroundNormal", "GainSliderBackgroundActive", "GainSliderButtonNormal",
                   "GainSliderButtonActive");
    auto& upright = addSlider(shop, gain, "Upright", place(0, 0, 48, 280));
    upright.setNormalized(0.7f);
    addCaption(shop, "4096 steps", place(-16, 280, 80, 14), gui::Alignment::Center);

    auto& plain = shop.ui().make<gui::Switch::Style>();
    plain.setImages("SwitchTrackNormal", "SwitchTrackActive", "SwitchThumbNormal", "SwitchThumbActive");
    addCaption(shop, "Continuous", place(64, 0, 104, 14));
    addSlider(shop, plain, "Continuous", place(64, 16, 104, 24)).setNormalized(0.4f);
    addCaption(shop, "Five steps", place(64, 48, 104, 14));
    auto& steps = addSlider(shop, plain, "Five steps", place(64, 64, 104, 24));
    steps.maximum = 5;
    steps.value = 4;
    addCaption(shop, "Disabled", place(64, 96, 104, 14));
    auto& disabled = addSlider(shop, plain, "Disabled", place(64, 112, 104, 24));
    disabled.setNormalized(0.5f);
    disabled.enabled = false;
    disabled.alpha = kDisabledAlpha;
    return upright;
}

}  // namespace vanta::gallery
