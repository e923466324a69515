#include "host/clap/clap_gui.hpp"

#include <cmath>
#include <cstring>

#include "host/clap/clap_extension_tables.hpp"
#include "host/clap/clap_host_extension.hpp"
#include "host/clap/clap_plugin.hpp"

namespace vanta {
namespace {

/// Hosts allow 30 Hz.
constexpr std::uint32_t kIdleMs = 30;

}  // namespace

ClapGui::ClapGui(const clap_host_t& host, HostedPlugin& plugin, const EmbeddedViewFactory& open)
    : host_(host),
      plugin_(plugin),
      open_(open),
      window_(hostExtension<clap_host_gui_t>(host, CLAP_EXT_GUI)),
      timers_(hostExtension<clap_host_timer_support_t>(host, CLAP_EXT_TIMER_SUPPORT)) {}

ClapGui::~ClapGui() {
    destroy();
}

bool ClapGui::supports(const char* api, bool isFloating) const {
    return api && !std::strcmp(api, CLAP_WINDOW_API_X11) && !isFloating && timers_;
}

bool ClapGui::create(const char* api, bool isFloating) {
    if (isCreated_ || !supports(api, isFloating)) return false;
    wanted_ = {plugin_.model().interfaceWidth(), plugin_.model().interfaceHeight()};
    scale_ = 1.0;
    return isCreated_ = true;
}

void ClapGui::destroy() {
    if (timer_ != CLAP_INVALID_ID) timers_->unregister_timer(&host_, timer_);
    timer_ = CLAP_INVALID_ID;
    view_.reset();
    isCreated_ = false;
}

void ClapGui::close() {
    if (!isCreated_) return;
    destroy();
    if (window_) window_->closed(&host_, true);
}

bool ClapGui::setParent(NativeWindow parent) {
    if (!isCreated_ || view_) return false;
    view_ = open_(plugin_, parent, *this);
    if (!view_) return false;
    view_->setScale(scale_);
    view_->resize(view_->nearestSize(wanted_));
    if (!timers_->register_timer(&host_, kIdleMs, &timer_)) timer_ = CLAP_INVALID_ID;
    return true;
}

bool ClapGui::setVisible(bool visible) {
    if (view_) view_->setVisible(visible);
    return view_ != nullptr;
}

bool ClapGui::setScale(double scale) {
    if (!isCreated_ || !std::isfinite(scale) || scale <= 0.0) return false;
    if (view_) {
        view_->setScale(scale);
    } else {
        const auto scaled = [&](int length) {
            return static_cast<int>(std::lround(length * scale / scale_));
        };
        wanted_ = {scaled(wanted_.width), scaled(wanted_.height)};
    }
    scale_ = scale;
    return true;
}

ViewSize ClapGui::size() const {
    return view_ ? view_->size() : wanted_;
}

bool ClapGui::isResizable() const {
    // Until there is a view, any size may be asked for, and the nearest is taken.
    return !view_ || view_->isResizable();
}

ViewSize ClapGui::nearestSize(ViewSize wanted) const {
    if (view_) return view_->nearestSize(wanted);
    const auto points = [&](int length) { return static_cast<int>(std::lround(length / scale_)); };
    const auto pixels = [&](int length) { return static_cast<int>(std::lround(length * scale_)); };
    const InterfaceSize nearest = plugin_.model().limitSize({points(wanted.width), points(wanted.height)});
    return {pixels(nearest.width), pixels(nearest.height)};
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

bool ClapGui::requestResize(ViewSize size) {
    return window_ && window_->request_resize(&host_, static_cast<std::uint32_t>(size.width),
                                              static_cast<std::uint32_t>(size.height));
}

}  // namespace vanta
