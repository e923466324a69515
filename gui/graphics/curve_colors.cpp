#include "gui/graphics/curve_colors.hpp"

#include <algorithm>

namespace vanta::gui {

CurveColors::CurveColors(const CurveSet& set, int alpha, int areaTop, int areaBottom)
    : top(toPixel(set.top.withAlpha(alpha))),
      bottom(toPixel(set.bottom.withAlpha(alpha))),
      set_(&set),
      alpha_(alpha),
      areaTop_(static_cast<float>(areaTop)),
      areaHeight_(static_cast<float>(std::max(areaBottom - areaTop, 1))) {
    for (std::size_t i = 0; i < entries.size(); ++i) {
        const CurveEntry& entry = set.entries[i];
        entries[i] = {toPixel(entry.above.withAlpha(alpha)), toPixel(entry.line.withAlpha(alpha)),
                      toPixel(entry.below.withAlpha(alpha))};
    }
}

Pixel CurveColors::lineAt(std::size_t entry, float y) const {
    const Gradient* gradient = set_->entries[entry].lineGradient;
    return gradient ? toPixel(gradient->at((y - areaTop_) / areaHeight_).withAlpha(alpha_))
                    : entries[entry].line;
}

}  // namespace vanta::gui
