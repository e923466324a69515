#pragma once

#include <memory>

#include "gui/graphics/bitmap.hpp"
#include "gui/graphics/texture_updates.hpp"
#include "gui/opengl/texture_registry.hpp"

namespace vanta::gui {

/// The texture of a bitmap, made when it is drawn first, and what it lacks of the bitmap.
struct BitmapTexture {
    BitmapTexture() = default;
    ~BitmapTexture() { drop(); }
    BitmapTexture(const BitmapTexture&) = delete;
    BitmapTexture& operator=(const BitmapTexture&) = delete;

    /// The registry has the number from now on.
    void adopt(const std::shared_ptr<TextureRegistry>& textures, GLuint texture);
    void drop();

    std::shared_ptr<TextureRegistry> registry;  ///< null as long as there is no texture
    GLuint name = 0;
    TextureUpdates updates;
};

/// A bitmap that OpenGL draws as well: it keeps account of what has changed since it was uploaded.
class AcceleratedBitmap final : public Bitmap {
public:
    using Bitmap::Bitmap;

    void markDirty(const DeviceRect& changed) override { texture_.updates.mark(changed); }
    /// For the renderer, which changes nothing that can be seen.
    BitmapTexture& texture() const { return texture_; }

protected:
    void pixelsReplaced() override { texture_.updates.markWhole(); }

private:
    mutable BitmapTexture texture_;
};

}  // namespace vanta::gui
