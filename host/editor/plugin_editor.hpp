#pragma once

#include "host/common/embedded_view.hpp"

namespace vanta {

/// The interface of a `HostedPlugin` as the view of any plug-in format: see EmbeddedView.
class PluginEditor final : public EmbeddedView {
public:
    /// `parent` 0 makes a window of its own. Throws std::runtime_error if there is no display or no such
    /// parent.
    PluginEditor(HostedPlugin& plugin, NativeWindow parent, EmbeddedViewHost& host);
    /// Also within a call to the host.
    ~PluginEditor() override;

    NativeWindow window() const override;
    void setVisible(bool visible) override;
    ViewSize size() const override;
    bool isResizable() const override;
    ViewSize nearestSize(ViewSize wanted) const override;
    void resize(ViewSize size) override;
    void setScale(double scale) override;
    void idle() override;
    int fd() const override;
    int parameterAt(int x, int y) const override;
    bool keyPressed(const ViewKey& key) override;
    void setTitle(const std::string& title) override;
    void setTransientFor(NativeWindow window) override;

private:
    class Core;

    std::shared_ptr<Core> core_;
};

/// Opens such editors. Without a display they are null, and hosts show controls of their own.
EmbeddedViewFactory pluginEditors();

}  // namespace vanta
