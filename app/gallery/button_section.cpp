#include "app/gallery/section.hpp"
#include "gui/controls/select_button.hpp"
#include "gui/controls/toggle_button.hpp"
#include "gui/tree/user_interface.hpp"

namespace vanta::gallery {
namespace {

using gui::Alignment;
using gui::Button;
using gui::Rect;

Button::Style& makeStyle(const Workshop& shop) {
    auto& style = shop.ui().make<Button::Style>();
    style.textColor = kButtonText;
    style.textAlignment = Alignment::Center;
    return style;
}

Button::Style& makeKind(const Workshop& shop, const std::string& kind, const std::string& overlayOn = {}) {
    auto& style = makeStyle(shop);
    style.loadKind(kind, {}, overlayOn);
    return style;
}

/// A value with a caret behind it.
Button::Style& makeSelectKind(const Workshop& shop, const std::string& kind) {
    auto& style = makeStyle(shop);
    style.loadKind(kind);
    style.textAlignment = Alignment::Left;
    style.textOffset = 8.0f;
    style.overlayAlignment = Alignment::Right;
    style.overlayMargin = 5.0f;
    return style;
}

template <typename Kind>
Kind& addButton(const Workshop& shop, Button::Style& style, const Rect& at, const std::string& caption) {
    auto& button = shop.ui().make<Kind>(shop.animator, &style);
    button.bounds = at;
    button.parent = &shop.parent;
    button.accessibleName = caption;
    button.setCaption(caption);
    return button;
}

void addKinds(const Workshop& shop, gui::Point at) {
    float x = at.x;
    for (const char* kind : {"Bar", "Dark", "Meter", "Hide", "Transparent", "Hotspots"}) {
        auto& style = makeKind(shop, kind);
        addCaption(shop, kind, Rect::ofSize(x, at.y - 16.0f, 84.0f, 14.0f), Alignment::Center);
        addButton<Button>(shop, style, Rect::ofSize(x, at.y, 84.0f, 20.0f), "Normal");
        addButton<Button>(shop, style, Rect::ofSize(x, at.y + 24.0f, 84.0f, 20.0f), "Highlighted")
            .highlighted = true;
        x += 92.0f;
    }
}

void addToggles(const Workshop& shop, gui::Point at) {
    addCaption(shop, "Toggles", Rect::ofSize(at.x, at.y - 16.0f, 200.0f, 14.0f));
    auto& bar = makeKind(shop, "Bar", "ButtonBarOn");
    addButton<gui::ToggleButton>(shop, bar, Rect::ofSize(at.x, at.y, 60.0f, 20.0f), "Off");
    addButton<gui::ToggleButton>(shop, bar, Rect::ofSize(at.x + 64.0f, at.y, 60.0f, 20.0f), "On").value = 1;
    auto& peak = makeStyle(shop);
    peak.loadImages({}, {}, {}, "ButtonTruePeakLimitingOff", "ButtonTruePeakLimitingOn");
    auto& truePeak =
        addButton<gui::ToggleButton>(shop, peak, Rect::ofSize(at.x + 132.0f, at.y, 80.0f, 20.0f), {});
    truePeak.accessibleName = "True Peak Limiting";
    truePeak.value = 1;
    const struct {
        const char* colour;
        const char* icon;
    } lamps[] = {{"Blue", "IconDC"},
                 {"Orange", "IconSideChain"},
                 {"Yellow", "IconUnityGain"},
                 {"Red", "IconAudition"}};
    float x = at.x + 220.0f;
    for (const bool on : {false, true}) {
        for (const auto& lamp : lamps) {
            auto& style = makeStyle(shop);
            style.loadImages({}, {}, {}, "ButtonToggleOff", std::string("ButtonToggle") + lamp.colour);
            auto& toggle =
                addButton<gui::ToggleButton>(shop, style, Rect::ofSize(x, at.y + 2.0f, 20.0f, 16.0f), {});
            toggle.accessibleName = lamp.icon;
            toggle.setIcon(lamp.icon);
            toggle.momentary = true;
            toggle.value = on;
            x += 23.0f;
        }
    }
}

void addRadioButtons(const Workshop& shop, gui::Point at) {
    addCaption(shop, "One of three", Rect::ofSize(at.x, at.y - 16.0f, 120.0f, 14.0f));
    auto& style = makeKind(shop, "Meter", "ButtonMeterOn");
    auto& group = shop.ui().make<gui::ToggleButton>();
    float x = at.x;
    for (const char* caption : {"M", "S", "I"}) {
        group.addButton(addButton<Button>(shop, style, Rect::ofSize(x, at.y, 26.0f, 20.0f), caption));
        x += 28.0f;
    }
    group.value = 1;
}

void addSelectors(const Workshop& shop, gui::Point at) {
    addCaption(shop, "Menus", Rect::ofSize(at.x, at.y - 16.0f, 120.0f, 14.0f));
    float x = at.x;
    for (const char* kind : {"Dark", "Bar", "Meter"}) {
        auto& select = addButton<gui::SelectButton>(shop, makeSelectKind(shop, kind),
                                                    Rect::ofSize(x, at.y, 104.0f, 20.0f), {});
        select.accessibleName = kind;
        select.setIcon("IconSelect");
        for (const char* item : {"Transparent", "Punchy", "Dynamic", "Allround", "Aggressive"}) {
            select.addItem(item);
        }
        select.menu().item(2)->enabled = false;
        select.value = 3;
        select.indeterminate = kind == std::string("Bar");
        x += 112.0f;
    }
    auto& off = addButton<gui::SelectButton>(shop, makeSelectKind(shop, "Dark"),
                                             Rect::ofSize(x, at.y, 104.0f, 20.0f), {});
    off.addItem("Disabled");
    off.value = 0;
    off.setIcon("IconSelect");
    off.enabled = false;
    off.alpha = kDisabledAlpha;
}

void addIcons(const Workshop& shop, gui::Point at) {
    addCaption(shop, "Icons", Rect::ofSize(at.x, at.y - 16.0f, 120.0f, 14.0f));
    auto& style = makeKind(shop, "Hover", "ButtonHoverOn");
    style.backgroundStyle = Button::BackgroundStyle::Centred;
    float x = at.x;
    for (const char* icon :
         {"IconUndo", "IconRedo", "IconPrevious", "IconNext", "IconMenu", "IconFullScreen"}) {
        auto& button = addButton<Button>(shop, style, Rect::ofSize(x, at.y, 20.0f, 20.0f), {});
        button.setIcon(icon);
        button.accessibleName = icon;
        button.highlighted = icon == std::string("IconMenu");
        x += 24.0f;
    }
}

}  // namespace

void addButtons(const Workshop& shop, gui::Point at) {
    addKinds(shop, at);
    addToggles(shop, {at.x, at.y + 70.0f});
    addRadioButtons(shop, {at.x + 456.0f, at.y + 70.0f});
    addSelectors(shop, {at.x, at.y + 116.0f});
    addIcons(shop, {at.x + 456.0f, at.y + 116.0f});
}

}  // namespace vanta::gallery
