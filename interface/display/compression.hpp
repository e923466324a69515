#pragma once

#include <span>
#include <vector>

#include "interface/display/column_queue.hpp"

namespace vanta::interface {

/// Entries before the first column of a table of positions.
inline constexpr int kTableLead = 2;

/// Squeezes a table of positions into `count` entries, of which none is lost that is extreme: each new
/// column is the most extreme of the old ones that it stands for. Positions grow downwards, so that the
/// greatest level is the least position. The first kTableLead entries stay.
void compressTable(std::span<const float> table, int count, RealTimeOperation operation,
                   std::vector<float>& compressed);

}  // namespace vanta::interface
