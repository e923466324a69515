#pragma once

#include "gui/tree/control.hpp"

namespace vanta::interface {

/// Hears that the channels have another layout.
class ChannelLayoutDelegate : public gui::Component {
public:
    using Component::Component;
    virtual void channelLayoutChanged(int channels) = 0;
};

/// A control that is there only while the number of channels is within `minimum` and `maximum`.
class NumChannelsControlDelegate : public ChannelLayoutDelegate {
public:
    NumChannelsControlDelegate(gui::Control& watched, int fewest, int most)
        : ChannelLayoutDelegate(watched.ui()), minimum(fewest), maximum(most), control(&watched) {
        link(*this, watched);
    }

    void channelLayoutChanged(int channels) override {
        if (control) apply(channels >= minimum && channels <= maximum);
    }
    void linkRemoved(Component* other) override {
        if (other == static_cast<Component*>(control)) control = nullptr;
    }

    const int minimum;
    const int maximum;
    gui::Control* control;  ///< null: gone

protected:
    virtual void apply(bool fits) { control->visible = fits; }
};

/// One that can be used only then.
class NumChannelsControlEnableDelegate final : public NumChannelsControlDelegate {
public:
    using NumChannelsControlDelegate::NumChannelsControlDelegate;

protected:
    void apply(bool fits) override { control->enabled = fits; }
};

}  // namespace vanta::interface
