#pragma once

#include <cstddef>

/// Extremes of a block of at least one sample.
namespace vanta::kernel {

float highestMagnitude(const float* samples, std::size_t count);
float lowestMagnitude(const float* samples, std::size_t count);
float highest(const float* samples, std::size_t count);
float lowest(const float* samples, std::size_t count);

}  // namespace vanta::kernel
