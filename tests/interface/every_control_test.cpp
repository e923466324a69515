#include <chrono>

#include "gui/controls/knob.hpp"
#include "interface/layout/regular_form.hpp"
#include "interface/layout/vanta_interface.hpp"
#include "tests/interface/frame_rig.hpp"

// Behind what they would hide names of.
#include <X11/keysym.h>

#include "tests/gui/x11_fixture.hpp"

namespace vanta::interface {
namespace {

constexpr int kCompact = 0;
constexpr int kSmall = 1;
constexpr unsigned kWheelUp = 4;
constexpr unsigned kWheelDown = 5;
/// Of any menu here.
constexpr int kMostItems = 14;

/// After which a wheel that stands is done.
constexpr int kWheelSilenceMs = 550;

/// Of motions.
constexpr int kFrameMs = 70;

using Keys = std::vector<KeySym>;

/// The interface of an instance in a window, before which somebody sits who has a mouse and a keyboard and
/// nothing else.
class EveryControl : public ::testing::TestWithParam<int> {
protected:
    EveryControl() : plugin(*findLayout("5.1")) {
        plugin.settings().loaded = false;
        plugin.settings().interfaceLayout = GetParam();
        plugin.statics().settings.showWelcomeHint = false;
        gui::X11Settings settings;
        settings.width = static_cast<float>(plugin.interfaceWidth());
        settings.height = static_cast<float>(plugin.interfaceHeight());
        settings.displayName = server.name();
        settings.acceleration = 0;
        ui = std::make_unique<gui::X11Interface>(settings);
        frame = std::make_unique<VantaInterface>(*ui, plugin);
        ui->show();
        server.movePointer(1000, 700);
        settle();
    }
    ~EveryControl() override {
        frame.reset();
        ui.reset();
    }

    bool isCompact() const { return GetParam() == kCompact; }
    /// Until the interface has taken what the server has for it, and a frame has passed.
    void settle() {
        server.sync();
        int rounds = 0;
        pause(20, [&] { return ++rounds > 4; });
    }
    void pause(
        int milliseconds, const std::function<bool()>& isOver = [] { return true; }) {
        const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(milliseconds);
        gui::runUntil(*ui, [&] { return isOver() && std::chrono::steady_clock::now() > end; });
    }
    /// For what slides or comes slowly.
    void waitFor(const std::function<bool()>& condition) { EXPECT_TRUE(gui::runUntil(*ui, condition)); }
    void set(AbstractPluginParameter& parameter, float value) {
        parameter.setValue(value, 0);
        settle();
    }
    static gui::Point middleOf(const gui::Control& control) {
        const gui::Rect at = control.windowBounds();
        return {(at.left + at.right) / 2.0f, (at.top + at.bottom) / 2.0f};
    }
    /// Far enough for a second press to be no double click.
    static gui::Point beside(gui::Point at) {
        return {at.x + gui::UserInterface::kDoubleClickDistance + 1.0f, at.y};
    }
    void pointAt(gui::Point at) {
        server.movePointer(static_cast<int>(at.x), static_cast<int>(at.y));
        settle();
    }
    void click(gui::Point at, unsigned button = 1) {
        pointAt(at);
        server.click(button);
        settle();
    }
    /// Up is negative.
    void drag(gui::Point at, int distance) {
        pointAt(at);
        server.press();
        for (int part = 1; part <= 4; ++part)
            pointAt({at.x, at.y + static_cast<float>(distance * part) / 4.0f});
        server.release();
        settle();
    }
    /// Where the parameter's control meets the pointer.
    gui::Point gripOf(int index) {
        const gui::Control& control = *frame->bindings().control(index);
        const gui::Rect at = control.windowBounds();
        const gui::Point middle = middleOf(control);
        if (frame->parameterAt(middle) == index) return middle;
        for (float y = at.top + 1.0f; y < at.bottom; y += 4.0f) {
            if (frame->parameterAt({middle.x, y}) == index) return {middle.x, y};
        }
        ADD_FAILURE() << "it cannot be reached";
        return middle;
    }
    gui::Control& named(const std::string& name) {
        gui::Control* const found = find(frame->root(), name);
        if (!found) throw std::runtime_error("nothing shown is called " + name);
        return *found;
    }
    static gui::Control* find(gui::Control& from, const std::string& name) {
        if (!from.visible) return nullptr;
        if (from.accessibleName.value() == name) return &from;
        for (gui::Control* child : from.children()) {
            if (gui::Control* found = find(*child, name)) return found;
        }
        return nullptr;
    }
    /// Opens a menu and presses keys in it.
    void chooseIn(gui::Control& button, const Keys& keys) {
        pointAt(middleOf(button));
        const std::size_t windows = server.children(server.root()).size();
        gui::Script* running = nullptr;
        const auto untilOpen = [&] {
            // A key before the menu is there would be lost to it.
            if (server.children(server.root()).size() == windows) --running->next;
        };
        std::vector<std::function<void()>> steps{[this] { server.click(1); }, untilOpen};
        for (const KeySym key : keys) steps.push_back([this, key] { server.typeKey(key); });
        // Whatever it is that the keys have led to, the test is to go on.
        for (int i = 0; i < 2; ++i) steps.push_back([this] { server.typeKey(XK_Escape); });
        gui::Script script(*ui, steps, 8);
        running = &script;
        gui::runUntil(*ui, [&] { return script.next >= script.steps.size(); });
        settle();
    }

