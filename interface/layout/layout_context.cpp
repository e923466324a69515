#include "interface/layout/layout_context.hpp"

#include <fmt/format.h>

#include <cmath>

namespace vanta::interface {

std::string shortOutputLevel(const VantaPlugin& plugin) {
    const float level = std::round(plugin.outputLevel.value() * 10.0f) / 10.0f;
    return fmt::format("{:.1f} {}", level == 0.0f ? 0.0f : level,
                       plugin.truePeakLimiting.mapped() ? "dBTP" : "dB");
}

}  // namespace vanta::interface
