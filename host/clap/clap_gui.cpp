#include "host/clap/clap_gui.hpp"

#include <cmath>
#include <cstring>

#include "host/clap/clap_extension_tables.hpp"
#include "host/clap/clap_host_extension.hpp"
#include "host/clap/clap_plugin.hpp"

namespace vanta {
namespace {

/// Sixty frames a second, where a host is as fast as that. All allow thirty.
constexpr std::uint32_t kIdleMs = 16;

}  // namespace

ClapGui::ClapGui(const clap_host_t& host, HostedPlugin& plugin, const EmbeddedViewFactory& open)
    : host_(host),
      plugin_(plugin),
      open_(open),
      window_(hostExtension<clap_host_gui_t>(host, CLAP_EXT_GUI)),
      timers_(hostExtension<clap_host_timer_support_t>(host, CLAP_EXT_TIMER_SUPPORT)),
      descriptors_(hostExtension<ClapHostPosixFdSupport>(host, kClapPosixFdSupport)) {}

ClapGui::~ClapGui() {
    destroy();
}

/// Also where the host has no timers: scanners that only ask have none. A floating window is of whatever kind
/// we have.
bool ClapGui::supports(const char* api, bool isFloating) const {
    if (!api || !*api) return isFloating;
    return !std::strcmp(api, CLAP_WINDOW_API_X11);
}

bool ClapGui::create(const char* api, bool isFloating) {
    // Descriptors alone do not do: much happens on a clock.
    if (isCreated_ || !timers_ || !supports(api, isFloating)) return false;
    scale_ = 0.0;
    wanted_ = pixels(plugin_.model().interfaceWidth(), plugin_.model().interfaceHeight());
    isFloating_ = isFloating;
    isCreated_ = !isFloating || open(0);
    return isCreated_;
}

void ClapGui::destroy() {
    stopCalls();
    view_.reset();
    isCreated_ = false;
}

bool ClapGui::open(NativeWindow parent) {
    view_ = open_(plugin_, parent, *this);
    if (!view_) return false;
    if (scale_ > 0.0) view_->setScale(scale_);
    if (parent != 0) view_->resize(view_->nearestSize(wanted_));
    startCalls();
    return true;
}

void ClapGui::startCalls() {
    if (!timers_->register_timer(&host_, kIdleMs, &timer_)) timer_ = CLAP_INVALID_ID;
    const int fd = view_->fd();
    if (descriptors_ && fd >= 0 && descriptors_->register_fd(&host_, fd, kClapPosixFdRead)) descriptor_ = fd;
}

void ClapGui::stopCalls() {
    if (timer_ != CLAP_INVALID_ID) timers_->unregister_timer(&host_, timer_);
    timer_ = CLAP_INVALID_ID;
    if (descriptor_ >= 0) descriptors_->unregister_fd(&host_, descriptor_);
    descriptor_ = -1;
}

void ClapGui::viewClosed(bool isGone) {
    if (window_) window_->closed(&host_, isGone);
}

bool ClapGui::setParent(NativeWindow parent) {
    return isCreated_ && !isFloating_ && !view_ && parent != 0 && open(parent);
}

bool ClapGui::setTransient(NativeWindow window) {
    if (!isFloating_ || !view_) return false;
    view_->setTransientFor(window);
    return true;
}

void ClapGui::suggestTitle(const char* title) {
    if (isFloating_ && view_ && title) view_->setTitle(title);
}

bool ClapGui::setVisible(bool visible) {
    if (view_) view_->setVisible(visible);
    return view_ != nullptr;
}

bool ClapGui::setScale(double scale) {
    if (!isCreated_ || !std::isfinite(scale) || scale <= 0.0) return false;
    const double former = open_.scale(scale_);
    scale_ = scale;
    if (view_) {
        view_->setScale(scale);
        return true;
    }
    const double ratio = open_.scale(scale_) / former;
    const auto scaled = [&](int length) { return static_cast<int>(std::lround(length * ratio)); };
    wanted_ = {scaled(wanted_.width), scaled(wanted_.height)};
    return true;
}

ViewSize ClapGui::size() const {
    return view_ ? view_->size() : wanted_;
}

bool ClapGui::isResizable() const {
    return view_ ? view_->isResizable() : plugin_.model().canResize();
}

ViewSize ClapGui::pixels(int width, int height) const {
    const double scale = open_.scale(scale_);
    const auto scaled = [&](int units) { return static_cast<int>(std::lround(units * scale)); };
    return {scaled(width), scaled(height)};
}

ViewSize ClapGui::nearestSize(ViewSize wanted) const {
    if (view_) return view_->nearestSize(wanted);
    const double scale = open_.scale(scale_);
    const auto units = [&](int length) { return static_cast<int>(std::lround(length / scale)); };
    const InterfaceSize nearest = plugin_.model().limitSize({units(wanted.width), units(wanted.height)});
    return pixels(nearest.width, nearest.height);
}

bool ClapGui::resize(ViewSize size) {
    if (!isCreated_) return false;
    wanted_ = nearestSize(size);
    if (view_) view_->resize(wanted_);
    return wanted_ == size;
}

void ClapGui::onTimer(clap_id timer) {
    if (view_ && timer == timer_) view_->idle();
}

void ClapGui::onDescriptor(int fd) {
    if (view_ && fd == descriptor_) view_->idle();
}

bool ClapGui::requestResize(ViewSize size) {
    return window_ && window_->request_resize(&host_, static_cast<std::uint32_t>(size.width),
                                              static_cast<std::uint32_t>(size.height));
}

}  // namespace vanta
