#include "host/vst3/plug_view.hpp"

#include <cmath>
#include <cstring>
#include <optional>

#include "host/vst3/view_keys.hpp"

namespace vanta::vst3 {
namespace {

ViewSize sizeOf(const v3_view_rect& rectangle) {
    return {rectangle.right - rectangle.left, rectangle.bottom - rectangle.top};
}

}  // namespace

const v3_plugin_view_cpp ViewRole::kTable{
    kUnknown,
    {
        .is_platform_type_supported = entry<&ViewRole::isSupported>,
        .attached = entry<&ViewRole::attached>,
        .removed = entry<&ViewRole::removed>,
        .on_wheel = entry<&ViewRole::onWheel>,
        .on_key_down = entry<&ViewRole::onKeyDown>,
        .on_key_up = entry<&ViewRole::onKeyUp>,
        .get_size = entry<&ViewRole::size>,
        .on_size = entry<&ViewRole::onSize>,
        .on_focus = entry<&ViewRole::onFocus>,
        .set_frame = entry<&ViewRole::setFrame>,
        .can_resize = entry<&ViewRole::canResize>,
        .check_size_constraint = entry<&ViewRole::constrain>,
    },
};

ViewRole::ViewRole(ComObject& object, Instance& instance)
    : ComInterface(kTable, object), held_(instance.object), instance_(instance) {
    instance_.allViews.push_back(this);
}

ViewRole::~ViewRole() {
    removed();
    std::erase(instance_.allViews, this);
    instance_.lookAtFrames();
}

v3_plugin_view** ViewRole::pointer() {
    return static_cast<v3_plugin_view**>(static_cast<void*>(static_cast<ComInterface*>(this)));
}

v3_result ViewRole::isSupported(const char* platform) noexcept {
    return platform && std::strcmp(platform, V3_VIEW_PLATFORM_TYPE_X11) == 0 ? V3_TRUE : V3_FALSE;
}

v3_result ViewRole::attached(void* parent, const char* platform) {
    if (!parent || isSupported(platform) != V3_TRUE) return V3_INVALID_ARG;
    if (view_) return V3_FALSE;
    if (!open(reinterpret_cast<NativeWindow>(parent))) return V3_INTERNAL_ERR;
    instance_.openViews.push_back(this);
    return V3_OK;
}

bool ViewRole::open(NativeWindow parent) {
    view_ = instance_.views(instance_.plugin, parent, frame_);
    if (!view_) return false;
    if (scale_ > 0.0) view_->setScale(scale_);
    view_->setVisible(true);
    watched_ = view_->fd();
    if (watched_ >= 0) instance_.timer.watch(watched_);
    return true;
}

void ViewRole::idle() {
    if (view_) view_->idle();
}

v3_result ViewRole::removed() {
    std::erase(instance_.openViews, this);
    if (watched_ >= 0) instance_.timer.unwatch(std::exchange(watched_, -1));
    view_.reset();
    usedKeys_.clear();
    return V3_OK;
}

/// The window has its own events of the mouse.
v3_result ViewRole::onWheel(float) noexcept {
    return V3_FALSE;
}

v3_result ViewRole::onKeyDown(std::int16_t character, std::int16_t code, std::int16_t modifiers) {
    const std::optional<ViewKey> key = viewKeyOf(character, code, modifiers);
    if (!key || !view_ || !view_->keyPressed(*key)) return V3_FALSE;
    usedKeys_.emplace(character, code);
    return V3_TRUE;
}

v3_result ViewRole::onKeyUp(std::int16_t character, std::int16_t code, std::int16_t) {
    return usedKeys_.erase({character, code}) > 0 ? V3_TRUE : V3_FALSE;
}

/// A user's click gives the window the keyboard. To take it with the host's focus would be stealing.
v3_result ViewRole::onFocus(v3_bool) noexcept {
    return V3_OK;
}

v3_result ViewRole::size(v3_view_rect* rectangle) {
    if (!rectangle) return V3_INVALID_ARG;
    // Hosts ask before there is a window, to make one of that size.
    const GenericPlugin& model = instance_.plugin.model();
    const ViewSize size = view_ ? view_->size() : pixels({model.interfaceWidth(), model.interfaceHeight()});
    *rectangle = {0, 0, size.width, size.height};
    return V3_OK;
}

v3_result ViewRole::onSize(v3_view_rect* rectangle) {
    if (!rectangle) return V3_INVALID_ARG;
    if (view_ && view_->size() != sizeOf(*rectangle)) view_->resize(sizeOf(*rectangle));
    return V3_OK;
}

v3_result ViewRole::setFrame(v3_plugin_frame** frame) {
    frame_.host = HostInterface<v3_plugin_frame>(frame);
    instance_.lookAtFrames();
    return V3_OK;
}

v3_result ViewRole::canResize() noexcept {
    const bool can = view_ ? view_->isResizable() : instance_.plugin.model().canResize();
    return can ? V3_TRUE : V3_FALSE;
}

v3_result ViewRole::constrain(v3_view_rect* rectangle) {
    if (!rectangle) return V3_INVALID_ARG;
    const ViewSize size = nearest(sizeOf(*rectangle));
    rectangle->right = rectangle->left + size.width;
    rectangle->bottom = rectangle->top + size.height;
    return V3_OK;
}

ViewSize ViewRole::nearest(ViewSize wanted) const {
    if (view_) return view_->nearestSize(wanted);
    const double scale = instance_.views.scale(scale_);
    const auto units = [&](int length) { return static_cast<int>(std::lround(length / scale)); };
    return pixels(instance_.plugin.model().limitSize({units(wanted.width), units(wanted.height)}));
}

ViewSize ViewRole::pixels(InterfaceSize size) const {
    const double scale = instance_.views.scale(scale_);
    const auto scaled = [&](int units) { return static_cast<int>(std::lround(units * scale)); };
    return {scaled(size.width), scaled(size.height)};
}

v3_result ViewRole::findParameter(std::int32_t x, std::int32_t y, v3_param_id* id) {
    if (!id) return V3_INVALID_ARG;
    const int index = view_ ? view_->parameterAt(x, y) : -1;
    if (index < 0) return V3_FALSE;
    *id = static_cast<v3_param_id>(index);
    return V3_OK;
}

v3_result ViewRole::setScale(float factor) {
    if (!std::isfinite(factor) || factor <= 0.0f) return V3_INVALID_ARG;
    scale_ = static_cast<double>(factor);
    if (view_) view_->setScale(scale_);
    return V3_OK;
}

bool ViewRole::Frame::requestResize(ViewSize size) {
    if (!host) return false;
    v3_view_rect rectangle{0, 0, size.width, size.height};
    return host.call(&v3_plugin_frame::resize_view, view.pointer(), &rectangle) == V3_OK;
}

// Scale

const v3_plugin_view_content_scale_cpp ViewScale::kTable{
    kUnknown,
    {.set_content_scale_factor = entry<&ViewScale::setFactor>},
};

ViewScale::ViewScale(ComObject& object, ViewRole& view) : ComInterface(kTable, object), view_(view) {}

v3_result ViewScale::setFactor(float factor) {
    return view_.setScale(factor);
}

// What is under the pointer

const v3_plugin_view_parameter_finder_cpp ParameterFinder::kTable{
    kUnknown,
    {.find_parameter = entry<&ParameterFinder::find>},
};

ParameterFinder::ParameterFinder(ComObject& object, ViewRole& view)
    : ComInterface(kTable, object), view_(view) {}

v3_result ParameterFinder::find(std::int32_t x, std::int32_t y, v3_param_id* id) {
    return view_.findParameter(x, y, id);
}

ComInterface* PlugView::interfaceOf(const std::uint8_t* id) noexcept {
    if (v3_tuid_match(id, v3_funknown_iid) || v3_tuid_match(id, v3_plugin_view_iid)) return &view_;
    if (v3_tuid_match(id, v3_plugin_view_content_scale_iid)) return &scale_;
    return v3_tuid_match(id, v3_plugin_view_parameter_finder_iid) ? &finder_ : nullptr;
}

}  // namespace vanta::vst3
