#include "gui/offscreen/offscreen_interface.hpp"

#include <algorithm>

#include "gui/controls/popup_menu.hpp"
#include "gui/controls/text_editor.hpp"
#include "gui/text/x11_text.hpp"
#include "gui/tree/file_dialogs.hpp"
#include "gui/tree/timer.hpp"

namespace vanta::gui {
namespace {

template <typename Dialog>
class CancelledDialog final : public Dialog {
public:
    bool show() override { return false; }
};

class CancelledMenu final : public PopupMenu {
public:
    using PopupMenu::PopupMenu;

protected:
    MenuItem* choose(Point) override { return nullptr; }
};

}  // namespace

class OffscreenInterface::StandingTimer final : public Timer {
public:
    explicit StandingTimer(OffscreenInterface& interface) : Timer(interface), owner_(interface) {}
    ~StandingTimer() override { std::erase(owner_.running_, this); }

protected:
    void stopPlatformTimer() override { std::erase(owner_.running_, this); }
    void startPlatformTimer() override { owner_.running_.push_back(this); }

private:
    OffscreenInterface& owner_;
};

OffscreenInterface::OffscreenInterface(float width, float height, SteadyIntervalTimer::Clock clock)
    : UserInterface(clock), root_(make<RootControl>()) {
    root_.bounds = Rect::ofSize(0.0f, 0.0f, width, height);
}

void OffscreenInterface::setScale(float scale) {
    deviceBacking().setScale(scale);
    refresh();
}

void OffscreenInterface::frame() {
    for (const auto due = running_; Timer * timer : due) {
        // An earlier one may have stopped or deleted it.
        if (std::ranges::find(running_, timer) != running_.end() && timer->frameLocked)
            timer->onTick.raise(timer);
    }
    drainRelay();
}

std::unique_ptr<Bitmap> OffscreenInterface::picture() {
    std::unique_ptr<Bitmap> page = createBitmap();
    const Rect& all = root_.localBounds();
    page->setLogicalSize(all.width(), all.height());
    root_.drawTree(page->canvas());
    return page;
}

std::unique_ptr<Bitmap> OffscreenInterface::createBitmap() {
    return std::make_unique<Bitmap>(deviceBacking());
}

std::unique_ptr<OpenSaveDialog> OffscreenInterface::createOpenDialog() {
    return std::make_unique<CancelledDialog<OpenSaveDialog>>();
}

std::unique_ptr<OpenSaveDialog> OffscreenInterface::createSaveDialog() {
    return std::make_unique<CancelledDialog<OpenSaveDialog>>();
}

std::unique_ptr<SelectFolderDialog> OffscreenInterface::createSelectFolderDialog() {
    return std::make_unique<CancelledDialog<SelectFolderDialog>>();
}

std::unique_ptr<PopupMenu> OffscreenInterface::createPopupMenu() {
    return std::make_unique<CancelledMenu>(*this);
}

std::unique_ptr<Text> OffscreenInterface::createText() {
    return std::make_unique<X11Text>(deviceBacking());
}

std::unique_ptr<TextEditor> OffscreenInterface::createTextEditor() {
    return std::make_unique<TextEditor>(*this);
}

std::unique_ptr<Timer> OffscreenInterface::createTimer() {
    return std::make_unique<StandingTimer>(*this);
}

}  // namespace vanta::gui
