#pragma once

#include <cstdint>
#include <optional>

#include "host/common/embedded_view.hpp"

namespace vanta::vst3 {

/// A key as hosts hand it to a view: a UTF-16 character or 0, a virtual key or 0, and bits of modifiers.
/// Nothing for keys that no interface of ours knows.
std::optional<ViewKey> viewKeyOf(std::int16_t character, std::int16_t code, std::int16_t modifiers);

}  // namespace vanta::vst3
