#pragma once

#include <string>
#include <vector>

namespace vanta {

/// Runs the program with the arguments behind its name. The result is its exit code, an ExitCode; what went
/// wrong has been told on stderr, in one line.
int runCommandLine(const std::vector<std::string>& arguments);

}  // namespace vanta
