#pragma once

#include <string>

#include "gui/animation/animator.hpp"
#include "gui/controls/label.hpp"
#include "gui/controls/value_entry.hpp"
#include "gui/graphics/color.hpp"

namespace vanta::gallery {

/// What all parts of the page use.
struct Workshop {
    gui::Control& parent;
    gui::Animator* animator;  ///< null: all changes at once
    gui::ValueEntry& entry;

    gui::UserInterface& ui() const { return parent.ui(); }
};

inline constexpr gui::Color kButtonText = gui::Color::of(0xFFC8C8C8);
inline constexpr gui::Color kCaption = gui::Color::of(0xFFAFA19A);
inline constexpr gui::Color kValue = gui::Color::of(0xFFF0E9E6);
/// Of a control that cannot be used.
inline constexpr int kDisabledAlpha = 90;

/// A heading or a name on the page, dimmer than what can be held.
gui::Label& addCaption(const Workshop& shop, const std::string& text, const gui::Rect& at,
                       gui::Alignment alignment = gui::Alignment::Left);

/// What a control stands for, in a row of its own below it.
class ValueLabel : public gui::Label {
public:
    ValueLabel(gui::UserInterface& interface, const Workshop& shop, gui::ValueControl& control);

private:
    void valueChanged(void*) { setText(control_.valueText()); }
    gui::ValueControl& control_;
};

void addKnobs(const Workshop& shop, gui::Point at);
void addButtons(const Workshop& shop, gui::Point at);
/// The upright one is the result.
gui::ValueControl& addSliders(const Workshop& shop, gui::Point at);
void addPanels(const Workshop& shop, gui::Point at);
void addLabels(const Workshop& shop, gui::Point at);
/// What a slider's value does to curves.
void addCurves(const Workshop& shop, const gui::Rect& at, gui::ValueControl& ceiling);
void addDialogs(const Workshop& shop, gui::Point at);

}  // namespace vanta::gallery
