#pragma once

#include <string>

namespace vanta {

/// The limiting styles, one a line.
std::string styleList();
/// The parameters with ranges, defaults and units; `withHelp` adds what each is for.
std::string parameterList(bool withHelp);
/// The file types and subtypes that can be written.
std::string formatList();
/// The channel layouts, with their channels in order.
std::string layoutList();

}  // namespace vanta
