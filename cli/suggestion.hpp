#pragma once

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <span>
#include <string>
#include <string_view>

#include "cli/exit_code.hpp"
#include "foundation/near_miss.hpp"

namespace vanta {

/// " (did you mean Modern?)", or nothing.
inline std::string suggestion(std::string_view text, std::span<const std::string> names) {
    const std::string meant = nearMiss(text, names);
    return meant.empty() ? std::string() : fmt::format(" (did you mean {}?)", meant);
}

/// "unknown layout '5.2' (did you mean 5.1?): use mono, stereo, ..."
inline UsageError unknownName(std::string_view what, std::string_view name,
                              std::span<const std::string> known) {
    return UsageError(fmt::format("unknown {} '{}'{}: use {}", what, name, suggestion(name, known),
                                  fmt::join(known, ", ")));
}

}  // namespace vanta
