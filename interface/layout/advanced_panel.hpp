#pragma once

#include <vector>

#include "interface/layout/channel_link_group.hpp"
#include "interface/layout/limiting_controls.hpp"

namespace vanta::interface {

/// Style, times and channel link on a panel that slides in from the left. Its tab stays.
class AdvancedPanel {
public:
    static constexpr float kWidth = 523.0f;
    static constexpr float kHeight = 122.0f;
    static constexpr int kMoveMs = 500;

    /// For a parent of 800 x 480, which may be sized then.
    explicit AdvancedPanel(const LayoutContext& context);

    /// Without an animation: the window has another size.
    void place();
    void follow(const ParameterChange& change);
    void channelLayoutChanged() { channelLink_.follow(); }

    /// What it covers of its parent when it has come out: the panel and its tab. Empty while it is put away.
    std::vector<gui::Rect> covered() const;

    gui::AnimatedControl& panel() const { return *panel_; }
    gui::ToggleButton& tab() const { return *tab_; }
    gui::Button& heading() const { return *heading_; }
    const LimitingControls& limiting() const { return limiting_; }
    const ChannelLinkGroup& channelLink() const { return channelLink_; }

private:
    gui::AnimatedControl& makePanel() const;
    gui::Control& makeInside() const;
    LimitingControls makeLimiting() const;
    ChannelLinkGroup makeChannelLink() const;
    void addButtons();
    bool isShown() const;
    float target() const;
    void move();
    void arrived(void*);
    void headingClicked(void*);

    const LayoutContext& context_;
    gui::AnimatedControl* panel_;
    gui::Control* inside_;  ///< what is hidden with the panel
    LimitingControls limiting_;
    ChannelLinkGroup channelLink_;
    gui::ToggleButton* tab_ = nullptr;
    gui::Button* heading_ = nullptr;
    gui::Label* styleCaption_ = nullptr;
    bool wasShown_ = false;
};

/// What the left of a wide window keeps free: the whole part of a fortieth of it less 16, from 0 to 29.
float leftMargin(float rootWidth);

}  // namespace vanta::interface
