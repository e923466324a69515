#include "gui/graphics/bitmap_filer.hpp"

#include <istream>
#include <vector>

#include "gui/graphics/bitmap_error.hpp"
#include "gui/graphics/png_filer.hpp"

namespace vanta::gui {
namespace {

std::vector<const BitmapFilerFactory*>& formats() {
    static const PNGFilerFactory png;
    static std::vector<const BitmapFilerFactory*> list{&png};
    return list;
}

void rewind(std::istream& file) {
    file.clear();
    file.seekg(0);
}

}  // namespace

void addBitmapFormat(const BitmapFilerFactory& factory) {
    formats().push_back(&factory);
}

void readBitmap(Bitmap& bitmap, std::istream& file) {
    for (const BitmapFilerFactory* format : formats()) {
        rewind(file);
        const std::unique_ptr<BitmapFiler> filer = format->create(bitmap, file);
        if (!filer) continue;
        rewind(file);
        filer->read(file);
        return;
    }
    throw EBitmap("Unknown file format");
}

}  // namespace vanta::gui
