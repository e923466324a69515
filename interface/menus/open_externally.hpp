#pragma once

#include <string>

namespace vanta::interface {

/// Has the desktop open a file or a web address, by `xdg-open` and no shell. It runs on its own: nothing is
/// waited for, and it outlives us. False if it could not be started.
bool openExternally(const std::string& fileOrAddress);

}  // namespace vanta::interface
