#pragma once

#include "tests/gui/x11_server.hpp"

// After the server, whose headers define what must be taken back before ours.
#include <X11/keysym.h>
#include <gtest/gtest.h>

#include <functional>
#include <thread>

#include "tests/host/formats/performance.hpp"
#include "tests/plugin/user_home.hpp"

namespace vanta::test {

using namespace std::chrono_literals;

/// A format's instances and the windows that hosts give them, on an X server of the test's own.
class WindowContract : public testing::TestWithParam<std::unique_ptr<FormatHost> (*)()> {
protected:
    using Size = FormatHost::Size;
    static constexpr int kRate = 48000;
    static constexpr int kLargest = 512;
    static constexpr int kGain = 0;
    /// Of the interface that opens when nothing is remembered.
    static constexpr Size kUsual{950, 570};
    /// The slider of Gain, on the left edge at whatever size: its track in a window of the usual one.
    static constexpr int kSliderX = 36;
    static constexpr int kSliderY = 300;

    WindowContract() {
        ::setenv("DISPLAY", server.name().c_str(), 1);
        server.movePointer(1000, 700);
    }
    ~WindowContract() override {
        hosts.clear();
        for (const Window parent : parents) XDestroyWindow(server.display(), parent);
        server.sync();
    }

    FormatHost& open() {
        hosts.push_back(GetParam()());
        EXPECT_TRUE(hosts.back()->open(kStereoLayout, kRate, kLargest, false));
        return *hosts.back();
    }
    Window makeParent(int x = 0, int y = 0) {
        const Window parent = server.makeWindow(x, y, 1020, 760);
        parents.push_back(parent);
        return parent;
    }
    void destroy(Window parent) {
        std::erase(parents, parent);
        XDestroyWindow(server.display(), parent);
        server.sync();
    }
    Window childOf(Window parent) {
        const std::vector<Window> children = server.children(parent);
        EXPECT_EQ(children.size(), 1u);
        return children.empty() ? 0 : children.front();
    }
    Size sizeOf(Window window) {
        XWindowAttributes attributes{};
        XGetWindowAttributes(server.display(), window, &attributes);
        return {attributes.width, attributes.height};
    }
    void idleAll() {
        for (const auto& host : hosts) host->idle();
    }
    bool waitFor(const std::function<bool()>& condition) {
        const auto end = std::chrono::steady_clock::now() + 10s;
        while (!condition()) {
            if (std::chrono::steady_clock::now() > end) return false;
            idleAll();
            std::this_thread::sleep_for(1ms);
        }
        return true;
    }
    void settle() {
        const auto end = std::chrono::steady_clock::now() + 80ms;
        waitFor([&] { return std::chrono::steady_clock::now() > end; });
    }
    /// Until the window shows something.
    void openWindow(FormatHost& host, Window parent) {
        ASSERT_TRUE(host.openWindow(parent));
        ASSERT_TRUE(waitFor([&] { return colours(parent) > 50; })) << "nothing is painted";
        settle();
    }
    std::size_t colours(Window parent) {
        const std::vector<Window> children = server.children(parent);
        if (children.empty()) return 0;
        std::vector<unsigned> pixels = server.pixels(children.front(), 400, 300);
        std::ranges::sort(pixels);
        return pixels.size() - std::ranges::unique(pixels).size();
    }
    /// Somebody other than host and plug-in resizes it, which it has to hear of and be laid out anew for.
    /// Both sizes are at least 800x480.
    bool followsSize(Window parent, Size size) {
        settle();
        const auto picture = [&] { return server.pixels(childOf(parent), 800, 480); };
        const auto before = picture();
        XResizeWindow(server.display(), childOf(parent), static_cast<unsigned>(size.width),
                      static_cast<unsigned>(size.height));
        server.sync();
        return waitFor([&] { return colours(parent) > 50 && picture() != before; });
    }
    /// A user pulls at the control, from one point to another.
    void drag(int x, int fromY, int toY, bool release = true) {
        server.movePointer(x, fromY);
        settle();
        server.press();
        for (int step = 1; step <= 5; ++step) {
            server.movePointer(x, fromY + (toY - fromY) * step / 5);
            settle();
        }
        if (release) server.release();
        settle();
    }
    /// Windows without a parent.
    static int shownOnScreen(Display* display) {
        Window root = 0;
        Window parent = 0;
        Window* all = nullptr;
        unsigned count = 0;
        XQueryTree(display, DefaultRootWindow(display), &root, &parent, &all, &count);
        const auto isShown = [&](Window window) {
            XWindowAttributes attributes{};
            return XGetWindowAttributes(display, window, &attributes) && attributes.map_state == IsViewable;
        };
        const auto shown = std::count_if(all, all + count, isShown);
        if (all) XFree(all);
        return static_cast<int>(shown);
    }
    /// A user picks a row of the menu of sizes, from Compact, 0, on.
    void chooseSize(FormatHost& host, int row) {
        const Size size = host.windowSize();
        const int before = shownOnScreen(server.display());
        // The menu has a loop of its own, so that somebody else has to type.
        std::thread user([&, row] {
            Display* const other = XOpenDisplay(server.name().c_str());
            const auto key = [&](KeySym symbol) {
                XTestFakeKeyEvent(other, XKeysymToKeycode(other, symbol), true, CurrentTime);
                XTestFakeKeyEvent(other, XKeysymToKeycode(other, symbol), false, CurrentTime);
                XSync(other, false);
                std::this_thread::sleep_for(100ms);
            };
            // What is typed before the menu has the keyboard is lost, and the menu would wait for ever.
            for (int n = 0; n < 600 && shownOnScreen(other) == before; ++n) std::this_thread::sleep_for(50ms);
            std::this_thread::sleep_for(500ms);
            for (int i = 0; i < row; ++i) key(XK_Down);
            key(XK_Return);
            XCloseDisplay(other);
        });
        // The last button of a bar of 850 units at most, in the middle.
        server.movePointer((size.width + std::min(size.width, 850)) / 2 - 12, size.height - 14);
        settle();
        server.click();
        settle();
        user.join();
        settle();
    }

    gui::X11Server& server = gui::X11Server::get();
    const UserHome home;
    std::vector<Window> parents;
    std::vector<std::unique_ptr<FormatHost>> hosts;
};

/// Of every format that has windows.
#define VANTA_WINDOW_FORMATS(Contract)                                                                 \
    INSTANTIATE_TEST_SUITE_P(                                                                          \
        Formats, Contract,                                                                             \
        testing::Values(&makeClapHost, &makeVst3Host, &makeLv2Host, &makeLv2BridgeHost, &makeAaxHost), \
        [](const auto& tested) { return tested.param()->traits().name; })

}  // namespace vanta::test
