#include "gui/x11/native_x11_control.hpp"

#include "gui/graphics/canvas.hpp"
#include "gui/tree/region.hpp"
#include "gui/x11/x11_interface.hpp"

namespace vanta::gui {

NativeX11Control::NativeX11Control(X11Interface& interface, X11Session& session, Window parentWindow,
                                   const std::string& title)
    : X11Control(interface, session, parentWindow, title), bitmap_(session.backing, session.display) {}

void NativeX11Control::deviceSizeChanged(DevicePoint size) {
    bitmap_.setPixelSize(size.x, size.y);
}

void NativeX11Control::paintDirty() {
    const Rect dirty = commonPart(takeDirtyRect(), localBounds());
    if (dirty.isEmpty()) return;
    bitmap_.awaitShown();
    Canvas& canvas = bitmap_.canvas();
    canvas.clip = dirty;
    drawTree(canvas);
    bitmap_.show(window(), toDevice(dirty, bitmap_.scale()));
}

}  // namespace vanta::gui
