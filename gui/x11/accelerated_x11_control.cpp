#include "gui/x11/accelerated_x11_control.hpp"

#include <exception>
#include <system_error>

#include "gui/graphics/canvas.hpp"
#include "gui/x11/x11_bitmap.hpp"
#include "gui/x11/x11_interface.hpp"

namespace vanta::gui {
namespace {

/// A window that cannot be painted must not hold up whoever resizes it.
constexpr int kLongestHandshakeMs = 250;

}  // namespace

std::unique_ptr<AcceleratedDrawing> AcceleratedDrawing::create(X11Session& session, AccelerationMode mode) {
    if (mode.isOff()) return nullptr;
    auto drawing = std::make_unique<AcceleratedDrawing>();
    drawing->context = GlxContext::create(DisplayString(session.display.get()),
                                          XVisualIDFromVisual(session.display.visual()));
    if (!drawing->context || !drawing->context->makeCurrentUnseen()) return nullptr;
    if (const auto functions = GlFunctions::find(drawing->context->lookup())) {
        drawing->renderer = std::make_unique<AcceleratedRenderer>(*functions, session.backing);
        if (!drawing->renderer->initialize(mode)) drawing->renderer.reset();
    }
    drawing->context->release();
    return drawing->renderer ? std::move(drawing) : nullptr;
}

AcceleratedX11Control::AcceleratedX11Control(X11Interface& interface, X11Session& session,
                                             Window parentWindow, const std::string& title,
                                             std::unique_ptr<AcceleratedDrawing> drawing,
                                             AccelerationMode mode)
    : X11Control(interface, session, parentWindow, title),
      drawing_(std::move(drawing)),
      mode_(mode),
      thread_(*this, *this) {}

AcceleratedX11Control::~AcceleratedX11Control() {
    shutdownRendering();
}

void AcceleratedX11Control::shutdownRendering() {
    isShutDown_ = true;
    stopThread(true);
}

/// The thread may be waiting for the lock.
void AcceleratedX11Control::stopThread(bool deletesTextures) {
    const LockGivenAway given(*this);
    thread_.stop(deletesTextures);
}

void AcceleratedX11Control::enterFullScreen() {
    stopThread(false);
    X11Control::enterFullScreen();
}

void AcceleratedX11Control::leaveFullScreen() {
    stopThread(false);
    X11Control::leaveFullScreen();
}

void AcceleratedX11Control::resized() {
    if (resizeDepth_++ == 0) thread_.interrupt();
    X11Control::resized();
    if (--resizeDepth_ == 0) awaitFrame();
}

void AcceleratedX11Control::awaitFrame() {
    if (!thread_.isRunning()) return;
    // Not by way of an update, which may have to wait.
    invalidate(localBounds());
    // The thread has another connection: the window must have its size before it looks.
    XSync(session().display.get(), kXFalse);
    const unsigned request = thread_.requestFrame();
    const LockGivenAway given(*this);
    thread_.awaitFrame(request, kLongestHandshakeMs);
}

/// All but the first frame is up to the thread.
bool AcceleratedX11Control::needsPainting() const {
    return !thread_.isRunning() && !isShutDown_ && X11Control::needsPainting();
}

void AcceleratedX11Control::paintDirty() {
    // Nobody else does yet.
    ui().tickFrameTimers();
    showFirstFrame();
    invalidate(localBounds());
    startThread();
}

void AcceleratedX11Control::showFirstFrame() {
    X11Bitmap frame(session().backing, session().display);
    const DevicePoint size = deviceSize();
    frame.setPixelSize(size.x, size.y);
    drawTree(frame.canvas());
    frame.show(window(), frame.pixelRect());
    XSync(session().display.get(), kXFalse);
}

void AcceleratedX11Control::startThread() {
    X11Display& display = session().display;
    const double refreshMs = display.refreshMsAt(areaOnScreen(display, window()));
    try {
        thread_.start(FrameRhythm::of(mode_.framesPerSecond(), refreshMs));
    } catch (const std::system_error&) {
        // The next try is the next time that something is dirty.
    }
}

bool AcceleratedX11Control::makeCurrent() {
    shownSize_ = {};
    return drawing_->context->makeCurrent(window());
}

void AcceleratedX11Control::release() {
    drawing_->context->release();
}

bool AcceleratedX11Control::drawFrame(bool canDraw) {
    try {
        ui().tickFrameTimers();
        if (!canDraw || !isMapped() || dirtyRect().isEmpty() || !drawing_->context->hasWindow()) return false;
        const DevicePoint size = deviceSize();
        if (size != shownSize_ && !drawing_->context->makeCurrentAgain()) return false;
        shownSize_ = size;
        drawing_->renderer->beginFrame(size);
        Canvas canvas(*drawing_->renderer);
        canvas.setState({localBounds(), 255, {}});
        drawTree(canvas);
        takeDirtyRect();
        return true;
    } catch (const std::exception&) {
        // There is nobody to tell on this thread; what is still dirty gets another try.
        return false;
    }
}

void AcceleratedX11Control::frameDropped() {
    shownSize_ = {};
    invalidate(localBounds());
}

void AcceleratedX11Control::swap() {
    drawing_->context->swap();
}

std::optional<FrameTarget::Vblank> AcceleratedX11Control::vblank() {
    return drawing_->context->vblank();
}

void AcceleratedX11Control::deleteTextures() {
    if (!drawing_->context->isBroken()) drawing_->renderer->deleteTextures();
}

}  // namespace vanta::gui
