#pragma once

namespace vanta {

/// Enters the maps from older preset versions to today's among the program's resources. May be called again.
void registerPresetMaps();

}  // namespace vanta
