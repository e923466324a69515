#pragma once

#include "interface/layout/layout_context.hpp"

namespace vanta::interface {

/// Style and the three times.
class LimitingControls {
public:
    struct Places {
        gui::Rect style;
        gui::Point lookahead;
        gui::Point attack;
        gui::Point release;
    };

    /// Bound, in the factory's parent.
    LimitingControls(const LayoutContext& context, const Places& places);

    gui::SelectButton& style() const { return *style_; }
    gui::Knob& lookahead() const { return *lookahead_; }
    gui::Knob& attack() const { return *attack_; }
    void follow(const ParameterChange& change);

private:
    const LayoutContext& context_;
    gui::SelectButton* style_;
    gui::Knob* lookahead_;
    gui::Knob* attack_;
};

}  // namespace vanta::interface
