#pragma once

#include <filesystem>
#include <span>

#include "foundation/failure.hpp"

namespace vanta {

/// The output exists, and there was no permission to replace it.
class OutputExists : public Failure {
public:
    using Failure::Failure;
};

/// Failure if `output` may not be written: it is one of the files that are read, it is not a regular file,
/// its folder is missing, or it exists and `replace` is false (OutputExists).
void checkOutput(const std::filesystem::path& output, std::span<const std::filesystem::path> read,
                 bool replace);

}  // namespace vanta
