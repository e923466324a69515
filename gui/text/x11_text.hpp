#pragma once

#include <memory>
#include <string>

#include "gui/graphics/bitmap.hpp"
#include "gui/graphics/device_backing.hpp"
#include "gui/graphics/text.hpp"

namespace vanta::gui {

/// Text laid out by Pango and rendered by cairo, measured and rendered anew at each scale. Its own face is
/// Inter, or the sans face of the system where that is not installed. Each thread has its own font map, but
/// one text belongs to one thread at a time. Invalid UTF-8 shows as replacement characters.
class X11Text final : public Text, public DeviceBacking::BackingScaleListener {
public:
    /// `bitmap` is what it renders into, in whatever memory the platform wants; it must be of `backing`.
    X11Text(DeviceBacking& backing, std::unique_ptr<Bitmap> bitmap);
    explicit X11Text(DeviceBacking& backing);
    ~X11Text() override;

    const Bitmap& bitmap() override;
    float height() override;
    float width() override;
    float baselineOffset() const override;
    void backingScaleChanged() override;

protected:
    void invalidate() override;

private:
    enum class State { Rendered, Measured, Invalid };

    void measure();
    void render();

    DeviceBacking& backing_;
    std::unique_ptr<Bitmap> bitmap_;
    State state_ = State::Invalid;
    int pixelWidth_ = 0;
    int pixelHeight_ = 0;
};

}  // namespace vanta::gui
