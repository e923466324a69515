#pragma once

#include <vector>

#include "gui/graphics/geometry.hpp"

namespace vanta::gui {

/// What of a bitmap a texture of it still lacks: all, nothing, or at most three rectangles.
class TextureUpdates {
public:
    enum class State { Whole, Parts, Current };

    State state() const { return state_; }
    const std::vector<DeviceRect>& parts() const { return parts_; }

    void markWhole();
    /// Makes a rectangle of its own of it where that saves pixels, or lets the one grow that grows least.
    void mark(const DeviceRect& changed);
    /// The texture has everything.
    void uploaded();

private:
    State state_ = State::Whole;
    std::vector<DeviceRect> parts_;
};

}  // namespace vanta::gui
