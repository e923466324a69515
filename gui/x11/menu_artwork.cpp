#include "gui/x11/menu_artwork.hpp"

#include "gui/graphics/bitmap_error.hpp"

namespace vanta::gui {
namespace {

void loadIfThere(Bitmap& bitmap, const char* name) {
    try {
        bitmap.load(name);
    } catch (const EBitmap&) {
        // The menu has colours of its own below its pictures.
    }
}

}  // namespace

MenuArtwork::MenuArtwork(DeviceBacking& backing)
    : background(backing), activeItem(backing), separator(backing), check(backing), submenu(backing) {
    loadIfThere(background, "MenuBackground");
    loadIfThere(activeItem, "MenuItemActive");
    loadIfThere(separator, "MenuSeparator");
    loadIfThere(check, "IconMenuCheck");
    loadIfThere(submenu, "IconMenuSubmenu");
}

}  // namespace vanta::gui