    // Each moves the parameter and back.

    /// `way`: the keys to the submenu that it is in.
    void byMenu(gui::Control& button, AbstractPluginParameter& parameter, const Keys& way = {}) {
        const float first = parameter.value();
        const auto until = [&](const auto& isReached) {
            for (int item = 1; item <= kMostItems && !isReached(); ++item) {
                Keys keys = way;
                // The first item of a submenu is chosen as it opens.
                keys.insert(keys.end(), static_cast<std::size_t>(way.empty() ? item : item - 1), XK_Down);
                keys.push_back(XK_Return);
                chooseIn(button, keys);
            }
            return isReached();
        };
        EXPECT_TRUE(until([&] { return parameter.value() != first; }));
        EXPECT_TRUE(until([&] { return parameter.value() == first; }));
    }
    void byDragging(int index, AbstractPluginParameter& parameter) {
        set(parameter, parameter.denormalize(0.5f));
        const float before = parameter.value();
        EXPECT_NEAR(frame->bindings().control(index)->normalized(), 0.5f, 1e-3f);
        drag(gripOf(index), -20);
        const float above = parameter.value();
        EXPECT_GT(above, before);
        drag(beside(gripOf(index)), 40);
        EXPECT_LT(parameter.value(), above);
        set(parameter, before);
        EXPECT_NEAR(frame->bindings().control(index)->normalized(), 0.5f, 1e-3f);
    }
    void byWheel(gui::Point at, AbstractPluginParameter& parameter) {
        const float before = parameter.value();
        const bool isFirst = before == parameter.minimum();
        const auto turnUntil = [&](unsigned turn, const auto& isReached) {
            for (int clicks = 0; clicks < kMostItems && !isReached(); ++clicks) click(at, turn);
            return isReached();
        };
        EXPECT_TRUE(turnUntil(isFirst ? kWheelUp : kWheelDown, [&] { return parameter.value() != before; }));
        pause(kWheelSilenceMs);  // a turn back would go on with the gesture
        EXPECT_TRUE(turnUntil(isFirst ? kWheelDown : kWheelUp, [&] { return parameter.value() == before; }));
    }
    /// What is clicked may go elsewhere by it.
    gui::Point placeAtRest(const std::function<gui::Point()>& place) {
        gui::Point at = place();
        for (gui::Point last{}; at.x != last.x || at.y != last.y; at = place()) {
            last = at;
            pause(2 * kFrameMs);
        }
        return at;
    }
    void byClicking(const std::function<gui::Point()>& place, AbstractPluginParameter& parameter) {
        const float before = parameter.value();
        click(place());
        EXPECT_NE(parameter.value(), before);
        click(beside(&parameter == &plugin.showAdvanced ? placeAtRest(place) : place()));
        EXPECT_EQ(parameter.value(), before);
    }
    RegularForm& regular() { return dynamic_cast<RegularForm&>(frame->form()); }
    bool hasArrived(const VantaMeterPanel& panel) {
        return panel.bounds.value().left == frame->root().localBounds().right - panel.fittingWidth();
    }
    void chooseMode(std::size_t mode) {
        const auto& buttons = regular().buttons();
        pointAt({1000.0f, 700.0f});
        waitFor([&] { return !buttons.modes().isShown(); });
        pointAt(middleOf(named("Display Mode: " + plugin.displayMode.text(plugin.displayMode.value()))));
        waitFor([&] { return buttons.modes().isShown(); });
        pause(250);  // it takes no click while it comes
        click(middleOf(named(plugin.displayMode.labels()[mode])));
    }

