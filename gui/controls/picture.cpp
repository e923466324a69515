#include "gui/controls/picture.hpp"

#include "gui/graphics/bitmap_error.hpp"
#include "gui/tree/user_interface.hpp"

namespace vanta::gui {

std::unique_ptr<Bitmap> loadPicture(UserInterface& ui, const std::string& imageName) {
    std::unique_ptr<Bitmap> picture = ui.createBitmap();
    if (imageName.empty()) return picture;
    try {
        picture->load(imageName);
    } catch (const EBitmap&) {
        picture = ui.createBitmap();
    }
    return picture;
}

}  // namespace vanta::gui
