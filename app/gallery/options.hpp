#pragma once

#include <span>
#include <string>

namespace vanta::gallery {

struct Options {
    bool help = false;
    bool openGl = false;
    float scale = 0.0f;      ///< 1, 1.5 or 2; 0 as the desktop wants
    std::string screenshot;  ///< empty: a window
};

extern const char* const kUsage;

/// Throws std::invalid_argument that says what would be right.
Options parseOptions(std::span<char* const> arguments);

}  // namespace vanta::gallery
