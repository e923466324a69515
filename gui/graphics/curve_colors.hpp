#pragma once

#include <array>

#include "gui/graphics/curve.hpp"
#include "gui/graphics/geometry.hpp"
#include "gui/graphics/pixel.hpp"

namespace vanta::gui {

/// The colours of a set of curves, faded and premultiplied.
class CurveColors {
public:
    struct Entry {
        Pixel above, line, below;
    };

    /// `areaTop` and `areaBottom` bound the area along the curves' values, in device pixels. The set stays
    /// with the caller.
    CurveColors(const CurveSet& set, int alpha, int areaTop, int areaBottom);

    /// Of the line at a place along its values, in device pixels.
    Pixel lineAt(std::size_t entry, float y) const;
    bool hasGradient(std::size_t entry) const { return set_->entries[entry].lineGradient != nullptr; }

    Pixel top;
    std::array<Entry, 2> entries;
    Pixel bottom;

private:
    const CurveSet* set_;
    int alpha_;
    float areaTop_;
    float areaHeight_;
};

}  // namespace vanta::gui
