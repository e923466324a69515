#include "gui/opengl/accelerated_bitmap.hpp"

namespace vanta::gui {

void BitmapTexture::adopt(const std::shared_ptr<TextureRegistry>& textures, GLuint texture) {
    drop();
    registry = textures;
    name = texture;
    registry->add(name);
    updates.markWhole();
}

void BitmapTexture::drop() {
    if (registry) registry->retire(name);
    registry.reset();
    name = 0;
}

}  // namespace vanta::gui
