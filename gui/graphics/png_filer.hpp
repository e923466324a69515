#pragma once

#include "gui/graphics/bitmap_filer.hpp"

namespace vanta::gui {

/// PNG (ISO/IEC 15948) as artwork uses it: 8 bits a channel, with or without opacity, not interlaced. Honours
/// gAMA; skips all other chunks and every checksum. A picture may have at most 32,767 pixels on a side, and
/// takes no memory that its own data could not fill.
class PNGFiler final : public BitmapFiler {
public:
    explicit PNGFiler(Bitmap& bitmap) : bitmap_(bitmap) {}
    void read(std::istream& file) override;

private:
    Bitmap& bitmap_;
};

class PNGFilerFactory final : public BitmapFilerFactory {
public:
    std::unique_ptr<BitmapFiler> create(Bitmap& bitmap, std::istream& file) const override;
};

}  // namespace vanta::gui
