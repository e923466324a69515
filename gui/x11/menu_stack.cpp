#include "gui/x11/menu_stack.hpp"

#include <poll.h>

#include <algorithm>
#include <cmath>

namespace vanta::gui {
namespace {

constexpr unsigned kGrabbedEvents = ButtonPressMask | ButtonReleaseMask | PointerMotionMask;
/// A window manager may hold the pointer for a moment after a press.
constexpr int kGrabTries = 20;
constexpr int kGrabPauseMs = 10;
/// Device pixels that the pointer goes from where the menu opened before a release means something.
constexpr float kDragDistance = 4.0f;
constexpr float kClickScroll = 66.0f;

}  // namespace

MenuStack::MenuStack(X11Session& session, const Menu& menu, DevicePoint at)
    : session_(session), menu_(menu), keys_(session.display), artwork_(session.backing) {
    panels_.push_back(
        std::make_unique<MenuPanel>(session_, artwork_, *this, menu_, DeviceRect{at.x, at.y, at.x, at.y}));
    keys_.setWindow(panels_.front()->window());
}

MenuStack::~MenuStack() {
    Display* display = session_.display.get();
    XUngrabKeyboard(display, CurrentTime);
    XUngrabPointer(display, CurrentTime);
    keys_.setWindow(kNoXid);
    panels_.clear();
    XFlush(display);
}

bool MenuStack::takePointer() {
    Display* display = session_.display.get();
    const Window window = panels_.front()->window();
    for (int tries = 0; tries < kGrabTries; ++tries) {
        if (XGrabPointer(display, window, kXFalse, kGrabbedEvents, GrabModeAsync, GrabModeAsync, kNoXid,
                         kNoXid, CurrentTime) == GrabSuccess) {
            // Without the keys the menu still works.
            XGrabKeyboard(display, window, kXFalse, GrabModeAsync, GrabModeAsync, CurrentTime);
            return true;
        }
        poll(nullptr, 0, kGrabPauseMs);
    }
    return false;
}

void MenuStack::finish(MenuItem* item) {
    chosen_ = item;
    done_ = true;
}

MenuPanel* MenuStack::panelAt(Point onScreen) const {
    const auto hit = std::find_if(panels_.rbegin(), panels_.rend(),
                                  [&](const auto& panel) { return panel->contains(onScreen); });
    return hit == panels_.rend() ? nullptr : hit->get();
}

void MenuStack::closeAbove(const MenuPanel& panel) {
    while (panels_.back().get() != &panel) panels_.pop_back();
}

void MenuStack::hover(Point onScreen) {
    MenuPanel* panel = panelAt(onScreen);
    if (!panel) {
        if (!panels_.back()->isSubmenu(panels_.back()->highlighted())) panels_.back()->highlight(-1);
        return;
    }
    const int row = panel->rowAt(onScreen);
    const bool isOpenSubmenu = panel != panels_.back().get() && row == panel->highlighted();
    if (isOpenSubmenu) return;
    closeAbove(*panel);
    panel->highlight(panel->canHighlight(row) ? row : -1);
    openSubmenu(false);
}

/// Of the highlighted row, if it has one.
void MenuStack::openSubmenu(bool byKey) {
    MenuPanel& panel = *panels_.back();
    const int row = panel.highlighted();
    if (!panel.isSubmenu(row)) return;
    // Somebody may have changed the menu meanwhile.
    const std::vector<MenuItem*> items = menu_.flattened();
    if (std::find(items.begin(), items.end(), panel.item(row)) == items.end()) return;
    panels_.push_back(
        std::make_unique<MenuPanel>(session_, artwork_, *this, *panel.item(row), panel.rowOnScreen(row)));
    if (byKey) panels_.back()->highlight(panels_.back()->nextRow(-1, 1));
}

void MenuStack::handlePointer(const PointerEvent& event) {
    if (!openedAt_) openedAt_ = event.onScreen;
    const Point way = event.onScreen - *openedAt_;
    armed_ = armed_ || std::abs(way.x) > kDragDistance || std::abs(way.y) > kDragDistance;
    MenuPanel* panel = panelAt(event.onScreen);
    switch (event.kind) {
        case PointerEvent::Kind::Press:
            armed_ = true;
            if (!panel) finish(nullptr);
            break;
        case PointerEvent::Kind::Release:
            released(event);
            break;
        case PointerEvent::Kind::Move:
            if (event.clicks.y != 0.0f && panel) panel->scrollBy(-event.clicks.y * kClickScroll);
            hover(event.onScreen);
            break;
        default:
            break;
    }
}

void MenuStack::released(const PointerEvent& event) {
    // The end of the press that has opened the menu leaves it open.
    if (!armed_) return;
    MenuPanel* panel = panelAt(event.onScreen);
    if (!panel) return;
    const int row = panel->rowAt(event.onScreen);
    if (panel->canHighlight(row) && !panel->isSubmenu(row)) finish(panel->item(row));
}

void MenuStack::handleEvent(XEvent& event) {
    if (event.type == Expose) {
        for (const auto& panel : panels_) {
            if (panel->window() == event.xexpose.window) panel->paint();
        }
    } else if (event.type == kKeyPressEvent) {
        for (const KeyPress& press : keys_.read(event.xkey)) key(press);
    }
}

void MenuStack::key(const KeyPress& press) {
    if (done_) return;
    MenuPanel& panel = *panels_.back();
    const int row = panel.highlighted();
    const bool isSpace = press.key == Key::Character && press.character == U' ';
    if (press.key == Key::Escape || (press.key == Key::Left && panels_.size() > 1)) {
        if (panels_.size() == 1) return finish(nullptr);
        panels_.pop_back();
    } else if (press.key == Key::Up || press.key == Key::Down) {
        panel.highlight(panel.nextRow(row, press.key == Key::Down ? 1 : -1));
    } else if (press.key == Key::Home || press.key == Key::End) {
        panel.highlight(panel.nextRow(-1, press.key == Key::Home ? 1 : -1));
    } else if (panel.isSubmenu(row) && (press.key == Key::Right || press.key == Key::Return || isSpace)) {
        openSubmenu(true);
    } else if ((press.key == Key::Return || isSpace) && panel.canHighlight(row)) {
        finish(panel.item(row));
    } else if (const int found = panel.rowBeginningWith(press.character); found >= 0) {
        panel.highlight(found);
    }
}

}  // namespace vanta::gui
