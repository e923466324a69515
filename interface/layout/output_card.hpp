#pragma once

#include "interface/layout/output_toggles.hpp"

namespace vanta::interface {

/// Output Level and the four toggles on a card at the lower right of the regular form.
class OutputCard {
public:
    /// Bound, for a parent of 800 x 480, which may be sized then.
    explicit OutputCard(const LayoutContext& context);

    /// The level meters begin at `right`; the card stands beside them, or over them where `clearOf` is
    /// further to the right than its place.
    void place(float right, float clearOf);
    void follow(const ParameterChange& change);
    gui::Rect bounds() const { return backdrop_->bounds; }
    /// It had to make room to the right.
    bool isOverMeters() const { return isOverMeters_; }
    gui::Control& backdrop() const { return *backdrop_; }
    gui::Knob& knob() const { return *knob_; }
    gui::Label& value() const { return *value_; }

private:
    const LayoutContext& context_;
    gui::Image* backdrop_;
    gui::Control* card_;
    gui::Knob* knob_ = nullptr;
    gui::Label* value_ = nullptr;
    bool isOverMeters_ = false;
};

}  // namespace vanta::interface
