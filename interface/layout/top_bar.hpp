#pragma once

#include "interface/layout/bar_row.hpp"
#include "interface/layout/layout_context.hpp"

namespace vanta::interface {

/// How far the controls of the bars spread on a root of a width. Beyond `kBand` they stay in its middle, and
/// from `kWide` on the corners have the buttons of the window.
struct BarBand {
    static constexpr int kBand = 850;
    static constexpr int kWide = 1060;

    explicit BarBand(float rootWidth);

    int whole;  ///< the whole part of the root's width
    float left;
    float width;
    bool isWide() const { return whole >= kWide; }
};

/// The bar with the logo: undo, comparison, presets, output lock, help, full screen.
class TopBar {
public:
    explicit TopBar(const LayoutContext& context);

    void layOut(bool isCompact);

private:
    const LayoutContext& context_;
    gui::Image* picture_;
    gui::Control* ground_;  ///< takes what is clicked beside the buttons
    BarRow row_;
    HotspotButton* presets_;
    gui::Control* lastGap_;  ///< before Full Screen
    gui::Button* fullScreen_;
};

}  // namespace vanta::interface
