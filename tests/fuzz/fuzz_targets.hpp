#pragma once

#include <span>
#include <string>
#include <string_view>

namespace vanta::fuzz {

/// Reads any bytes as some file of ours, and ends the process where an invariant breaks.
struct Target {
    std::string_view name;
    void (*run)(std::string_view bytes);
    std::string (*sample)();  ///< a sound file to start from
};

std::span<const Target> targets();

}  // namespace vanta::fuzz
