#pragma once

#include <stdexcept>

namespace vanta {

/// What the program's exit says to a script.
enum ExitCode { kExitDone = 0, kExitFailed = 1, kExitUsage = 2, kExitMissed = 3, kExitInterrupted = 130 };

/// The work cannot be done: a file, a disk, a signal that does not fit. The text is one line for the user.
class Failure : public std::runtime_error {
public:
    using runtime_error::runtime_error;
};

/// The command line asks for what there is not.
class UsageError : public std::runtime_error {
public:
    using runtime_error::runtime_error;
};

/// The user or the system asked to stop.
class Interrupted : public std::runtime_error {
public:
    Interrupted() : runtime_error("interrupted") {}
};

}  // namespace vanta
