#pragma once

#include "gui/controls/light.hpp"
#include "interface/layout/bar_row.hpp"
#include "interface/layout/dither_menu.hpp"
#include "interface/layout/output_toggles.hpp"

namespace vanta::interface {

/// MIDI learn, true-peak limiting, oversampling, dither, bypass and the size; in Compact also the output
/// level and the four toggles, which in all other sizes stand in the output card.
class BottomBar {
public:
    explicit BottomBar(const LayoutContext& context);

    void layOut(bool isCompact);
    void follow(const ParameterChange& change);
    void controllerMoved() { light_->flash(); }

    OutputToggles& toggles() { return *toggles_; }
    DitherMenu& dither() { return *dither_; }
    HotspotButton& resizeButton() const { return *resize_; }
    gui::Control& corner() const { return *corner_; }
    /// A click on it types the output level.
    gui::Button& outputLevel() const { return *outputLevel_; }

private:
    void addMidi();
    void addProcessing();
    void addOutput();
    gui::Control& addGap(float regular, float compact);
    gui::Label& addText(float width, const std::string& text);
    void setForm(bool isCompact);
    void typeOutputLevel(void*);

    struct Gap {
        gui::Control* control;
        float regular;
        float compact;
    };

    const LayoutContext& context_;
    gui::Image* picture_;
    gui::Image* corner_;  ///< the right end of the bar, where the window is wide
    BarRow row_;
    std::vector<Gap> gaps_;
    gui::Light* light_ = nullptr;
    std::unique_ptr<DitherMenu> dither_;
    gui::Control* flexible_ = nullptr;
    gui::Label* bypassLabel_ = nullptr;
    gui::Button* outputLevel_ = nullptr;
    std::unique_ptr<OutputToggles> toggles_;
    std::vector<gui::Control*> compactOnly_;
    HotspotButton* resize_ = nullptr;
};

}  // namespace vanta::interface
