#pragma once

#include <memory>

#include "interface/layout/bottom_bar.hpp"
#include "interface/layout/interface_form.hpp"
#include "interface/layout/model_meter_link.hpp"
#include "interface/layout/top_bar.hpp"

namespace vanta::interface {

/// The interface of the limiter. It fills an empty UserInterface of the size that the model wants:
///
///     gui::X11Interface ui({.width = float(plugin.interfaceWidth()), ...});
///     VantaInterface interface(ui, plugin);
///     interface.attachEditor(&editor);
///     ui.run();
///
/// Between the bars lies one of two forms: controls and meters alone in Compact, else display, panels and
/// meters. Another size builds the other form when it is crossed; what is set stays in the model.
class VantaInterface final : public QuillmarkPluginInterface {
public:
    /// `helpFile` is the installed manual, or empty.
    VantaInterface(gui::UserInterface& interface, VantaPlugin& plugin, const std::string& helpFile = {});
    ~VantaInterface() override;

    InterfaceForm& form() const { return *form_; }
    BottomBar& bottomBar() { return *bottomBar_; }
    TopBar& topBar() { return *topBar_; }

protected:
    void parameterChanged(int index) override;
    void channelLayoutChanged() override;
    void controllerMoved(int controller) override;

private:
    void rebuild();
    void removeForm();
    void resized(void*);
    void layOut();
    void coverGround();
    void frameStarts(void*);

    ModelMeterLink meters_;
    const LayoutContext context_;
    std::unique_ptr<TopBar> topBar_;
    std::unique_ptr<BottomBar> bottomBar_;
    std::size_t formStart_ = 0;  ///< the first of the factory's controls that is the form's
    gui::Control* ground_ = nullptr;
    gui::Rect covered_;  ///< what the picture behind all controls was made for
    std::unique_ptr<InterfaceForm> form_;
};

}  // namespace vanta::interface
