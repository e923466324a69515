#include "host/vst3/plug_view.hpp"

#include <cmath>
#include <cstring>

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
        .on_key_down = entry<&ViewRole::onKey>,
        .on_key_up = entry<&ViewRole::onKey>,
        .get_size = entry<&ViewRole::size>,
        .on_size = entry<&ViewRole::onSize>,
        .on_focus = entry<&ViewRole::onFocus>,
        .set_frame = entry<&ViewRole::setFrame>,
        .can_resize = entry<&ViewRole::canResize>,
        .check_size_constraint = entry<&ViewRole::constrain>,
    },
};

ViewRole::ViewRole(ComObject& object, Instance& instance)
    : ComInterface(kTable, object), held_(instance.object), instance_(instance) {}

ViewRole::~ViewRole() {
    removed();
    instance_.timer.look<v3_plugin_frame>(RunLoopTimer::Source::Frame, nullptr);
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
    parent_ = reinterpret_cast<NativeWindow>(parent);
    open();
    if (!view_) return V3_INTERNAL_ERR;
    instance_.openViews.push_back(this);
    return V3_OK;
}

void ViewRole::open() {
    view_ = instance_.views(instance_.plugin, parent_, frame_);
    if (!view_) return;
    view_->setScale(scale_);
    view_->setVisible(true);
}

void ViewRole::idle() {
    if (view_) view_->idle();
}

v3_result ViewRole::removed() {
    std::erase(instance_.openViews, this);
    view_.reset();
    return V3_OK;
}

/// The window has its own events of mouse and keyboard.
v3_result ViewRole::onWheel(float) noexcept {
    return V3_FALSE;
}

v3_result ViewRole::onKey(std::int16_t, std::int16_t, std::int16_t) noexcept {
    return V3_FALSE;
}

v3_result ViewRole::onFocus(v3_bool) noexcept {
    return V3_OK;
}

v3_result ViewRole::size(v3_view_rect* rectangle) {
    if (!rectangle) return V3_INVALID_ARG;
    // Hosts ask before there is a window, to make one of that size.
    const GenericPlugin& model = instance_.plugin.model();
    const ViewSize size = view_ ? view_->size() : ViewSize{model.interfaceWidth(), model.interfaceHeight()};
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
    instance_.timer.look(RunLoopTimer::Source::Frame, frame);
    return V3_OK;
}

v3_result ViewRole::canResize() noexcept {
    return !view_ || view_->isResizable() ? V3_TRUE : V3_FALSE;
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
    const auto size = instance_.plugin.model().limitSize({wanted.width, wanted.height});
    return {size.width, size.height};
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

ComInterface* PlugView::interfaceOf(const std::uint8_t* id) noexcept {
    if (v3_tuid_match(id, v3_funknown_iid) || v3_tuid_match(id, v3_plugin_view_iid)) return &view_;
    return v3_tuid_match(id, v3_plugin_view_content_scale_iid) ? &scale_ : nullptr;
}

}  // namespace vanta::vst3
