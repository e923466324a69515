#include "interface/meters/level_text.hpp"

#include <fmt/printf.h>

namespace vanta::interface {

std::string signedNumber(const std::string& format, float value) {
    std::string text = fmt::sprintf(format, static_cast<double>(value));
    const bool isZero = text.find_first_of("123456789") == std::string::npos;
    return isZero && text.starts_with('-') ? fmt::sprintf(format, 0.0) : text;
}

}  // namespace vanta::interface
