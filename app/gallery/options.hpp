#pragma once

#include <span>
#include <string>

namespace vanta::gallery {

struct Options {
    bool help = false;
    float scale = 1.0f;  ///< 1, 1.5 or 2
    std::string screenshot;
};

extern const char* const kUsage;

/// Throws std::invalid_argument that says what would be right.
Options parseOptions(std::span<char* const> arguments);

}  // namespace vanta::gallery
