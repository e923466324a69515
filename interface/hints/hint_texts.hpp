#pragma once

#include <string>
#include <string_view>

namespace vanta::interface {

/// What the thing of this name is for and when to touch it, on one line; empty if there is no such text.
/// The names are those of buttons, meters and display modes. Parameters bring their own texts.
std::string hintText(std::string_view name);

}  // namespace vanta::interface
