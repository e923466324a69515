#pragma once

#include "foundation/property.hpp"
#include "gui/graphics/color.hpp"
#include "gui/graphics/geometry.hpp"

namespace vanta::gui {

class Bitmap;
class Curve;
class Text;
struct CurveSet;

/// Where controls draw: a clip, an alpha and an origin over whoever does the drawing. All coordinates are
/// logical and relative to the origin, the clip's included. Each operation is clipped, scaled in opacity and
/// shifted accordingly.
class Canvas {
public:
    enum class CurveOrientation { OverX, OverY };

    /// Draws, in logical coordinates that the canvas has snapped to its device pixels: a bitmap in memory, or
    /// a renderer.
    class Owner {
    public:
        virtual ~Owner() = default;
        /// Device pixels per logical unit.
        virtual float scale() const = 0;
        /// The part of `bitmap` from `source` on, into `target`, without scaling.
        virtual void drawBitmap(const Bitmap& bitmap, const Rect& target, Point source, int alpha) = 0;
        /// The same, times the opacity of `mask` from `maskSource` on.
        virtual void drawBitmapMasked(const Bitmap& bitmap, const Rect& target, Point source,
                                      const Bitmap& mask, Point maskSource, int alpha) = 0;
        /// Antialiased; `width` in logical units.
        virtual void drawLine(Point from, Point to, Color color, float width, const Rect& clip) = 0;
        virtual void drawCurves(const CurveSet& set, const Rect& clip, const Rect& area, Point origin,
                                CurveOrientation orientation, int alpha) = 0;
        virtual void fillRect(const Rect& rect, Color color) = 0;
        /// Colour 0 where pixels cannot be read.
        virtual Color pixelAt(Point point) const = 0;
        virtual void drawPoint(Point point, Color color) = 0;
    };

    /// What a control saves and restores around its children.
    struct State {
        Rect clip;
        int alpha = 255;
        Point origin;
    };

    explicit Canvas(Owner& drawnBy) : owner_(drawnBy) {}
    Canvas(const Canvas&) = delete;
    Canvas& operator=(const Canvas&) = delete;

    State state() const { return {clip, alpha, origin}; }
    void setState(const State& state);
    float scale() const { return owner_.scale(); }

    void fillRect(const Rect& rect, Color color);
    /// Around `rect`, outside it.
    void drawFrame(const Rect& rect, Color color, float width);
    void drawLine(Point from, Point to, Color color, float width);
    void drawPoint(Point point, Color color);
    void drawBitmap(const Bitmap& bitmap, Point point, int opacity = 255);
    void drawBitmap(const Bitmap& bitmap, const Rect& target, Point source, int opacity = 255);
    void drawBitmapMasked(const Bitmap& bitmap, const Rect& target, Point source, const Bitmap& mask,
                          Point maskSource, int opacity = 255);
    /// The text's picture, with its top at `point.y` and the text's baseline offset.
    void drawText(Text& text, Point point, int opacity = 255);
    /// Grows a picture without resampling it: its ends stay, its middle repeats.
    void drawStretched(const Bitmap& bitmap, const Rect& target, const Rect& source, float minimumEnd = 0.0f,
                       int opacity = 255);
    /// Which point of the picture `drawStretched` shows at `point` of the target.
    Point stretchedPoint(const Bitmap& bitmap, const Rect& target, Point point,
                         float minimumEnd = 0.0f) const;
    void drawCurve(Curve& curve, Color line, Color above, Color below, float lineWidth, const Rect& area,
                   Point curveOrigin, CurveOrientation orientation);
    void drawCurves(const CurveSet& set, const Rect& area, Point curveOrigin, CurveOrientation orientation);

    Property<Rect> clip{nullptr, Rect{}};
    Property<int> alpha{nullptr, 255};
    Property<Point> origin{nullptr, Point{}};

private:
    Owner& owner_;
};

}  // namespace vanta::gui
