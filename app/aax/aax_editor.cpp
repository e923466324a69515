#include "app/aax/aax_editor.hpp"

#include <exception>

#include "host/editor/editor_window.hpp"

namespace vanta {
namespace {

class AaxEditor final : public EditorInterface, private interface::Editor {
public:
    AaxEditor(EditorListener& listener, gui::UserInterface::MouseHook& hook, GenericPlugin& model,
              NativeWindow parent)
        : listener_(listener), window_(model, *this, parent, 0.0) {
        window_.ui().mouseHook = &hook;
        window_.ui().show();
    }

    double scale() const override { return window_.scale(); }
    int parameterAt(gui::Point point) const override { return window_.parameterAt(point); }
    void idle() override { window_.ui().idle(); }

private:
    void beginGesture(int parameter) override { listener_.beginGesture(parameter); }
    void gestureMoved(int parameter, float value) override { listener_.setParameter(parameter, value); }
    void endGesture(int parameter) override { listener_.endGesture(parameter); }
    bool canResize() const override { return true; }
    bool resize(InterfaceSize size) override { return listener_.resize(size.width, size.height); }
    std::optional<InterfaceSize> workArea() const override { return window_.workArea(); }

    EditorListener& listener_;
    mutable EditorWindow window_;
};

std::unique_ptr<EditorInterface> openEditor(EditorListener& listener, gui::UserInterface::MouseHook& hook,
                                            GenericPlugin& model, NativeWindow parent) {
    try {
        return std::make_unique<AaxEditor>(listener, hook, model, parent);
    } catch (const std::exception&) {
        return nullptr;
    }
}

}  // namespace

EditorPlatform aaxEditorPlatform() {
    return {&openEditor, [] { return std::vector{editorScale(0.0)}; }};
}

}  // namespace vanta
