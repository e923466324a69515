#pragma once

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include "foundation/resource.hpp"
#include "gui/artwork/artwork_resources.hpp"
#include "gui/graphics/canvas.hpp"
#include "gui/offscreen/offscreen_interface.hpp"
#include "gui/tree/timer.hpp"

namespace vanta::gui {

class TestTimer;

/// An interface without a window, whose time stands still unless told. It finds the program's pictures.
class TestInterface : public OffscreenInterface {
public:
    explicit TestInterface(float width = 400.0f, float height = 300.0f);
    ~TestInterface() override { shutDown(); }

    std::unique_ptr<Timer> createTimer() override;

    /// Time passes, and timers tick as it does.
    void advance(int milliseconds);

    RootControl* root;
    std::vector<TestTimer*> timers;
    static inline std::int64_t now = 0;

private:
    static std::int64_t readClock() { return now; }
};

class TestTimer final : public Timer {
public:
    explicit TestTimer(TestInterface& interface) : Timer(interface), test(interface) {
        test.timers.push_back(this);
    }
    ~TestTimer() override { std::erase(test.timers, this); }
    bool isStarted() const { return due >= 0; }

    TestInterface& test;
    std::int64_t due = -1;

protected:
    void stopPlatformTimer() override { due = -1; }
    void startPlatformTimer() override { due = TestInterface::now + interval; }
};

/// A control that writes down what happens to it: its name and the event.
class LoggedControl : public Control {
public:
    LoggedControl(UserInterface& interface, std::string shortName, std::vector<std::string>& events,
                  Rect at = {}, Control* in = nullptr)
        : Control(interface), name(std::move(shortName)), log(events) {
        bounds = at;
        parent = in;
    }
    void note(const std::string& event) { log.push_back(name + " " + event); }

    void click() override { note("click"); }
    void doubleClick() override { note("doubleClick"); }
    void rightClick() override { note("rightClick"); }
    void mouseDown(int button, Point point, int modifiers) override {
        note("down" + std::to_string(button));
        Control::mouseDown(button, point, modifiers);
    }
    void mouseEnter() override { note("enter"); }
    void mouseLeave() override { note("leave"); }
    void mouseMove(Point point, int modifiers) override {
        note("move");
        Control::mouseMove(point, modifiers);
    }
    void mouseUp(int button, Point point, int modifiers) override {
        note("up" + std::to_string(button));
        Control::mouseUp(button, point, modifiers);
    }
    bool wheel(WheelPhase phase, Point, int, const WheelMove&) override {
        if (takesWheel) note("wheel" + std::to_string(static_cast<int>(phase)));
        return takesWheel;
    }
    void focusChanged(bool has) override { note(has ? "focus" : "unfocus"); }
    bool takesFocus() const override { return focusable; }
    bool keyDown(const KeyPress& key) override {
        note("key");
        return key.key == takenKey;
    }
    int alphaAt(Point) override { return pictureAlpha; }

    std::string name;
    std::vector<std::string>& log;
    bool takesWheel = false;
    bool focusable = false;
    Key takenKey = Key::Character;
    int pictureAlpha = 255;
};

inline TestInterface::TestInterface(float width, float height)
    : OffscreenInterface(width, height, &readClock), root(&rootControl()) {
    now = 0;
    addResources(artworkResources());
    root->takeDirtyRect();
}

inline std::unique_ptr<Timer> TestInterface::createTimer() {
    return std::make_unique<TestTimer>(*this);
}

inline void TestInterface::advance(int milliseconds) {
    const std::int64_t end = now + milliseconds;
    while (true) {
        TestTimer* next = nullptr;
        for (TestTimer* timer : timers) {
            if (timer->isStarted() && timer->due <= end && (!next || timer->due < next->due)) next = timer;
        }
        if (!next) break;
        now = next->due;
        next->due += next->interval;
        next->onTick.raise(next);
    }
    now = end;
}

}  // namespace vanta::gui
