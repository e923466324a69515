// What a canvas asks of the renderer.

#include "gui/graphics/line_shape.hpp"
#include "gui/opengl/accelerated_renderer.hpp"

namespace vanta::gui {
namespace {

constexpr std::size_t kLineColumns = 4;
constexpr std::size_t kLineRows = 4;

constexpr Pixel fadedBlack(int alpha) {
    return pixelOf(0, 0, 0, alpha);
}

}  // namespace

void AcceleratedRenderer::setTexturing(bool on) {
    if (on == texturing_) return;
    texturing_ = on;
    if (on) {
        gl_.Enable(GL_TEXTURE_2D);
        gl_.EnableClientState(GL_TEXTURE_COORD_ARRAY);
    } else {
        gl_.Disable(GL_TEXTURE_2D);
        gl_.DisableClientState(GL_TEXTURE_COORD_ARRAY);
    }
}

void AcceleratedRenderer::setColor(Pixel pixel) {
    if (colorValid_ && pixel == currentColor_) return;
    currentColor_ = pixel;
    colorValid_ = true;
    const CurveMesh::Tint tint = CurveMesh::tintOf(pixel);
    gl_.Color4ub(tint.red, tint.green, tint.blue, tint.opacity);
}

void AcceleratedRenderer::setCorners(std::size_t unit, const Bitmap& bitmap, DevicePoint source,
                                     const DeviceRect& target) {
    const float perColumn = 1.0f / static_cast<float>(bitmap.pixelRect().right);
    const float perRow = 1.0f / static_cast<float>(bitmap.pixelRect().bottom);
    const float left = static_cast<float>(source.x) * perColumn;
    const float top = static_cast<float>(source.y) * perRow;
    const float right = static_cast<float>(source.x + target.width()) * perColumn;
    const float bottom = static_cast<float>(source.y + target.height()) * perRow;
    texCoords_[unit] = {left, top, right, top, left, bottom, right, bottom};
}

void AcceleratedRenderer::drawQuad(const DeviceRect& target) {
    const auto left = static_cast<float>(target.left), top = static_cast<float>(target.top);
    const auto right = static_cast<float>(target.right), bottom = static_cast<float>(target.bottom);
    quad_ = {left, top, right, top, left, bottom, right, bottom};
    gl_.DrawArrays(GL_TRIANGLE_STRIP, 0, 4);
}

void AcceleratedRenderer::drawBitmap(const Bitmap& bitmap, const Rect& target, Point source, int alpha) {
    CopiedArea copy = CopiedArea::of(target, source, scale());
    copy.clipTarget(viewport_);
    copy.clipSource(bitmap.pixelRect(), copy.source);
    if (copy.target.isEmpty() || alpha <= 0) return;
    bind(bitmap, 0);
    setColor(fadedBlack(alpha));
    setCorners(0, bitmap, copy.source, copy.target);
    setTexturing(true);
    drawQuad(copy.target);
}

void AcceleratedRenderer::drawBitmapMasked(const Bitmap& bitmap, const Rect& target, Point source,
                                           const Bitmap& mask, Point maskSource, int alpha) {
    CopiedArea copy = CopiedArea::of(target, source, scale());
    const DevicePoint toMask =
        DevicePoint{toDevice(maskSource.x, scale()), toDevice(maskSource.y, scale())} - copy.source;
    copy.clipTarget(viewport_);
    copy.clipSource(bitmap.pixelRect(), copy.source);
    copy.clipSource(mask.pixelRect(), copy.source + toMask);
    if (copy.target.isEmpty() || alpha <= 0) return;
    bind(bitmap, 0);
    setColor(fadedBlack(alpha));
    setCorners(0, bitmap, copy.source, copy.target);
    setCorners(1, mask, copy.source + toMask, copy.target);
    setTexturing(true);
    gl_.ActiveTexture(GL_TEXTURE1);
    gl_.ClientActiveTexture(GL_TEXTURE1);
    bind(mask, 1);
    gl_.Enable(GL_TEXTURE_2D);
    gl_.EnableClientState(GL_TEXTURE_COORD_ARRAY);
    drawQuad(copy.target);
    gl_.Disable(GL_TEXTURE_2D);
    gl_.DisableClientState(GL_TEXTURE_COORD_ARRAY);
    gl_.ActiveTexture(GL_TEXTURE0);
    gl_.ClientActiveTexture(GL_TEXTURE0);
}

void AcceleratedRenderer::fillRect(const Rect& rect, Color color) {
    const DeviceRect target = toDevice(rect, scale()).intersected(viewport_);
    if (target.isEmpty() || color.alpha == 0) return;
    setTexturing(false);
    setColor(toPixel(color));
    drawQuad(target);
}

void AcceleratedRenderer::drawPoint(Point point, Color color) {
    fillRect(Rect::ofSize(point.x, point.y, 1.0f, 1.0f), color);
}

void AcceleratedRenderer::setScissor(const DeviceRect& clip) {
    gl_.Enable(GL_SCISSOR_TEST);
    gl_.Scissor(clip.left, viewport_.bottom - clip.bottom, clip.width(), clip.height());
}

void AcceleratedRenderer::useColors(const CurveMesh::Tint* tints) {
    gl_.EnableClientState(GL_COLOR_ARRAY);
    gl_.ColorPointer(4, GL_UNSIGNED_BYTE, 0, tints);
    colorValid_ = false;
}

void AcceleratedRenderer::leaveColors() {
    gl_.DisableClientState(GL_COLOR_ARRAY);
    gl_.Disable(GL_SCISSOR_TEST);
    useQuad();
}

void AcceleratedRenderer::drawLine(Point from, Point to, Color color, float width, const Rect& clip) {
    const DeviceRect bounds = toDevice(clip, scale()).intersected(viewport_);
    const std::optional<LineShape> shape = lineShape(from, to, width, scale());
    if (!shape || bounds.isEmpty() || color.alpha == 0) return;
    std::array<CurveMesh::Position, kLineColumns * kLineRows> points;
    std::array<CurveMesh::Tint, kLineColumns * kLineRows> tints{};
    std::array<GLuint, 2 * kLineColumns*(kLineRows - 1)> indices;
    for (std::size_t row = 0, next = 0; row < kLineRows; ++row) {
        for (std::size_t column = 0; column < kLineColumns; ++column) {
            const std::size_t point = row * kLineColumns + column;
            const float along = shape->along[column];
            const float across = shape->middle[column] + shape->across[row];
            points[point] =
                shape->isSteep ? CurveMesh::Position{across, along} : CurveMesh::Position{along, across};
            if (row + 1 == kLineRows) continue;
            indices[next++] = static_cast<GLuint>(point);
            indices[next++] = static_cast<GLuint>(point + kLineColumns);
        }
    }
    for (const std::size_t inside : {5u, 6u, 9u, 10u}) tints[inside] = CurveMesh::tintOf(toPixel(color));
    setTexturing(false);
    setScissor(bounds);
    gl_.VertexPointer(2, GL_FLOAT, 0, points.data());
    useColors(tints.data());
    for (std::size_t strip = 0; strip + 1 < kLineRows; ++strip) {
        gl_.DrawElements(GL_TRIANGLE_STRIP, 2 * kLineColumns, GL_UNSIGNED_INT,
                         indices.data() + 2 * kLineColumns * strip);
    }
    leaveColors();
}

const GLuint* AcceleratedRenderer::stripIndices(int rows, int columns) {
    std::vector<GLuint>& indices = stripIndices_[rows > 6 ? 1 : 0];
    for (auto column = static_cast<GLuint>(indices.size() / 2); column < static_cast<GLuint>(columns);
         ++column) {
        indices.push_back(column * static_cast<GLuint>(rows));
        indices.push_back(column * static_cast<GLuint>(rows) + 1);
    }
    return indices.data();
}

void AcceleratedRenderer::drawCurves(const CurveSet& set, const Rect& clip, const Rect& area, Point origin,
                                     Canvas::CurveOrientation orientation, int alpha) {
    const DeviceRect bounds = toDevice(clip, scale()).intersected(viewport_);
    if (bounds.isEmpty() || alpha <= 0) return;
    const DevicePoint at{toDevice(origin.x, scale()), toDevice(origin.y, scale())};
    mesh_.build(set, bounds, toDevice(area, scale()), at, orientation, alpha, scale());
    const GLuint* indices = stripIndices(mesh_.rowCount(), mesh_.columnCount());
    setTexturing(false);
    setScissor(bounds);
    for (int row = 0; row + 1 < mesh_.rowCount(); ++row) {
        const CurveMesh::Tint* tints = mesh_.tints(row);
        if (mesh_.isPlain(row)) {
            if (tints->opacity == 0) continue;
            gl_.DisableClientState(GL_COLOR_ARRAY);
            setColor(pixelOf(tints->red, tints->green, tints->blue, tints->opacity));
        } else {
            useColors(tints);
        }
        gl_.VertexPointer(2, GL_FLOAT, 0, mesh_.positions(row));
        gl_.DrawElements(GL_TRIANGLE_STRIP, 2 * mesh_.columnCount(), GL_UNSIGNED_INT, indices);
    }
    leaveColors();
}

}  // namespace vanta::gui
