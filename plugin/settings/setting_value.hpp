#pragma once

#include <cstdint>
#include <string>
#include <variant>
#include <vector>

namespace vanta {

/// A stored value keeps its type; asked for as another type it is absent.
using SettingValue = std::variant<std::int32_t, std::string, std::vector<std::uint8_t>>;

}  // namespace vanta
