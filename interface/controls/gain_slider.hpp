#pragma once

#include <memory>

#include "gui/controls/switch.hpp"

namespace vanta::interface {

/// The tall slider of Gain. Its groove glows the more the further up, and its thumb carries the value.
class GainSlider : public gui::Switch {
public:
    GainSlider(gui::UserInterface& interface, gui::Animator* animatedBy, Style& sharedStyle);

    /// On the thumb.
    gui::Text& caption() { return *caption_; }
    /// What the groove glows with, in the groove's own coordinates.
    const gui::Bitmap& meter() const { return *meter_; }

    void resized() override;
    void refreshTree() override;

protected:
    void paintTrack(gui::Canvas& canvas) override;
    void paintThumb(gui::Canvas& canvas) override;

private:
    void renderMeter();
    /// Where the groove is drawn.
    gui::Rect groove() const;
    void captionChanged(void*) { markDirty(); }

    std::unique_ptr<gui::Bitmap> meter_;
    std::unique_ptr<gui::Text> caption_;
};

}  // namespace vanta::interface
