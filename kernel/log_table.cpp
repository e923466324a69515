#include "kernel/log_table.hpp"

#include <cmath>

namespace vanta::kernel {

namespace {

std::array<LogTableEntry, kLogTableSize> makeLogTable() {
    std::array<LogTableEntry, kLogTableSize> table{};
    for (std::size_t i = 0; i < kLogTableSize; ++i) {
        const double m = 1.0 + static_cast<double>(i) / static_cast<double>(kLogTableSize);
        const double rise = std::log(m + 0.0004882216453552246) - std::log(m);
        table[i].log = static_cast<float>(std::log(m));
        table[i].slope = static_cast<float>(rise * 0.00024417043096081065);
    }
    table.back().slope = static_cast<float>(1.1920928955078125e-07 /
                                            (1.0 + static_cast<double>(kLogTableSize - 1) / kLogTableSize));
    return table;
}

}  // namespace

const std::array<LogTableEntry, kLogTableSize> kLogTable = makeLogTable();

}  // namespace vanta::kernel