    void try_(int index) {
        AbstractPluginParameter& parameter = *plugin.parameterAt(index);
        gui::ValueControl* const control = frame->bindings().control(index);
        if (!control) return tryUnbound(parameter);
        EXPECT_FALSE(control->accessibleName.value().empty());
        EXPECT_FALSE(control->hint.value().empty());
        if (&parameter == &plugin.displayMode) {
            const float first = parameter.value();
            chooseMode(3);
            EXPECT_EQ(parameter.value(), 3.0f);
            chooseMode(static_cast<std::size_t>(first));
            EXPECT_EQ(parameter.value(), first);
            return;
        }
        const bool isInPopup = &parameter == &plugin.dithering || &parameter == &plugin.noiseShaping;
        const gui::Control& popup = frame->bottomBar().dither().button();
        if (isInPopup) {
            click(middleOf(popup));
            waitFor([&] { return frame->parameterAt(middleOf(*control)) == index; });
        }
        if (dynamic_cast<gui::ToggleButton*>(control)) {
            byClicking([&] { return gripOf(index); }, parameter);
        } else if (dynamic_cast<gui::SelectButton*>(control)) {
            // One on the picture leaves the wheel to what lies below.
            if (&parameter != &plugin.meterScale) byWheel(gripOf(index), parameter);
            if (!isInPopup) byMenu(*control, parameter);
        } else {
            byDragging(index, parameter);
        }
        if (isInPopup) click(middleOf(popup));
    }

    /// Those whose controls the meter panel has, and a menu.
    void tryUnbound(AbstractPluginParameter& parameter) {
        if (&parameter == plugin.receiveMidiParameter) return byMenu(named("MIDI Learn Menu"), parameter);
        set(plugin.meterScale, plugin.meterScale.maximum());
        set(plugin.loudnessTimeScale, plugin.loudnessTimeScale.maximum());
        if (!isCompact()) waitFor([&] { return hasArrived(regular().panel()); });
        if (&parameter == &plugin.loudnessRecording) {
            byClicking([&] { return middleOf(named("Loudness recording")); }, parameter);
        } else if (&parameter == &plugin.loudnessMeterTarget) {
            if (isCompact()) {
                byMenu(named("Loudness scale"), parameter, {XK_End, XK_Up, XK_Right});
            } else {
                byMenu(named("Loudness target"), parameter);
            }
        } else if (&parameter == &plugin.loudnessTimeScale) {
            if (isCompact()) {
                byMenu(named("Loudness scale"), parameter, {XK_End, XK_Right});
            } else {
                byWheel(middleOf(named("Loudness time scale")), parameter);
            }
        } else if (&parameter == &plugin.integratedPeakTimeScale) {
            if (!isCompact()) byMenu(named("Which maximum is shown"), parameter);
        } else if (&parameter != &plugin.displayMode && &parameter != &plugin.showAdvanced) {
            byMenu(named("Loudness scale"), parameter);
        } else {
            // Compact has neither the display and its modes, nor the advanced panel, nor room for which
            // maximum is shown.
            EXPECT_TRUE(isCompact());
        }
        set(plugin.meterScale, plugin.meterScale.minimum());
    }

    gui::X11Server& server = gui::X11Server::get();
    FactoryHome home;
    VantaPlugin plugin;
    std::unique_ptr<gui::X11Interface> ui;
    std::unique_ptr<VantaInterface> frame;
};

TEST_P(EveryControl, MovesItsParameterAndBackByMouseAndKeys) {
    set(plugin.showAdvanced, 1.0f);
    pause(AdvancedPanel::kMoveMs + 200);
    for (int index = 0; index < plugin.parameterCount(); ++index) {
        SCOPED_TRACE(plugin.parameterAt(index)->displayName);
        try_(index);
    }
}

INSTANTIATE_TEST_SUITE_P(Forms, EveryControl, ::testing::Values(kCompact, kSmall),
                         [](const auto& each) { return each.param == kCompact ? "Compact" : "Regular"; });

}  // namespace
}  // namespace vanta::interface
