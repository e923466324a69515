#pragma once

#include "gui/graphics/pixel_view.hpp"

namespace vanta::gui {

/// An antialiased line from one logical point to another; `width` is logical as well. Returns what it may
/// have changed.
DeviceRect paintLine(const PixelView& view, Point from, Point to, float width, float scale, Pixel color);

}  // namespace vanta::gui
