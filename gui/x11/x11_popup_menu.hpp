#pragma once

#include <memory>

#include "gui/controls/popup_menu.hpp"

namespace vanta::gui {

class X11Interface;
struct X11Session;

/// A popup menu that is drawn as the rest of the interface is, in windows of its own.
class X11PopupMenu final : public PopupMenu {
public:
    X11PopupMenu(X11Interface& interface, std::shared_ptr<X11Session> session);

protected:
    MenuItem* choose(Point point) override;

private:
    X11Interface& owner_;
    std::shared_ptr<X11Session> session_;
};

}  // namespace vanta::gui
