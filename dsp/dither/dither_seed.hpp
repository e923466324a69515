#pragma once

#include <cstdint>

namespace vanta {

/// Fixes the sequence from which dither generators made from now on take their seeds, so that a render can be
/// repeated bit for bit. Process-wide; any thread.
void setDitherSeed(std::uint32_t seed);
/// The next seed of the sequence. Any thread.
std::uint32_t nextDitherSeed();

}  // namespace vanta
