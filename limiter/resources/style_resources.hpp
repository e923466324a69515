#pragma once

#include <span>

#include "foundation/resource.hpp"

namespace vanta {

/// The styles as records, such as "modern.limiter", in the order in which the Style parameter names them.
/// Built from resources/styles/ by the build; lives as long as the process.
std::span<const Resource> styleResources();

}  // namespace vanta
