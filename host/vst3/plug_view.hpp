#pragma once

#include <memory>

#include <travesty/view.h>

#include "host/vst3/instance.hpp"

namespace vanta::vst3 {

/// The interface of an instance in a window of the host's. It keeps the instance alive. The host's main
/// thread.
class ViewRole final : public ComInterface {
public:
    ViewRole(ComObject& object, Instance& instance);
    ~ViewRole();

    v3_result isSupported(const char* platform) noexcept;
    v3_result attached(void* parent, const char* platform);
    v3_result removed();
    v3_result onWheel(float distance) noexcept;
    v3_result onKey(std::int16_t character, std::int16_t code, std::int16_t modifiers) noexcept;
    v3_result size(v3_view_rect* rectangle);
    v3_result onSize(v3_view_rect* rectangle);
    v3_result onFocus(v3_bool focused) noexcept;
    v3_result setFrame(v3_plugin_frame** frame);
    v3_result canResize() noexcept;
    v3_result constrain(v3_view_rect* rectangle);
    v3_result setScale(float factor);

    v3_plugin_view** pointer();

    // For the instance.

    void idle();
    /// Around a change of layout, which no view outlives.
    void close() { view_.reset(); }
    void open();

private:
    static const v3_plugin_view_cpp kTable;

    /// What the view asks of the host.
    struct Frame final : EmbeddedViewHost {
        explicit Frame(ViewRole& own) : view(own) {}
        bool requestResize(ViewSize size) override;
        ViewRole& view;
        HostInterface<v3_plugin_frame> host;
    };

    ViewSize nearest(ViewSize wanted) const;

    const ComScope held_;
    Instance& instance_;
    Frame frame_{*this};
    double scale_ = 1.0;
    NativeWindow parent_ = 0;
    std::unique_ptr<EmbeddedView> view_;
};

/// How large the host's pixels are.
class ViewScale final : public ComInterface {
public:
    ViewScale(ComObject& object, ViewRole& view);
    v3_result setFactor(float factor);

private:
    static const v3_plugin_view_content_scale_cpp kTable;

    ViewRole& view_;
};

class PlugView final : public ComObject {
public:
    explicit PlugView(Instance& instance) : view_(*this, instance), scale_(*this, view_) {}
    v3_plugin_view** pointer() { return view_.pointer(); }

protected:
    ComInterface* interfaceOf(const std::uint8_t* id) noexcept override;

private:
    ViewRole view_;
    ViewScale scale_;
};

}  // namespace vanta::vst3
