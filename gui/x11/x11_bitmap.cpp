#include "gui/x11/x11_bitmap.hpp"

#include <sys/ipc.h>
#include <sys/shm.h>

#include <bit>

#include "gui/x11/x11_errors.hpp"

namespace vanta::gui {
namespace {

void* const kNoMemory = reinterpret_cast<void*>(-1);

}  // namespace

X11Bitmap::X11Bitmap(DeviceBacking& backing, X11Display& display) : Bitmap(backing), display_(display) {}

X11Bitmap::~X11Bitmap() {
    dropImage();
    if (context_) XFreeGC(display_.get(), context_);
}

Bitmap::PixelMemory X11Bitmap::allocatePixels(std::size_t count) {
    awaitShown();
    if (display_.sharesMemory()) {
        if (PixelMemory memory = allocateShared(count)) return memory;
        // A server on another machine says so only when it is asked.
        display_.sharesNoMemory();
    }
    sharedId_ = 0;
    return Bitmap::allocatePixels(count);
}

Bitmap::PixelMemory X11Bitmap::allocateShared(std::size_t count) {
    const int id = shmget(IPC_PRIVATE, count * sizeof(Pixel), IPC_CREAT | 0600);
    if (id < 0) return nullptr;
    XShmSegmentInfo segment{};
    segment.shmid = id;
    void* memory = shmat(id, nullptr, 0);
    const unsigned errors = caughtErrors();
    const bool attached = memory != kNoMemory && XShmAttach(display_.get(), &segment) != 0 &&
                          display_.syncedWithoutError(errors);
    // It goes when both sides have let go of it, even if one of them crashes.
    shmctl(id, IPC_RMID, nullptr);
    if (!attached) {
        if (memory != kNoMemory) shmdt(memory);
        return nullptr;
    }
    sharedId_ = segment.shmseg;
    sharedMemory_ = memory;
    return {static_cast<Pixel*>(memory), [&display = display_, segment](Pixel* pixels) mutable {
                XShmDetach(display.get(), &segment);
                shmdt(pixels);
            }};
}

void X11Bitmap::pixelsReplaced() {
    dropImage();
}

void X11Bitmap::dropImage() {
    if (!image_) return;
    // The pixels are the bitmap's.
    image_->data = nullptr;
    image_->obdata = nullptr;
    XDestroyImage(image_);
    image_ = nullptr;
}

void X11Bitmap::show(Window window, const DeviceRect& part) {
    const DeviceRect area = part.intersected(pixelRect());
    if (area.isEmpty()) return;
    Display* display = display_.get();
    if (!context_) context_ = XCreateGC(display, window, 0, nullptr);
    const auto width = static_cast<unsigned>(pixelRect().width());
    const auto height = static_cast<unsigned>(pixelRect().height());
    XShmSegmentInfo segment{};
    segment.shmseg = sharedId_;
    segment.shmaddr = static_cast<char*>(sharedMemory_);
    auto* bytes = reinterpret_cast<char*>(row(0));
    if (!image_) {
        image_ = sharedId_ ? XShmCreateImage(display, display_.visual(), X11Display::kDepth, ZPixmap, bytes,
                                             &segment, width, height)
                           : XCreateImage(display, display_.visual(), X11Display::kDepth, ZPixmap, 0, bytes,
                                          width, height, 32, 0);
        if (!image_) return;
        image_->byte_order = std::endian::native == std::endian::little ? LSBFirst : MSBFirst;
    }
    const auto partWidth = static_cast<unsigned>(area.width());
    const auto partHeight = static_cast<unsigned>(area.height());
    if (sharedId_) {
        image_->obdata = reinterpret_cast<char*>(&segment);
        XShmPutImage(display, window, context_, image_, area.left, area.top, area.left, area.top, partWidth,
                     partHeight, kXFalse);
        showing_ = true;
    } else {
        XPutImage(display, window, context_, image_, area.left, area.top, area.left, area.top, partWidth,
                  partHeight);
    }
}

void X11Bitmap::awaitShown() {
    if (!showing_) return;
    showing_ = false;
    XSync(display_.get(), kXFalse);
}

}  // namespace vanta::gui
