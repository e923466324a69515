#pragma once

#include <stdexcept>

namespace vanta::gui {

/// A picture cannot be read.
class EBitmap : public std::runtime_error {
public:
    using runtime_error::runtime_error;
};

}  // namespace vanta::gui
