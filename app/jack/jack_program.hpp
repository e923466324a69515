#pragma once

#include <string>
#include <vector>

namespace vanta {

/// Runs the program with these arguments, without its name, until it is interrupted or the server ends. The
/// result is an ExitCode; errors are one line on stderr.
int runJackProgram(const std::vector<std::string>& arguments);

}  // namespace vanta
