#pragma once

#include <string>

#include "gui/graphics/bitmap.hpp"

namespace vanta::test {

/// Compares a bitmap, seen over the grey of the interface's ground, with tests/gui/pictures/NAME.png. No
/// byte of a pixel may differ by more than `tolerance`. With VANTA_REWRITE_PICTURES in the environment the
/// picture is written instead; look at it before you commit it.
void expectPicture(const gui::Bitmap& bitmap, const std::string& name, int tolerance = 0);

/// "NAME-150" for scale 1.5.
std::string atScale(const std::string& name, float scale);

}  // namespace vanta::test
