#include "app/window/app_window.hpp"

#include "gui/tree/key_press.hpp"
#include "gui/tree/root_control.hpp"

namespace vanta {
namespace {

constexpr int kPumpMs = 10;

}  // namespace

AppWindow::AppWindow(AppEngine& engine, const gui::X11Settings& settings)
    : engine_(engine), model_(static_cast<VantaPlugin&>(engine.plugin().model())), ui_(settings) {
    const gui::RootControl::MessageScope held(ui_.rootControl());
    interface_.emplace(ui_, model_);
    interface_->attachEditor(&editor_);
    interfaceKeys_ = ui_.keyHook;
    ui_.keyHook = this;
    auto& pump = *ui_.createTimer().release();  // the interface deletes it
    pump.interval = kPumpMs;
    pump.onTick.setHandler(this, &AppWindow::tick);
    pump.running = true;
    ui_.onClose.addHandler(this, &AppWindow::closed);
    ui_.show();
}

AppWindow::~AppWindow() {
    ui_.keyHook = interfaceKeys_;
}

void AppWindow::tick(void* /*sender*/) {
    engine_.pump();
    if (engine_.hasEnded()) ui_.quit();
}

/// What the interface does not want itself.
bool AppWindow::keyPressed(const gui::KeyPress& key) {
    if (interfaceKeys_->keyPressed(key)) return true;
    if (key.key == gui::Key::Home) return engine_.restart(), true;
    if (key.key != gui::Key::Character || key.modifiers & gui::modifier::kCtrl) return false;
    switch (key.character) {
        case U' ':
            return engine_.togglePause(), true;
        case U'l':
            return engine_.toggleLoop(), true;
        case U'b':
            return compare(), true;
        case U'u':
            return set(model_.unityGain, !model_.unityGain.mapped()), true;
        case U'q':
            return ui_.quit(), true;
        default:
            return false;
    }
}

/// Louder sounds better: without Unity Gain a bypass compares loudness and nothing else.
void AppWindow::compare() {
    set(model_.unityGain, true);
    set(model_.bypass, !model_.bypass.mapped());
}

void AppWindow::set(const AbstractPluginParameter& parameter, bool on) {
    interface_->gestures().set(parameter.index(), on ? 1.0f : 0.0f);
}

}  // namespace vanta
