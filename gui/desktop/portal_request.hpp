#pragma once

#include <string>

#include "gui/desktop/file_question.hpp"

using GVariant = struct _GVariant;

namespace vanta::gui {

/// The name of the portal's method.
const char* portalMethod(const FileQuestion& question);
/// Its arguments, floating: window, title and options. `token` names the request.
GVariant* portalArguments(const FileQuestion& question, const std::string& token);
/// The first path in the results of an answer; empty if there is none on this computer.
std::string pathOf(GVariant* results);

}  // namespace vanta::gui
