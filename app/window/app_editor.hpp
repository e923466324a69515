#pragma once

#include "gui/x11/x11_interface.hpp"
#include "interface/binding/editor.hpp"

namespace vanta {

/// A window of the program's own: it takes any size, and there is no host to tell of gestures.
class AppEditor final : public interface::Editor {
public:
    /// `footer`: height of the window that is not the interface's, in logical units.
    AppEditor(gui::X11Interface& window, float footer) : window_(window), footer_(footer) {}

    void beginGesture(int) override {}
    void endGesture(int) override {}
    bool canResize() const override { return true; }
    bool resize(InterfaceSize) override { return true; }
    std::optional<InterfaceSize> workArea() const override {
        const gui::Point area = window_.workArea();
        return InterfaceSize{static_cast<int>(area.x), static_cast<int>(area.y - footer_)};
    }

private:
    gui::X11Interface& window_;
    float footer_;
};

}  // namespace vanta
