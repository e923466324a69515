#pragma once

#include <string>

#include "cli/session_file.hpp"

namespace vanta {

/// The state as a table: its preset, and every parameter in its own words, in both compare slots if they are
/// in use.
std::string stateText(SessionInstance& instance);
/// The same as a JSON object. Values are the parameters' own numbers, and read back as the same floats.
std::string stateJson(SessionInstance& instance);

}  // namespace vanta
