#pragma once

#include <stdexcept>
#include <string>

namespace vanta {

/// A style source or record that cannot be used. The message has one line for each fault found.
class StyleError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

}  // namespace vanta
