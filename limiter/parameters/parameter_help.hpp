#pragma once

#include <string>
#include <string_view>

namespace vanta {

/// What the parameter of this name does, in a few sentences for an engineer, on one line. Every row of the
/// table has such a text; any other name gives an empty one.
std::string parameterHelp(std::string_view name);

}  // namespace vanta
