#pragma once

#include <cstddef>
#include <vector>

#include "gui/graphics/color.hpp"

namespace vanta::gui {

/// Colours along a way from 0 to 1. Lookups near the last one are quick; one thread at a time.
class Gradient {
public:
    struct Stop {
        Color color;
        float position;
        bool operator==(const Stop&) const = default;
    };

    Gradient() = default;
    /// In the order of their positions. Where two share one, the later colour holds.
    explicit Gradient(std::vector<Stop> stops);
    Gradient(Color first, Color last);
    Gradient(Color first, Color middle, float middlePosition, Color last);

    bool isEmpty() const { return stops_.empty(); }
    /// The first colour before the first stop, the last one after the last; all zero if there is none.
    Color at(float position) const;
    /// The same with all opacities times `alpha` / 255.
    Gradient scaled(int alpha) const;
    bool operator==(const Gradient& other) const { return stops_ == other.stops_; }

private:
    bool brackets(std::size_t stop, float position) const;

    mutable std::size_t cursor_ = 0;  ///< the stop before the last position asked for
    std::vector<Stop> stops_;
};

}  // namespace vanta::gui
