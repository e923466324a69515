#pragma once

#include "gui/graphics/bitmap.hpp"
#include "gui/x11/x11_display.hpp"

namespace vanta::gui {

/// The picture of a window. The server reads it out of our memory where it can; else it is sent.
class X11Bitmap final : public Bitmap {
public:
    X11Bitmap(DeviceBacking& backing, X11Display& display);
    ~X11Bitmap() override;

    /// Shows this part of it at the same place of the window.
    void show(Window window, const DeviceRect& part);
    /// Waits until the server has read what it was to show. Before its pixels change.
    void awaitShown();

protected:
    PixelMemory allocatePixels(std::size_t count) override;
    void pixelsReplaced() override;

private:
    PixelMemory allocateShared(std::size_t count);
    void dropImage();

    X11Display& display_;
    GC context_ = nullptr;
    XImage* image_ = nullptr;       ///< made on first use
    unsigned long sharedId_ = 0;    ///< of the shared memory on the server, 0 for plain memory
    void* sharedMemory_ = nullptr;  ///< where it lies
    bool showing_ = false;
};

}  // namespace vanta::gui
