#include "gui/x11/glx_context.hpp"

#include <chrono>
#include <cmath>
#include <stdexcept>
#include <string_view>

#include "gui/x11/x11_errors.hpp"

namespace vanta::gui {
namespace {

/// A blank that lies further from now is one of another clock.
constexpr double kSameClockMs = 1000.0;

}  // namespace

std::unique_ptr<GlxContext> GlxContext::create(const std::string& displayName, VisualID visual) {
    const GlxFunctions* functions = GlxFunctions::get();
    if (!functions) return nullptr;
    try {
        std::unique_ptr<GlxContext> context(new GlxContext(displayName, *functions));
        return context->open(visual) ? std::move(context) : nullptr;
    } catch (const std::runtime_error&) {
        return nullptr;
    }
}

GlxContext::GlxContext(const std::string& displayName, const GlxFunctions& functions)
    : connection_(std::make_unique<X11Connection>(displayName)), glx_(functions) {}

GlxContext::~GlxContext() {
    if (isBroken()) {
        // A call that the end has caught may hold the connection's lock for ever, and closing would wait.
        static_cast<void>(connection_.release());
        return;
    }
    if (context_) glx_.DestroyContext(connection_->get(), context_);
    if (unseen_ != kNoXid) XDestroyWindow(connection_->get(), unseen_);
    if (colormap_ != kNoXid) XFreeColormap(connection_->get(), colormap_);
}

bool GlxContext::open(VisualID visual) {
    Display* display = connection_->get();
    int major = 0;
    int minor = 0;
    if (!glx_.QueryExtension(display, nullptr, nullptr) || !glx_.QueryVersion(display, &major, &minor) ||
        major * 10 + minor < 13)
        return false;
    constexpr int kWanted[] = {GLX_DOUBLEBUFFER,
                               kXTrue,
                               GLX_RENDER_TYPE,
                               GLX_RGBA_BIT,
                               GLX_DRAWABLE_TYPE,
                               GLX_WINDOW_BIT,
                               GLX_RED_SIZE,
                               8,
                               GLX_GREEN_SIZE,
                               8,
                               GLX_BLUE_SIZE,
                               8,
                               0};
    int count = 0;
    GLXFBConfig* configs = glx_.ChooseFBConfig(display, DefaultScreen(display), kWanted, &count);
    const unsigned errors = caughtErrors();
    for (int i = 0; i < count && !context_; ++i) {
        int id = 0;
        glx_.GetFBConfigAttrib(display, configs[i], GLX_VISUAL_ID, &id);
        if (static_cast<VisualID>(id) != visual) continue;
        context_ = glx_.CreateNewContext(display, configs[i], GLX_RGBA_TYPE, nullptr, kXTrue);
    }
    if (configs) XFree(configs);
    if (!context_ || !connection_->syncedWithoutError(errors)) return false;
    findExtensions();
    makeUnseenWindow(visual);
    return connection_->syncedWithoutError(errors);
}

void GlxContext::makeUnseenWindow(VisualID visual) {
    Display* display = connection_->get();
    XVisualInfo wanted{};
    wanted.visualid = visual;
    int count = 0;
    XVisualInfo* found = XGetVisualInfo(display, VisualIDMask, &wanted, &count);
    if (!found) return;
    colormap_ = XCreateColormap(display, connection_->root(), found->visual, AllocNone);
    XSetWindowAttributes attributes{};
    attributes.colormap = colormap_;
    attributes.override_redirect = kXTrue;
    unseen_ = XCreateWindow(display, connection_->root(), 0, 0, 1, 1, 0, found->depth, InputOutput,
                            found->visual, CWBorderPixel | CWColormap | CWOverrideRedirect, &attributes);
    XFree(found);
}

void GlxContext::findExtensions() {
    Display* display = connection_->get();
    const char* list = glx_.QueryExtensionsString(display, DefaultScreen(display));
    const std::string_view names = list ? list : "";
    const auto find = [&](const char* extension, const char* name, auto& function) {
        if (!listContains(names, extension)) return;
        function = reinterpret_cast<std::decay_t<decltype(function)>>(glx_.find(name));
    };
    find("GLX_EXT_swap_control", "glXSwapIntervalEXT", swapInterval_);
    find("GLX_MESA_swap_control", "glXSwapIntervalMESA", swapIntervalMesa_);
    find("GLX_OML_sync_control", "glXGetSyncValuesOML", syncValues_);
    find("GLX_OML_sync_control", "glXGetMscRateOML", refreshRate_);
}

GlLookup GlxContext::lookup() const {
    return [this](const char* name) { return glx_.find(name); };
}

bool GlxContext::makeCurrentUnseen() {
    return unseen_ != kNoXid && makeCurrent(unseen_);
}

bool GlxContext::makeCurrent(Window window) {
    if (isBroken() || !glx_.MakeCurrent(connection_->get(), window, context_)) return false;
    window_ = window;
    if (swapInterval_) {
        swapInterval_(connection_->get(), window, 0);
    } else if (swapIntervalMesa_) {
        swapIntervalMesa_(0);
    }
    int numerator = 0;
    int denominator = 0;
    refreshMs_ = 0.0;
    if (refreshRate_ && refreshRate_(connection_->get(), window, &numerator, &denominator) && numerator > 0) {
        refreshMs_ = 1000.0 * denominator / numerator;
    }
    return true;
}

void GlxContext::release() {
    if (isBroken()) {
        // Where a call was caught by the end, this thread may hold the lock for good, and at the end of the
        // process OpenGL's library waits for it.
        XUnlockDisplay(connection_->get());
    } else {
        glx_.MakeCurrent(connection_->get(), kNoXid, nullptr);
    }
    window_ = kNoXid;
}

bool GlxContext::makeCurrentAgain() {
    const Window window = window_;
    // Nothing less makes all of them forget the window.
    return makeCurrentUnseen() && makeCurrent(window);
}

bool GlxContext::hasWindow() const {
    if (isBroken() || window_ == kNoXid) return false;
    Window root = kNoXid;
    int x = 0;
    int y = 0;
    unsigned width = 0;
    unsigned height = 0;
    unsigned border = 0;
    unsigned depth = 0;
    return XGetGeometry(connection_->get(), window_, &root, &x, &y, &width, &height, &border, &depth) != 0;
}

void GlxContext::swap() {
    if (isBroken()) return;
    glx_.SwapBuffers(connection_->get(), window_);
    // Whoever waits for the frame looks by another connection.
    XFlush(connection_->get());
}

std::optional<FrameTarget::Vblank> GlxContext::vblank() {
    std::int64_t microseconds = 0;
    std::int64_t count = 0;
    std::int64_t swaps = 0;
    if (!syncValues_ || isBroken() ||
        !syncValues_(connection_->get(), window_, &microseconds, &count, &swaps))
        return std::nullopt;
    using Milliseconds = std::chrono::duration<double, std::milli>;
    const double now = Milliseconds(std::chrono::steady_clock::now().time_since_epoch()).count();
    const double time = static_cast<double>(microseconds) / 1000.0;
    if (std::abs(now - time) > kSameClockMs) return std::nullopt;
    return FrameTarget::Vblank{time, refreshMs_};
}

}  // namespace vanta::gui
