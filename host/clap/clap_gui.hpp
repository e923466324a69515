#pragma once

#include <clap/ext/gui.h>
#include <clap/ext/timer-support.h>

#include <memory>

#include "host/common/embedded_view.hpp"

namespace vanta {

/// The window of an instance, from when the host wants one. The view itself comes with its parent; until then
/// the size is what the model remembers. Main thread.
class ClapGui final : public EmbeddedViewHost {
public:
    ClapGui(const clap_host_t& host, HostedPlugin& plugin, const EmbeddedViewFactory& open);
    ~ClapGui() override;

    /// Whether there is an interface. Any thread.
    bool isOffered() const { return static_cast<bool>(open_); }
    bool supports(const char* api, bool isFloating) const;
    bool create(const char* api, bool isFloating);
    void destroy();
    /// By our own wish: the host is told.
    void close();
    bool isCreated() const { return isCreated_; }

    bool setParent(NativeWindow parent);
    bool setVisible(bool visible);
    bool setScale(double scale);
    ViewSize size() const;
    bool isResizable() const;
    ViewSize nearestSize(ViewSize wanted) const;
    bool resize(ViewSize size);
    void onTimer(clap_id timer);

    bool requestResize(ViewSize size) override;

private:
    const clap_host_t& host_;
    HostedPlugin& plugin_;
    const EmbeddedViewFactory& open_;
    const clap_host_gui_t* window_;
    const clap_host_timer_support_t* timers_;
    bool isCreated_ = false;
    double scale_ = 1.0;
    ViewSize wanted_;  ///< while there is no view
    clap_id timer_ = CLAP_INVALID_ID;
    std::unique_ptr<EmbeddedView> view_;
};

}  // namespace vanta
