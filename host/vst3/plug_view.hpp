#pragma once

#include <memory>
#include <set>
#include <utility>

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
    v3_result onKeyDown(std::int16_t character, std::int16_t code, std::int16_t modifiers);
    v3_result onKeyUp(std::int16_t character, std::int16_t code, std::int16_t modifiers);
    v3_result size(v3_view_rect* rectangle);
    v3_result onSize(v3_view_rect* rectangle);
    v3_result onFocus(v3_bool focused) noexcept;
    v3_result setFrame(v3_plugin_frame** frame);
    v3_result canResize() noexcept;
    v3_result constrain(v3_view_rect* rectangle);
    v3_result setScale(float factor);
    /// At a point of the view, in pixels.
    v3_result findParameter(std::int32_t x, std::int32_t y, v3_param_id* id);

    v3_plugin_view** pointer();

    // For the instance.

    void idle();
    /// As the host has set it, or null.
    v3_plugin_frame** frame() const { return frame_.host.get(); }

private:
    static const v3_plugin_view_cpp kTable;

    /// What the view asks of the host.
    struct Frame final : EmbeddedViewHost {
        explicit Frame(ViewRole& own) : view(own) {}
        bool requestResize(ViewSize size) override;
        bool canResize() const override { return static_cast<bool>(host); }
        ViewRole& view;
        HostInterface<v3_plugin_frame> host;
    };

    bool open(NativeWindow parent);
    ViewSize nearest(ViewSize wanted) const;
    ViewSize pixels(InterfaceSize size) const;

    const ComScope held_;
    Instance& instance_;
    Frame frame_{*this};
    double scale_ = 0.0;  ///< as the host wants it; 0 while it has not said so
    std::unique_ptr<EmbeddedView> view_;
    int watched_ = -1;                        ///< the view's descriptor
    std::set<std::pair<int, int>> usedKeys_;  ///< whose release is ours as well
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

/// Which parameter a host's own controls should follow.
class ParameterFinder final : public ComInterface {
public:
    ParameterFinder(ComObject& object, ViewRole& view);
    v3_result find(std::int32_t x, std::int32_t y, v3_param_id* id);

private:
    static const v3_plugin_view_parameter_finder_cpp kTable;

    ViewRole& view_;
};

class PlugView final : public ComObject {
public:
    explicit PlugView(Instance& instance) : view_(*this, instance) {}
    v3_plugin_view** pointer() { return view_.pointer(); }

protected:
    ComInterface* interfaceOf(const std::uint8_t* id) noexcept override;

private:
    ViewRole view_;
    ViewScale scale_{*this, view_};
    ParameterFinder finder_{*this, view_};
};

}  // namespace vanta::vst3
