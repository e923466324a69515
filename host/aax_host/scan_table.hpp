#pragma once

#include <string>

#include "host/aax_host/aax_module.hpp"

namespace vanta {

/// What a module says of itself, as tables in Markdown: the module, its effects, and a row for each
/// component.
std::string scanTable(const AaxModule& module);

}  // namespace vanta
