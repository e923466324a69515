#include "gui/offscreen/png_writer.hpp"

#include <cairo.h>

#include <memory>
#include <stdexcept>
#include <vector>

#include <fmt/format.h>

#include "gui/graphics/bitmap.hpp"

namespace vanta::gui {

void writePng(const Bitmap& bitmap, const std::string& path) {
    const int width = bitmap.pixelRect().width(), height = bitmap.pixelRect().height();
    std::vector<Pixel> pixels;
    if (!bitmap.isEmpty()) {
        pixels.assign(bitmap.row(0), bitmap.row(0) + static_cast<std::ptrdiff_t>(width) * height);
    }
    // The fourth byte, which is ours alone, has no meaning in this format.
    const std::unique_ptr<cairo_surface_t, decltype(&cairo_surface_destroy)> surface(
        cairo_image_surface_create_for_data(reinterpret_cast<unsigned char*>(pixels.data()),
                                            CAIRO_FORMAT_RGB24, width, height, width * 4),
        cairo_surface_destroy);
    const cairo_status_t status = cairo_surface_write_to_png(surface.get(), path.c_str());
    if (status != CAIRO_STATUS_SUCCESS) {
        throw std::runtime_error(fmt::format("{}: {}", path, cairo_status_to_string(status)));
    }
}

}  // namespace vanta::gui
