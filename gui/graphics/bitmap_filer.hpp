#pragma once

#include <iosfwd>
#include <memory>

namespace vanta::gui {

class Bitmap;

/// Fills the bitmap that it was made for from a file of one format.
class BitmapFiler {
public:
    virtual ~BitmapFiler() = default;
    /// From where the stream stands. Throws EBitmap.
    virtual void read(std::istream& file) = 0;
};

class BitmapFilerFactory {
public:
    virtual ~BitmapFilerFactory() = default;
    /// Null if the file, which is read from its start, is of another format.
    virtual std::unique_ptr<BitmapFiler> create(Bitmap& bitmap, std::istream& file) const = 0;
};

/// Adds a format behind those that are known; PNG is known from the start. At start-up, by one thread. The
/// factory must outlive the last bitmap that is read.
void addBitmapFormat(const BitmapFilerFactory& factory);

/// Fills the bitmap in its own pixels, with the filer of the first format that takes the file, which is read
/// from its start. Throws EBitmap.
void readBitmap(Bitmap& bitmap, std::istream& file);

}  // namespace vanta::gui
