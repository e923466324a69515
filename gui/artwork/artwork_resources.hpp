#pragma once

#include <span>

#include "foundation/resource.hpp"

namespace vanta::gui {

/// The pictures of the interface as PNG files of double density, such as "BUTTONBARNORMAL_2X": 8 bits, RGB or
/// RGBA, gAMA 45455, both sizes divisible by 4. Built from resources/artwork/ by the build; lives as long as
/// the process.
std::span<const Resource> artworkResources();

}  // namespace vanta::gui
