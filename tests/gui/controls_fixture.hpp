#pragma once

#include <gmock/gmock.h>

#include <functional>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "gui/controls/popup_menu.hpp"
#include "gui/controls/value_control.hpp"
#include "tests/gui/test_interface.hpp"

namespace vanta::gui {

/// A platform whose menus do what the test says while they are open.
struct MenuInterface : TestInterface {
    struct TestMenu : PopupMenu {
        explicit TestMenu(MenuInterface& interface) : PopupMenu(interface), test(interface) {}
        MenuItem* choose(Point point) override {
            test.shownAt = point;
            return test.choice ? test.choice(*this) : nullptr;
        }
        MenuInterface& test;
    };
    ~MenuInterface() override { shutDown(); }
    std::unique_ptr<PopupMenu> createPopupMenu() override { return std::make_unique<TestMenu>(*this); }

    std::function<MenuItem*(PopupMenu&)> choice;
    Point shownAt;
};

/// Controls in an interface without a window, and what a press, a key or the wheel does to them. `log` has
/// the gestures.
class ControlsTest : public ::testing::Test, public ValueControlListener {
protected:
    template <typename Kind>
    Kind& make(const Rect& at) {
        auto& control = ui.make<Kind>();
        control.bounds = at;
        control.parent = ui.root;
        if constexpr (std::is_base_of_v<ValueControl, Kind>) control.listener = this;
        return control;
    }
    void press(Point at, int modifiers = 0) { ui.root->platformMouseDown(kLeftPress, at, modifiers); }
    void move(Point at) { ui.root->platformMouseMove(at, 0); }
    void release(Point at) { ui.root->platformMouseUp(kLeftPress, at, 0); }
    void click(Point at) {
        press(at);
        release(at);
    }
    bool key(Key which, int modifiers = 0) { return ui.root->platformKey({which, modifiers, 0}); }
    void type(const std::string& text) {
        for (const char c : text) ui.root->platformKey({Key::Character, 0, static_cast<char32_t>(c)});
    }
    void turnWheel(Point at, float clicks) {
        ui.root->platformWheel(at, 0, {{0.0f, clicks * 0.02f}, {0.0f, clicks * 25.0f}});
    }

    int requestChange(ValueControl&, int) override { return 0; }
    void valueChanging(ValueControl& control, GesturePhase phase) override {
        const char* const names[] = {"begin ", "change ", "end "};
        log.push_back(names[static_cast<int>(phase)] + std::to_string(control.value));
    }
    std::vector<std::string> take() { return std::exchange(log, {}); }

    MenuInterface ui;
    std::vector<std::string> log;
};

}  // namespace vanta::gui
