#pragma once

#include <stdexcept>

namespace vanta {

/// Work cannot be done: a file, a disk, a signal that does not fit. The text is one line for the user and
/// says, where it can, what would be right.
class Failure : public std::runtime_error {
public:
    using runtime_error::runtime_error;
};

}  // namespace vanta
