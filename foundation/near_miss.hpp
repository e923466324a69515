#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace vanta {

/// The name that someone who typed `text` most likely meant, without regard to case; empty if none is near.
/// A beginning of two characters or more counts as near.
std::string_view nearMiss(std::string_view text, std::span<const std::string_view> names);

/// `: did you mean "Detector 1 Mode"?`, or nothing.
std::string nearMissHint(std::string_view text, std::span<const std::string_view> names);

inline std::string nearMiss(std::string_view text, std::span<const std::string> names) {
    const std::vector<std::string_view> views(names.begin(), names.end());
    return std::string(nearMiss(text, std::span<const std::string_view>(views)));
}

}  // namespace vanta
