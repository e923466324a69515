#pragma once

#include <string>

namespace vanta::interface {

/// Prints with a printf format for one double. What rounds to zero is positive: "+0.0", never "-0.0".
std::string signedNumber(const std::string& format, float value);

}  // namespace vanta::interface
