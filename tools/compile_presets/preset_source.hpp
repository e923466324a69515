#pragma once

#include <string>

#include "limiter/parameters/vanta_parameters.hpp"

namespace vanta {

/// Sets parameters as a preset source says. Each line is `Parameter = value`; a line that begins with "#" is
/// a comment. A choice is named by its label. A number is what the parameter itself counts in; with a unit
/// after it, it is read as a user would type it. Throws std::runtime_error with file and line for anything
/// else, for a value out of range and for a parameter that is named twice.
void applyPresetSource(VantaParameters& parameters, const std::string& text, const std::string& fileName);

}  // namespace vanta
