#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace vanta::bench {

/// The names of this program's own functions by their address, those that are not exported as well: read from
/// its file, which must not be stripped.
class Symbols {
public:
    /// Throws std::runtime_error if the file has no names.
    Symbols();

    /// Readable; for an address in a library the name of its file.
    std::string nameOf(std::uintptr_t address) const;

private:
    struct Function {
        std::uintptr_t begin;
        std::uintptr_t end;
        std::string name;
    };
    std::vector<Function> functions_;  ///< by address
};

}  // namespace vanta::bench
