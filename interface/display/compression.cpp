#include "interface/display/compression.hpp"

#include <algorithm>
#include <cstdint>

namespace vanta::interface {
namespace {

bool isPeak(RealTimeOperation operation, float position, float than) {
    return isBeyond(operation, -position, -than);
}

}  // namespace

void compressTable(std::span<const float> table, int count, RealTimeOperation operation,
                   std::vector<float>& compressed) {
    const auto entries = static_cast<std::int64_t>(table.size());
    const std::int64_t columns = entries - kTableLead;
    const std::int64_t newColumns = std::min<std::int64_t>(count - kTableLead, columns);
    compressed.assign(table.begin(), table.begin() + std::min<std::int64_t>(kTableLead, entries));
    std::int64_t next = kTableLead;
    for (std::int64_t k = 1; k <= newColumns; ++k) {
        const std::int64_t last = columns * k / newColumns + 1;
        float extreme = table[static_cast<std::size_t>(next)];
        for (++next; next <= last; ++next) {
            const float position = table[static_cast<std::size_t>(next)];
            if (isPeak(operation, position, extreme)) extreme = position;
        }
        compressed.push_back(extreme);
    }
}

}  // namespace vanta::interface
