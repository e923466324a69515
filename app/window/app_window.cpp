#include "app/window/app_window.hpp"

#include "gui/tree/key_press.hpp"
#include "gui/tree/root_control.hpp"
#include "gui/tree/timer.hpp"

namespace vanta {
namespace {

constexpr int kPumpMs = 10;
/// Nothing plays, and there is little to hear of: as often as the eye wants a button to answer.
constexpr int kPausedPumpMs = 40;

float footerOf(AppEngine& engine) {
    return engine.transport() ? TransportStrip::kHeight : 0.0f;
}

gui::X11Settings withFooter(gui::X11Settings settings, float footer) {
    settings.height += footer;
    return settings;
}

}  // namespace

/// The size is that of the interface; the strip comes on top.
AppWindow::AppWindow(AppEngine& engine, const gui::X11Settings& settings)
    : engine_(engine),
      model_(static_cast<VantaPlugin&>(engine.plugin().model())),
      ui_(withFooter(settings, footerOf(engine))),
      editor_(ui_, footerOf(engine)) {
    const gui::RootControl::MessageScope held(ui_.rootControl());
    ui_.rootControl().footer = footerOf(engine);
    fitToScreen();
    interface_.emplace(ui_, model_);
    interface_->attachEditor(&editor_);
    if (Transport* const transport = engine_.transport()) {
        stripFactory_.emplace(ui_, &interface_->animator(), interface_->styles());
        strip_.emplace(*stripFactory_, *transport, [this] { compare(); });
    }
    interfaceKeys_ = ui_.keyHook;
    ui_.keyHook = this;
    pump_ = ui_.createTimer().release();  // the interface deletes it
    gui::Timer& pump = *pump_;
    pump.interval = kPumpMs;
    pump.onTick.setHandler(this, &AppWindow::tick);
    pump.running = true;
    ui_.onClose.addHandler(this, &AppWindow::closed);
    ui_.show();
}

AppWindow::~AppWindow() {
    ui_.keyHook = interfaceKeys_;
}

/// A size that was chosen on a larger screen would leave the lower bars where nobody can reach them.
void AppWindow::fitToScreen() {
    interface::fitToScreen(model_, *editor_.workArea());
    ui_.rootControl().setSize(static_cast<float>(model_.interfaceWidth()),
                              static_cast<float>(model_.interfaceHeight()) + ui_.rootControl().footer);
}

void AppWindow::tick(void* /*sender*/) {
    engine_.pump();
    if (engine_.hasEnded()) ui_.quit();
    if (strip_) strip_->refresh(model_.bypass.mapped());
    const Transport* const transport = engine_.transport();
    const int wanted = transport && transport->isPaused() ? kPausedPumpMs : kPumpMs;
    if (pump_->interval != wanted) pump_->interval = wanted;
}

/// What the interface does not want itself.
bool AppWindow::keyPressed(const gui::KeyPress& key) {
    if (interfaceKeys_->keyPressed(key)) return true;
    if (key.modifiers & gui::modifier::kCtrl) return false;
    if (Transport* const transport = engine_.transport(); transport && steered(key, *transport)) return true;
    if (key.key != gui::Key::Character) return false;
    switch (key.character) {
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

bool AppWindow::steered(const gui::KeyPress& key, Transport& transport) {
    if (key.key == gui::Key::Home) return transport.restart(), true;
    if (key.key != gui::Key::Character) return false;
    if (key.character == U' ') return transport.togglePause(), true;
    if (key.character == U'l') return transport.toggleLoop(), true;
    return false;
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
