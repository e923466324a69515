#pragma once

#include <clap/ext/gui.h>
#include <clap/ext/timer-support.h>

#include <memory>
#include <string>

#include "host/clap/clap_extensions.hpp"
#include "host/common/embedded_view.hpp"

namespace vanta {

/// The window of an instance, from when the host wants one: within one of the host's, or floating. The view
/// itself comes with its parent, or when it floats with the creation; until then the size is what the model
/// remembers. Main thread.
class ClapGui final : public EmbeddedViewHost {
public:
    ClapGui(const clap_host_t& host, HostedPlugin& plugin, const EmbeddedViewFactory& open);
    ~ClapGui() override;

    /// Whether there is an interface. Any thread.
    bool isOffered() const { return static_cast<bool>(open_); }
    bool supports(const char* api, bool isFloating) const;
    bool create(const char* api, bool isFloating);
    void destroy();
    bool isCreated() const { return isCreated_; }

    bool setParent(NativeWindow parent);
    bool setTransient(NativeWindow window);
    void suggestTitle(const char* title);
    bool setVisible(bool visible);
    bool setScale(double scale);
    ViewSize size() const;
    bool isResizable() const;
    ViewSize nearestSize(ViewSize wanted) const;
    bool resize(ViewSize size);
    void onTimer(clap_id timer);
    void onDescriptor(int fd);

    bool requestResize(ViewSize size) override;
    bool canResize() const override { return window_ != nullptr; }
    void viewClosed(bool isGone) override;

private:
    bool open(NativeWindow parent);
    void startCalls();
    void stopCalls();
    ViewSize pixels(int width, int height) const;

    const clap_host_t& host_;
    HostedPlugin& plugin_;
    const EmbeddedViewFactory& open_;
    const clap_host_gui_t* window_;
    const clap_host_timer_support_t* timers_;
    const ClapHostPosixFdSupport* descriptors_;
    bool isCreated_ = false;
    bool isFloating_ = false;
    double scale_ = 0.0;  ///< as the host wants it; 0 while it has not said so
    ViewSize wanted_;     ///< while there is no view
    clap_id timer_ = CLAP_INVALID_ID;
    int descriptor_ = -1;
    std::unique_ptr<EmbeddedView> view_;
};

}  // namespace vanta
