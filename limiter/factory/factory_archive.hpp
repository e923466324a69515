#pragma once

#include <cstddef>
#include <span>

namespace vanta {

/// The archive that is made of resources/presets/; see plugin/presets/setup_archive.hpp.
std::span<const std::byte> factoryArchive();

/// Enters the archive among the program's resources, where restoreFactoryPresets looks for it. May be called
/// again.
void registerFactoryArchive();

}  // namespace vanta
