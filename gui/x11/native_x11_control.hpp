#pragma once

#include <string>

#include "gui/x11/x11_bitmap.hpp"
#include "gui/x11/x11_control.hpp"

namespace vanta::gui {

/// Paints into memory what is dirty, and copies it to the window.
class NativeX11Control final : public X11Control {
public:
    NativeX11Control(X11Interface& interface, X11Session& session, Window parentWindow,
                     const std::string& title);

protected:
    void paintDirty() override;
    void deviceSizeChanged(DevicePoint size) override;

private:
    X11Bitmap bitmap_;
};

}  // namespace vanta::gui
