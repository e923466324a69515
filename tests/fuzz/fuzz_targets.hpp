#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace vanta::fuzz {

/// Reads any bytes as some file of ours, and ends the process where an invariant breaks.
struct Target {
    std::string_view name;
    void (*run)(std::string_view bytes);
    /// Sound files to start from, one of each form that is read.
    std::vector<std::string> (*samples)();
    /// How many bytes of memory a byte of the file may ask for: more than one where it is compressed.
    std::size_t largestExpansion = 1;
};

std::span<const Target> targets();

}  // namespace vanta::fuzz
