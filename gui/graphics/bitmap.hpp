#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "foundation/notify_event.hpp"
#include "foundation/property.hpp"
#include "foundation/updated_object.hpp"
#include "gui/graphics/canvas.hpp"
#include "gui/graphics/device_backing.hpp"
#include "gui/graphics/geometry.hpp"
#include "gui/graphics/pixel.hpp"

namespace vanta::gui {

/// An image in memory, in the pixels of its device, and what can be drawn on it. One that was loaded by name
/// is loaded anew when the device's scale changes; any other keeps its logical size and loses its pixels.
/// New pixels are opaque black. Belongs to the interface: one thread at a time.
class Bitmap : public UpdatedObject,
               public Canvas::Owner,
               public PropertyOwner,
               public DeviceBacking::BackingScaleListener {
public:
    enum Flip : unsigned { LeftToRight = 1, TopToBottom = 2 };

    explicit Bitmap(DeviceBacking& backing);
    ~Bitmap() override;

    const DeviceRect& pixelRect() const { return pixelRect_; }
    const Rect& logicalRect() const { return logicalRect_; }
    bool isEmpty() const { return !pixels_; }
    Pixel* row(int y) { return pixels_.get() + rowOffset(y); }
    const Pixel* row(int y) const { return pixels_.get() + rowOffset(y); }
    /// What it was loaded as; empty if something else was put into it since.
    const std::string& imageName() const { return imageName_; }
    /// To draw on all of it, at its own origin.
    Canvas& canvas();

    /// Keeps a logical size that is no whole number of pixels if these are its pixels.
    void setPixelSize(int width, int height);
    /// In whole device pixels at the device's scale.
    void setLogicalSize(float width, float height);
    /// Loads a picture of the program's resources, in the density that fits the device, and brings it to the
    /// device's scale. Throws EBitmap and leaves what was read so far.
    void load(std::string_view imageName);

    /// Every pixel. Clears to transparent by default.
    void fill(Color color = {});
    void copyFrom(const Bitmap& other);
    /// A mix of two images: `amount` 0 gives `from`, 255 gives `to`. Takes the size of `from`, or that of
    /// `rect` within it.
    void crossfade(const Bitmap& from, const Bitmap& to, int amount, const Rect* rect = nullptr);
    /// The colours of `source` times `color`, channel by channel.
    void tintFrom(const Bitmap& source, Color color);
    /// Mirrored by any of Flip.
    void flipFrom(const Bitmap& source, unsigned flips);
    /// Turned clockwise by `angle` radians, so that `sourceCenter` comes to lie at `targetCenter` (both
    /// logical, the middle of the first pixel is 0). Keeps its size.
    void rotateFrom(const Bitmap& source, float angle, Point sourceCenter, Point targetCenter);
    /// The columns of `source` brought closer together, to a half at most, from `firstRow` on, as far as
    /// there is room. Keeps its size, and what is in it right of them and below.
    void squeezeFrom(const Bitmap& source, int firstRow, float factor);
    /// Turned clockwise by a quarter.
    void transposeFrom(const Bitmap& source);
    /// Makes text in `color` of black text on white.
    void setTextMask(Color color);

    /// Whoever changes pixels directly says so here.
    virtual void markDirty(const DeviceRect& /*changed*/) {}

    float scale() const override { return backing_.scale(); }
    void drawBitmap(const Bitmap& bitmap, const Rect& target, Point source, int alpha) override;
    void drawBitmapMasked(const Bitmap& bitmap, const Rect& target, Point source, const Bitmap& mask,
                          Point maskSource, int alpha) override;
    void drawLine(Point from, Point to, Color color, float width, const Rect& clip) override;
    void drawCurves(const CurveSet& set, const Rect& clip, const Rect& area, Point origin,
                    Canvas::CurveOrientation orientation, int alpha) override;
    void fillRect(const Rect& rect, Color color) override;
    Color pixelAt(Point point) const override;
    void drawPoint(Point point, Color color) override;

    void propertyChanged(AbstractProperty& property) override;
    void backingScaleChanged() override;

    /// Some pixel is not opaque. An opaque bitmap is copied instead of blended.
    Property<bool> hasAlpha{this, false};
    /// Raised when it has another size or another content, but not by what is drawn on its canvas.
    NotifyEvent onChange;

protected:
    using PixelMemory = std::unique_ptr<Pixel[], std::function<void(Pixel*)>>;

    /// Zeroed memory, where a platform wants pixels to lie.
    virtual PixelMemory allocatePixels(std::size_t count);
    /// The pixels lie elsewhere and are of another number.
    virtual void pixelsReplaced() {}
    void update() override;

private:
    std::size_t rowOffset(int y) const {
        return static_cast<std::size_t>(y) * static_cast<std::size_t>(pixelRect_.right);
    }
    std::size_t pixelCount() const { return rowOffset(pixelRect_.bottom); }
    /// Any size and content that do not come from a named image.
    void become(int width, int height, const Rect& logical, bool withAlpha);
    void contentChanged();
    void rescale(float imageScale);

    DeviceBacking& backing_;
    DeviceRect pixelRect_;
    Rect logicalRect_;
    PixelMemory pixels_;
    std::string imageName_;
    Canvas canvas_{*this};
};

}  // namespace vanta::gui
