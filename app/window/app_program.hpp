#pragma once

#include <string>
#include <vector>

namespace vanta {

/// Runs the program with these arguments, without its name, until its window is closed. The result is an
/// ExitCode; errors are one line on stderr.
int runAppProgram(const std::vector<std::string>& arguments);

}  // namespace vanta
