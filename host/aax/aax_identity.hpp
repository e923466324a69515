#pragma once

#include <optional>
#include <string>
#include <vector>

#include "foundation/channel_layout.hpp"
#include "host/aax/standin/aax.hpp"
#include "plugin/settings/product.hpp"

namespace vanta {

/// What a component is for; bits that add up.
inline constexpr int kAaxMono = 1;
inline constexpr int kAaxMonoToStereo = 4;
inline constexpr int kAaxAudioSuite = 8;

// Sessions find the plug-in by what follows: it stays as it is.

AAX_CTypeID aaxManufacturerId();
/// Of a component with these flags; without a layout that of mono or stereo, as the flags say.
AAX_CTypeID aaxPluginId(int flags, std::optional<ChannelLayout> layout = {});
/// "com.quillmark.Vanta.2.AAX.AS.Mono"
std::string aaxEffectId(const Product& product, int flags);

/// From the longest to the shortest.
std::vector<std::string> aaxEffectNames(int flags);
/// With the maker's name in front, and without.
std::vector<std::string> aaxPackageNames();

}  // namespace vanta
