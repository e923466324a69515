#pragma once

#include <span>
#include <string>
#include <string_view>

namespace vanta {

/// `; did you mean "Detector 1 Mode"?` with the candidate closest to `name` in its spelling, whatever its
/// case, or nothing if none comes close.
std::string nearMissHint(std::string_view name, std::span<const std::string_view> candidates);

}  // namespace vanta
