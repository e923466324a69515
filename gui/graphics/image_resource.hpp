#pragma once

#include <cstddef>
#include <span>
#include <string_view>

namespace vanta::gui {

struct ImageResource {
    std::span<const std::byte> bytes;
    float imageScale;  ///< pixels of the file per logical unit: 1 or 2
};

/// The file of a picture in the program's resources, where it stands without its extension: the one for a
/// double density, its name followed by _2x, where the display is not at scale 1 or there is no other.
/// `name` is like a file's, "Background.png". Throws EBitmap if there is neither.
ImageResource findImage(std::string_view name, float scale);

}  // namespace vanta::gui
