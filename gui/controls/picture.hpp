#pragma once

#include <memory>
#include <string>

#include "gui/graphics/bitmap.hpp"

namespace vanta::gui {

class UserInterface;

/// A picture of the program's resources. Without a name, or where it cannot be read, it is empty: a control
/// that lacks a picture still works.
std::unique_ptr<Bitmap> loadPicture(UserInterface& ui, const std::string& imageName);

/// The opacity of a picture at a point of it, 0 to 255.
inline int opacityAt(const Bitmap& picture, Point point) {
    return picture.logicalRect().contains(point) ? picture.pixelAt(point).alpha : 0;
}

}  // namespace vanta::gui
