#pragma once

#include "gui/graphics/bitmap.hpp"

namespace vanta::gui {

/// The pictures that menus are drawn with. One that cannot be read is empty.
struct MenuArtwork {
    explicit MenuArtwork(DeviceBacking& backing);

    Bitmap background;
    Bitmap activeItem;
    Bitmap separator;
    Bitmap check;
    Bitmap submenu;
};

}  // namespace vanta::gui
