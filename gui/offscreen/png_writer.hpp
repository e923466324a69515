#pragma once

#include <string>

namespace vanta::gui {

class Bitmap;

/// Writes a bitmap over black as a PNG file of 8 bits RGB. Throws std::runtime_error if the file cannot be
/// written.
void writePng(const Bitmap& bitmap, const std::string& path);

}  // namespace vanta::gui
