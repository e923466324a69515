#pragma once

#include <array>
#include <memory>
#include <vector>

#include "gui/graphics/canvas.hpp"
#include "gui/graphics/copied_area.hpp"
#include "gui/graphics/device_backing.hpp"
#include "gui/graphics/pixel.hpp"
#include "gui/opengl/accelerated_bitmap.hpp"
#include "gui/opengl/acceleration_mode.hpp"
#include "gui/opengl/curve_mesh.hpp"
#include "gui/opengl/gl_functions.hpp"

namespace vanta::gui {

/// Draws by OpenGL 1.3 what a bitmap draws in memory, and gives the same picture. All but the constructor
/// wants the context to be current.
class AcceleratedRenderer final : public Canvas::Owner {
public:
    AcceleratedRenderer(const GlFunctions& functions, const DeviceBacking& backing);
    AcceleratedRenderer(const AcceleratedRenderer&) = delete;
    AcceleratedRenderer& operator=(const AcceleratedRenderer&) = delete;

    /// Once for a context. False if it cannot do what is needed, or is not wanted by the mode.
    bool initialize(AccelerationMode mode);
    /// Clears all of a drawable of this size.
    void beginFrame(DevicePoint size);
    /// Of all bitmaps, which must not be drawn again.
    void deleteTextures();

    float scale() const override { return backing_.scale(); }
    void drawBitmap(const Bitmap& bitmap, const Rect& target, Point source, int alpha) override;
    void drawBitmapMasked(const Bitmap& bitmap, const Rect& target, Point source, const Bitmap& mask,
                          Point maskSource, int alpha) override;
    void drawLine(Point from, Point to, Color color, float width, const Rect& clip) override;
    void drawCurves(const CurveSet& set, const Rect& clip, const Rect& area, Point origin,
                    Canvas::CurveOrientation orientation, int alpha) override;
    void fillRect(const Rect& rect, Color color) override;
    /// Nothing: what is drawn cannot be read without waiting for all of it.
    Color pixelAt(Point) const override { return {}; }
    void drawPoint(Point point, Color color) override;

private:
    static constexpr std::size_t kUnits = 2;
    using Corners = std::array<float, 8>;

    bool isFit(AccelerationMode mode) const;
    std::string_view text(GLenum name) const;
    void setUpUnit(GLenum unit, GLint colorOperand, GLint colorSource);
    void bind(const Bitmap& bitmap, std::size_t unit);
    void upload(const Bitmap& bitmap, BitmapTexture& texture);
    void setTexturing(bool on);
    void setColor(Pixel pixel);
    void setCorners(std::size_t unit, const Bitmap& bitmap, DevicePoint source, const DeviceRect& target);
    void drawQuad(const DeviceRect& target);
    void useQuad() { gl_.VertexPointer(2, GL_FLOAT, 0, quad_.data()); }
    void useColors(const CurveMesh::Tint* tints);
    void leaveColors();
    void setScissor(const DeviceRect& clip);
    const GLuint* stripIndices(int rows, int columns);

    GlFunctions gl_;
    const DeviceBacking& backing_;
    DeviceRect viewport_;
    bool texturing_ = false;
    bool colorValid_ = false;  ///< `currentColor_` is what the context has
    Pixel currentColor_ = 0;
    // The context reads these when it draws.
    Corners quad_{};
    std::array<Corners, kUnits> texCoords_{};
    std::shared_ptr<TextureRegistry> textures_ = std::make_shared<TextureRegistry>();
    std::array<BitmapTexture, kUnits> guests_;  ///< for bitmaps that have no texture of their own
    CurveMesh mesh_;
    /// For six and for ten points a column, pairs of a point and the next of its column.
    std::array<std::vector<GLuint>, 2> stripIndices_;
};

}  // namespace vanta::gui
