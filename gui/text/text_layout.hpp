#pragma once

#include <cstdint>
#include <memory>

#include "gui/graphics/geometry.hpp"
#include "gui/graphics/text.hpp"

typedef struct _PangoLayout PangoLayout;

namespace vanta::gui {

/// A text laid out for a scale, in device pixels.
class TextLayout {
public:
    TextLayout(const Text& text, float scale);

    /// What its lines take up and whatever ink sticks out of them.
    int width() const { return bounds_.width(); }
    int height() const { return bounds_.height(); }
    /// Black on white into rows of 32-bit pixels, the corner of the bounds at the first.
    void render(std::uint32_t* pixels, int width, int height) const;

private:
    struct Unref {
        void operator()(PangoLayout* layout) const;
    };
    std::unique_ptr<PangoLayout, Unref> layout_;
    DeviceRect bounds_;
};

}  // namespace vanta::gui
