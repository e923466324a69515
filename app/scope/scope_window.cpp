#include "app/scope/scope_window.hpp"

#include "gui/tree/root_control.hpp"

namespace vanta {
namespace {

/// Drains the audio also where a frame takes long: the limiter keeps a tenth of a second at most.
constexpr int kDrainMs = 30;

/// Where the keyboard of the window goes.
class Keys final : public gui::Control {
public:
    Keys(gui::UserInterface& interface, ScopeWindow& window) : Control(interface), window_(window) {}

    bool takesFocus() const override { return true; }
    gui::Rect focusBounds() override { return {}; }
    int alphaAt(gui::Point) override { return 0; }
    bool keyDown(const gui::KeyPress& key) override {
        if (key.key == gui::Key::Home) return window_.restart(), true;
        if (key.key == gui::Key::Escape) return window_.quit(), true;
        return key.key == gui::Key::Character && typed(key.character);
    }

private:
    bool typed(char32_t character) {
        if (character >= U'1' && character <= U'5') {
            window_.setMode(static_cast<int>(character - U'1'));
            return true;
        }
        switch (character) {
            case U's':
                return window_.nextMeterScale(1), true;
            case U'S':
                return window_.nextMeterScale(-1), true;
            case U'b':
                return window_.toggleBypass(), true;
            case U' ':
                return window_.togglePause(), true;
            case U'q':
                return window_.quit(), true;
            default:
                return false;
        }
    }

    ScopeWindow& window_;
};

}  // namespace

ScopeWindow::ScopeWindow(Engine& engine, const gui::X11Settings& settings)
    : engine_(engine),
      link_(engine.model(), engine.model().levels(), engine.plugin().layout()),
      ui_(settings) {
    const gui::RootControl::MessageScope held(ui_.rootControl());
    page_ = &ui_.make<interface::LimiterPage>(link_, static_cast<float>(engine.sampleRate()));
    link_.onChoose = [this](const AbstractPluginParameter& parameter, float value) {
        set(*engine_.model().parameterAt(parameter.index()), value);
    };
    page_->animator().onFrame.addHandler(this, &ScopeWindow::frame);
    auto& keys = ui_.make<Keys>(*this);
    keys.bounds = gui::Rect{0.0f, 0.0f, 1.0f, 1.0f};
    keys.parent = &ui_.rootControl();
    keys.takeFocus();
    auto& drain = *ui_.createTimer().release();  // the interface deletes it
    drain.interval = kDrainMs;
    drain.onTick.setHandler(this, &ScopeWindow::drain);
    drain.running = true;
    ui_.onClose.addHandler(this, &ScopeWindow::closed);
    ui_.show();
}

void ScopeWindow::frame(void* /*sender*/) {
    engine_.model().adapter()->syncLevels();
}

void ScopeWindow::drain(void* sender) {
    engine_.keepPlaying();
    frame(sender);
}

void ScopeWindow::set(AbstractPluginParameter& parameter, float value) {
    parameter.setValue(value, 0);
    engine_.plugin().pump();
    page_->follow();
}

void ScopeWindow::setMode(int index) {
    set(engine_.model().displayMode, static_cast<float>(index));
}

void ScopeWindow::nextMeterScale(int step) {
    IndexedParameter& scale = engine_.model().meterScale;
    const int count = static_cast<int>(scale.maximum()) + 1;
    set(engine_.model().meterScale, static_cast<float>((scale.currentIndex() + step + count) % count));
}

void ScopeWindow::toggleBypass() {
    set(engine_.model().bypass, engine_.model().bypass.mapped() ? 0.0f : 1.0f);
}

}  // namespace vanta
