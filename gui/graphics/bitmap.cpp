#include "gui/graphics/bitmap.hpp"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <new>

#include "foundation/binary_data.hpp"
#include "gui/graphics/bitmap_filer.hpp"
#include "gui/graphics/image_resource.hpp"
#include "gui/graphics/rescale.hpp"

namespace vanta::gui {

Bitmap::Bitmap(DeviceBacking& backing) : backing_(backing) {
    backing_.addListener(*this);
}

Bitmap::~Bitmap() {
    backing_.removeListener(*this);
}

Canvas& Bitmap::canvas() {
    canvas_.setState({logicalRect_, 255, {}});
    return canvas_;
}

Bitmap::PixelMemory Bitmap::allocatePixels(std::size_t count) {
    // A large picture is not touched before it is drawn on.
    auto* const pixels = static_cast<Pixel*>(std::calloc(count, sizeof(Pixel)));
    if (!pixels) throw std::bad_alloc();
    return {pixels, &std::free};
}

void Bitmap::setPixelSize(int width, int height) {
    width = std::max(width, 0);
    height = std::max(height, 0);
    if (width == pixelRect_.right && height == pixelRect_.bottom) return;
    pixels_.reset();
    if (toDevice(logicalRect_.right, scale()) != width) {
        logicalRect_.right = static_cast<float>(width) / scale();
    }
    if (toDevice(logicalRect_.bottom, scale()) != height) {
        logicalRect_.bottom = static_cast<float>(height) / scale();
    }
    pixelRect_ = {0, 0, width, height};
    if (width > 0 && height > 0) pixels_ = allocatePixels(pixelCount());
    pixelsReplaced();
    contentChanged();
}

void Bitmap::setLogicalSize(float width, float height) {
    logicalRect_ = {0.0f, 0.0f, width, height};
    setPixelSize(toDevice(width, scale()), toDevice(height, scale()));
}

void Bitmap::contentChanged() {
    imageName_.clear();
    requestUpdate();
}

void Bitmap::become(int width, int height, const Rect& logical, bool withAlpha) {
    setPixelSize(width, height);
    logicalRect_ = logical;
    hasAlpha = withAlpha;
    contentChanged();
}

void Bitmap::update() {
    UpdatedObject::update();
    onChange.raise(this);
}

void Bitmap::propertyChanged(AbstractProperty& /*property*/) {
    requestUpdate();
}

void Bitmap::load(std::string_view imageName) {
    const UpdateBlock block(*this);
    const std::string name(imageName);  // perhaps our own, which a new size clears
    const ImageResource image = findImage(name, scale());
    BinaryMemoryReader file(image.bytes);
    readBitmap(*this, file.stream());
    rescale(image.imageScale);
    contentChanged();
    markDirty(pixelRect_);
    imageName_ = name;
}

void Bitmap::rescale(float imageScale) {
    const float factor = scale() / imageScale;
    const Rect logical{0.0f, 0.0f, static_cast<float>(pixelRect_.right) / imageScale,
                       static_cast<float>(pixelRect_.bottom) / imageScale};
    if (std::abs(factor - 1.0f) > std::numeric_limits<float>::epsilon()) {
        const PixelBlock block =
            rescaled({pixels_.get(), pixelCount()}, pixelRect_.right, pixelRect_.bottom, factor);
        setPixelSize(block.width, block.height);
        std::copy(block.pixels.begin(), block.pixels.end(), pixels_.get());
    }
    logicalRect_ = logical;
}

void Bitmap::backingScaleChanged() {
    if (imageName_.empty()) {
        setPixelSize(toDevice(logicalRect_.right, scale()), toDevice(logicalRect_.bottom, scale()));
    } else {
        load(imageName_);
    }
}

}  // namespace vanta::gui
