#include "gui/graphics/image_resource.hpp"

#include <cmath>
#include <limits>
#include <optional>
#include <string>

#include "foundation/resource.hpp"
#include "gui/graphics/bitmap_error.hpp"

namespace vanta::gui {

ImageResource findImage(std::string_view name, float scale) {
    const std::string plainName(name.substr(0, name.rfind('.')));
    const auto plain = findResource(plainName);
    const auto twofold = findResource(plainName + "_2x");
    const bool wantsTwofold = std::abs(scale - 1.0f) > std::numeric_limits<float>::epsilon();
    if (twofold && (wantsTwofold || !plain)) return {*twofold, 2.0f};
    if (plain) return {*plain, 1.0f};
    throw EBitmap("Resource not found");
}

}  // namespace vanta::gui
