#include "gui/text/text_layout.hpp"

#include <pango/pangocairo.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <string>

namespace vanta::gui {
namespace {

/// Inter where it is installed; "sans" is what the system puts in its place.
constexpr const char* kOwnFaces = "Inter,sans";
/// From this scale on pixels are small enough for the letters' true shapes and distances.
constexpr float kFineScale = 1.4f;
/// Larger than any display, and still within what cairo draws on.
constexpr int kLargestSide = 32767;

template <typename T, void (*Free)(T*)>
struct Freed {
    void operator()(T* object) const { Free(object); }
};
using Font = std::unique_ptr<PangoFontDescription, Freed<PangoFontDescription, pango_font_description_free>>;
using FontOptions =
    std::unique_ptr<cairo_font_options_t, Freed<cairo_font_options_t, cairo_font_options_destroy>>;
using Attributes = std::unique_ptr<PangoAttrList, Freed<PangoAttrList, pango_attr_list_unref>>;
using Surface = std::unique_ptr<cairo_surface_t, Freed<cairo_surface_t, cairo_surface_destroy>>;
using Cairo = std::unique_ptr<cairo_t, Freed<cairo_t, cairo_destroy>>;

void unrefContext(PangoContext* context) {
    g_object_unref(context);
}
using Context = std::unique_ptr<PangoContext, Freed<PangoContext, unrefContext>>;

Context contextFor(float scale) {
    // Pango keeps the default font map of each thread apart.
    Context context(pango_font_map_create_context(pango_cairo_font_map_get_default()));
    const FontOptions options(cairo_font_options_create());
    cairo_font_options_set_antialias(options.get(), CAIRO_ANTIALIAS_GRAY);
    const bool isFine = scale > kFineScale;
    cairo_font_options_set_hint_style(options.get(),
                                      isFine ? CAIRO_HINT_STYLE_NONE : CAIRO_HINT_STYLE_SLIGHT);
    cairo_font_options_set_hint_metrics(options.get(), CAIRO_HINT_METRICS_ON);
    pango_cairo_context_set_font_options(context.get(), options.get());
    return context;
}

Font fontOf(const Text& text, float scale) {
    Font font(pango_font_description_new());
    const std::string& name = text.fontName.value();
    const std::string faces = name.empty() ? kOwnFaces : name + "," + kOwnFaces;
    pango_font_description_set_family(font.get(), faces.c_str());
    const float dpi = std::floor(scale * 96.0f + 0.75f);
    const float pixels = std::clamp(std::round(text.fontSize * dpi / 72.0f), 1.0f, 1000.0f);
    pango_font_description_set_absolute_size(font.get(), static_cast<double>(pixels) * PANGO_SCALE);
    pango_font_description_set_weight(font.get(), text.bold ? PANGO_WEIGHT_BOLD : PANGO_WEIGHT_NORMAL);
    pango_font_description_set_style(font.get(), text.italic ? PANGO_STYLE_ITALIC : PANGO_STYLE_NORMAL);
    return font;
}

Attributes attributesOf(const Text& text, float scale) {
    Attributes attributes(pango_attr_list_new());
    // Figures of one width, so that a value does not dance while it changes, and signs at their height.
    pango_attr_list_insert(attributes.get(), pango_attr_font_features_new("tnum=1,case=1"));
    if (const float spacing = text.letterSpacing * scale; spacing != 0.0f) {
        pango_attr_list_insert(attributes.get(),
                               pango_attr_letter_spacing_new(static_cast<int>(spacing * PANGO_SCALE)));
    }
    if (text.underline) {
        pango_attr_list_insert(attributes.get(), pango_attr_underline_new(PANGO_UNDERLINE_SINGLE));
    }
    return attributes;
}

void setText(PangoLayout* layout, const std::string& text) {
    gchar* const valid = g_utf8_make_valid(text.data(), static_cast<gssize>(text.size()));
    pango_layout_set_text(layout, valid, -1);
    g_free(valid);
}

void limitWidth(PangoLayout* layout, Text::LineStyle style, int pixels) {
    if (style == Text::LineStyle::SingleLine) return;
    pango_layout_set_width(layout, pixels * PANGO_SCALE);
    if (style == Text::LineStyle::Ellipsis) {
        pango_layout_set_ellipsize(layout, PANGO_ELLIPSIZE_END);
    } else {
        // A word that is wider than all is broken rather than lost.
        pango_layout_set_wrap(layout, PANGO_WRAP_WORD_CHAR);
    }
}

/// Pango counts from the layout's corner, with the width and height of what is inside.
DeviceRect boundsOf(PangoLayout* layout) {
    PangoRectangle ink, logical;
    pango_layout_get_pixel_extents(layout, &ink, &logical);
    const DeviceRect lines{0, 0, logical.x + logical.width, logical.y + logical.height};
    const DeviceRect strokes = DeviceRect::ofSize(ink.x, ink.y, ink.width, ink.height);
    if (strokes.isEmpty()) return lines;
    return {std::min(lines.left, strokes.left), std::min(lines.top, strokes.top),
            std::max(lines.right, strokes.right), std::max(lines.bottom, strokes.bottom)};
}

}  // namespace

void TextLayout::Unref::operator()(PangoLayout* layout) const {
    g_object_unref(layout);
}

TextLayout::TextLayout(const Text& text, float scale) {
    const Context context = contextFor(scale);
    layout_.reset(pango_layout_new(context.get()));
    pango_layout_set_font_description(layout_.get(), fontOf(text, scale).get());
    pango_layout_set_attributes(layout_.get(), attributesOf(text, scale).get());
    setText(layout_.get(), text.text);
    int limit = kLargestSide;
    if (text.maxWidth > 0.0f) {
        limit = std::clamp(toDevice(std::min(text.maxWidth.value(), 32767.0f), scale), 1, kLargestSide);
        limitWidth(layout_.get(), text.lineStyle, limit);
    }
    bounds_ = boundsOf(layout_.get());
    bounds_.right = std::min(bounds_.right, bounds_.left + limit);
    bounds_.bottom = std::min(bounds_.bottom, bounds_.top + kLargestSide);
}

void TextLayout::render(std::uint32_t* pixels, int width, int height) const {
    const Surface surface(cairo_image_surface_create_for_data(reinterpret_cast<unsigned char*>(pixels),
                                                              CAIRO_FORMAT_RGB24, width, height, width * 4));
    const Cairo cairo(cairo_create(surface.get()));
    cairo_set_source_rgb(cairo.get(), 1.0, 1.0, 1.0);
    cairo_paint(cairo.get());
    cairo_set_source_rgb(cairo.get(), 0.0, 0.0, 0.0);
    cairo_move_to(cairo.get(), -bounds_.left, -bounds_.top);
    pango_cairo_show_layout(cairo.get(), layout_.get());
    cairo_surface_flush(surface.get());
}

}  // namespace vanta::gui
