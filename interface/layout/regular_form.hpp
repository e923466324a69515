#pragma once

#include "interface/controls/gain_slider.hpp"
#include "interface/display/scale_strip.hpp"
#include "interface/layout/advanced_panel.hpp"
#include "interface/layout/display_buttons.hpp"
#include "interface/layout/interface_form.hpp"
#include "interface/layout/output_card.hpp"
#include "interface/loudness/vanta_meter_panel.hpp"

namespace vanta::interface {

/// The display fills the window; gain, advanced panel, output and meters lie along its edges.
class RegularForm final : public InterfaceForm, private gui::Component {
public:
    static constexpr float kWidth = 800.0f;
    static constexpr float kHeight = 480.0f;

    /// In the factory's parent, which is of that size and may be sized then.
    explicit RegularForm(const LayoutContext& context);
    ~RegularForm() override;

    bool isCompact() const override { return false; }
    void layOut() override;
    void follow(const ParameterChange& change) override;
    void channelLayoutChanged() override;
    void setSampleRate(float rate) override { display_->sampleRate = rate; }
    void restartPicture() override { display_->restart(); }

    LimiterDisplay& display() const { return *display_; }
    VantaMeterPanel& panel() const { return *panel_; }
    AdvancedPanel& advanced() { return advanced_; }
    GainSlider& gain() const { return *gain_; }
    DisplayButtons& buttons() { return buttons_; }
    ScaleStrip& scale() { return scale_; }
    OutputCard& card() { return card_; }
    void linkRemoved(Component* other) override;

private:
    LimiterDisplay& makeDisplay() const;
    VantaMeterPanel& makePanel();
    GainSlider& makeGain() const;
    void panelResized(void*);
    void placeDisplay();
    void followDisplay(const ParameterChange& change);

    const LayoutContext& context_;
    gui::Control* parent_;
    LimiterDisplay* display_;
    ScaleStrip scale_;
    VantaMeterPanel* panel_;
    AdvancedPanel advanced_;
    OutputCard card_;
    GainSlider* gain_;
    gui::Image* gainLabel_;
    DisplayButtons buttons_;
    bool isPictureShown_ = true;
};

}  // namespace vanta::interface
