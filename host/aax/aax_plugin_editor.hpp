#pragma once

#include <memory>

#include "gui/tree/user_interface.hpp"
#include "host/aax/editor_interface.hpp"
#include "host/aax/standin/aax.hpp"
#include "host/common/model_viewer.hpp"

namespace vanta {

/// Shows the interface of an instance in a window of the host's and carries its wishes to the host. Without
/// an interface to open it still answers for the view's size. The host's main thread.
class AaxPluginEditor final : public AAX_CEffectGUI,
                              public gui::UserInterface::MouseHook,
                              public EditorListener,
                              private ModelViewer {
public:
    explicit AaxPluginEditor(EditorPlatform platform) : platform_(std::move(platform)) {}
    ~AaxPluginEditor() override;

    AAX_Result GetViewSize(AAX_Point* size) const override;
    AAX_Result TimerWakeup() override;

    // EditorListener

    void setParameter(int index, float value) override;
    void beginGesture(int index) override;
    void endGesture(int index) override;
    bool resize(int width, int height) override;

    // MouseHook

    /// Offers presses on a control to the host, which has a menu of its own for some. `modifiers` as in
    /// gui::modifier.
    bool mousePressed(int button, gui::Point point, int modifiers) override;
    int withHostModifiers(int modifiers) const override;

    /// Pixels per unit, of the interface that is shown or that would be.
    double interfaceScale() const;

protected:
    AAX_Result CreateViewContents() override;
    void DeleteViewContents() override;

private:
    void modelGoes() override;
    void modelCame() override {}
    void pluginGoes() override {}
    double automaticScale() const;
    AAX_Point pixels(int width, int height) const;

    const EditorPlatform platform_;
    GenericPlugin* model_ = nullptr;
    std::vector<ModelViewer*>* viewers_ = nullptr;  ///< of the model; this is one of them
    std::unique_ptr<EditorInterface> interface_;
};

}  // namespace vanta
