#pragma once

#include <stdexcept>

namespace vanta {

/// What the program's exit says to a script.
enum ExitCode { kExitDone = 0, kExitFailed = 1, kExitUsage = 2, kExitMissed = 3, kExitInterrupted = 130 };

/// Wrong usage. The text is one line and says what would be right.
class UsageError : public std::runtime_error {
public:
    using runtime_error::runtime_error;
};

}  // namespace vanta
