#include "gui/x11/x11_interface.hpp"

#include <cmath>

#include "gui/controls/text_editor.hpp"
#include "gui/graphics/bitmap.hpp"
#include "gui/text/x11_text.hpp"
#include "gui/x11/accelerated_x11_control.hpp"
#include "gui/x11/native_x11_control.hpp"
#include "gui/x11/x11_clipboard.hpp"
#include "gui/x11/x11_dialogs.hpp"
#include "gui/x11/x11_popup_menu.hpp"
#include "gui/x11/x11_timer.hpp"

namespace vanta::gui {
namespace {

constexpr float kDpiOfScale1 = 96.0f;

}  // namespace

float snappedScale(float scale) {
    if (scale > 1.6f) return 2.0f;
    return scale > 1.4f ? 1.5f : 1.0f;
}

X11Desktop readDesktop(const std::string& displayName) {
    const X11Display display(displayName);
    const int screen = DefaultScreen(display.get());
    const float scale = snappedScale(display.dpi() / kDpiOfScale1);
    return {scale, static_cast<float>(DisplayWidth(display.get(), screen)) / scale,
            static_cast<float>(DisplayHeight(display.get(), screen)) / scale};
}

X11Interface::X11Interface(const X11Settings& settings)
    : session_(std::make_shared<X11Session>(settings.displayName)),
      timers_(std::make_unique<X11Timers>()),
      clipboard_(std::make_unique<X11Clipboard>(session_->display)),
      scaleOverride_(settings.scale) {
    openDescriptors();
    try {
        const float wanted = scaleOverride_ > 0.0f ? scaleOverride_ : session_->display.dpi() / kDpiOfScale1;
        session_->backing.setScale(snappedScale(wanted));
        root_ = makeRoot(settings);
        root_->bounds = Rect{0.0f, 0.0f, settings.width, settings.height};
    } catch (...) {
        shutDown();
        closeDescriptors();
        throw;
    }
}

/// The interface deletes it, as all components. What OpenGL cannot draw is drawn in memory, without a word.
X11Control* X11Interface::makeRoot(const X11Settings& settings) {
    const AccelerationMode mode(settings.acceleration);
    if (auto drawing = AcceleratedDrawing::create(*session_, mode)) {
        auto* root = new AcceleratedX11Control(*this, *session_, settings.parentWindow, settings.title,
                                               std::move(drawing), mode);
        accelerated = true;
        return root;
    }
    return new NativeX11Control(*this, *session_, settings.parentWindow, settings.title);
}

X11Interface::~X11Interface() {
    root_->shutdownRendering();
    shutDown();
    closeDescriptors();
}

std::unique_ptr<Bitmap> X11Interface::createBitmap() {
    return std::make_unique<AcceleratedBitmap>(session_->backing);
}

std::unique_ptr<OpenSaveDialog> X11Interface::createOpenDialog() {
    return std::make_unique<X11OpenSaveDialog>(*this, session_, X11OpenSaveDialog::Kind::Open);
}

std::unique_ptr<OpenSaveDialog> X11Interface::createSaveDialog() {
    return std::make_unique<X11OpenSaveDialog>(*this, session_, X11OpenSaveDialog::Kind::Save);
}

std::unique_ptr<SelectFolderDialog> X11Interface::createSelectFolderDialog() {
    return std::make_unique<X11SelectFolderDialog>(*this, session_);
}

std::unique_ptr<PopupMenu> X11Interface::createPopupMenu() {
    return std::make_unique<X11PopupMenu>(*this, session_);
}

std::unique_ptr<Text> X11Interface::createText() {
    return std::make_unique<X11Text>(session_->backing, createBitmap());
}

std::unique_ptr<TextEditor> X11Interface::createTextEditor() {
    return std::make_unique<TextEditor>(*this);
}

std::unique_ptr<Timer> X11Interface::createTimer() {
    return std::make_unique<X11Timer>(*this, *timers_);
}

RootControl& X11Interface::rootControl() {
    return *root_;
}

bool X11Interface::showMessage(const std::string& text, int flags) {
    return showX11Message(*this, session_, text, flags);
}

void X11Interface::setTitle(const std::string& title) {
    root_->setTitle(title);
    XFlush(session_->display.get());
}

void X11Interface::setTransientFor(unsigned long window) {
    if (root_->window() == kNoXid) return;
    XSetTransientForHint(session_->display.get(), root_->window(), window);
    XFlush(session_->display.get());
}

void X11Interface::show() {
    quit_ = false;
    root_->show();
    XFlush(session_->display.get());
}

void X11Interface::hide() {
    const RootControl::MessageScope scope(*root_);
    root_->hide();
    XFlush(session_->display.get());
}

unsigned long X11Interface::window() const {
    return root_->window();
}

bool X11Interface::isOpen() const {
    return root_->window() != kNoXid && !session_->display.isBroken();
}

Point X11Interface::workArea() const {
    X11Display& display = session_->display;
    const DeviceRect area = display.workAreaAt(areaOnScreen(display, root_->window()));
    const float scale = session_->backing.scale();
    return {static_cast<float>(area.width()) / scale, static_cast<float>(area.height()) / scale};
}

DeviceBacking& X11Interface::deviceBacking() {
    return session_->backing;
}

std::string X11Interface::clipboard() {
    return clipboard_->text();
}

void X11Interface::setClipboard(const std::string& text) {
    clipboard_->setText(text);
}

void X11Interface::setScaleOverride(float scale) {
    scaleOverride_ = scale;
    if (scale > 0.0f) {
        applyScale(scale);
    } else {
        desktopScaleChanged();
    }
}

void X11Interface::desktopScaleChanged() {
    if (scaleOverride_ <= 0.0f) applyScale(session_->display.dpi() / kDpiOfScale1);
}

/// The window keeps its logical size and gets other pixels.
void X11Interface::applyScale(float scale) {
    const float snapped = snappedScale(scale);
    if (snapped == session_->backing.scale()) return;
    const RootControl::MessageScope scope(*root_);
    session_->backing.setScale(snapped);
    refresh();
    if (scope.rootIsAlive()) root_->markDirty();
}

void X11Interface::windowLost() {
    if (closed_) return;
    closed_ = true;
    onClose.raise(this);
}

void X11Interface::closeRequested() {
    // First those who may have something to ask, which a loop that is to end would not do.
    const std::shared_ptr<EventRelay> shared = relay();
    onClose.raise(this);
    if (shared->isOpen()) quit_ = true;
}

}  // namespace vanta::gui
