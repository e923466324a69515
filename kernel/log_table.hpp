#pragma once

#include <array>
#include <cstddef>

namespace vanta::kernel {

inline constexpr std::size_t kLogTableSize = 2048;

/// ln(1 + i/2048) and the mean slope up to the next entry, a unit of the low 12 mantissa bits. Pairs, so that
/// one load brings both.
struct alignas(8) LogTableEntry {
    float log;
    float slope;
};

/// Made at load: the audio thread must find it ready.
extern const std::array<LogTableEntry, kLogTableSize> kLogTable;

}  // namespace vanta::kernel
