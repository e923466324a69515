#pragma once

#include <fmt/format.h>

#include <span>
#include <string>
#include <string_view>

#include "foundation/near_miss.hpp"

namespace vanta {

/// " (did you mean Modern?)", or nothing.
inline std::string suggestion(std::string_view text, std::span<const std::string> names) {
    const std::string meant = nearMiss(text, names);
    return meant.empty() ? std::string() : fmt::format(" (did you mean {}?)", meant);
}

}  // namespace vanta
