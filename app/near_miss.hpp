#pragma once

#include <span>
#include <string>
#include <string_view>

namespace vanta {

/// The name that someone who typed `text` most likely meant, without regard to case; empty if none is near.
std::string nearMiss(std::string_view text, std::span<const std::string> names);

/// " (did you mean Modern?)", or nothing.
std::string suggestion(std::string_view text, std::span<const std::string> names);

}  // namespace vanta
