#include "tests/gui/x11_server.hpp"

// After the server, whose headers define what must be taken back before ours.
#include <X11/keysym.h>
#include <gtest/gtest.h>

#include <atomic>
#include <cstdio>
#include <filesystem>
#include <functional>
#include <thread>

#include "foundation/realtime.hpp"
#include "tests/host/formats/performance.hpp"
#include "tests/plugin/user_home.hpp"
#include "tests/support/realtime_trap.hpp"

namespace vanta::test {
namespace {

using namespace std::chrono_literals;
using Kind = FormatHost::Edit::Kind;
using Size = FormatHost::Size;

constexpr int kRate = 48000;
constexpr int kLargest = 512;
constexpr int kGain = 0;
/// Of the interface that opens when nothing is remembered.
constexpr Size kUsual{950, 570};
/// The slider of Gain, on the left edge at whatever size: its track in a window of the usual one.
constexpr int kSliderX = 36;
constexpr int kSliderY = 300;

int rounds(int usual) {
    const char* const wanted = std::getenv("VANTA_WINDOW_ROUNDS");
    return wanted ? std::max(std::atoi(wanted), 1) : usual;
}

int openDescriptors() {
    const std::filesystem::directory_iterator all("/proc/self/fd");
    return static_cast<int>(std::distance(begin(all), end(all)));
}

/// Blocks of a programme on a thread of its own, for as long as it lives.
class Audio {
public:
    explicit Audio(FormatHost& host) : thread_([this, &host] { run(host); }) {}
    ~Audio() {
        done_ = true;
        thread_.join();
    }
    int blocks() const { return blocks_; }

private:
    void run(FormatHost& host) {
        const Channels input = programme(2, kLargest);
        Channels output = input;
        const float* const inputs[] = {input[0].data(), input[1].data()};
        float* const outputs[] = {output[0].data(), output[1].data()};
        while (!done_) {
            host.process({inputs, {}, outputs, kLargest, {}, {}});
            ++blocks_;
            std::this_thread::sleep_for(1ms);
        }
    }

    std::atomic<bool> done_{false};
    std::atomic<int> blocks_{0};
    std::thread thread_;
};

class WindowContract : public testing::TestWithParam<std::unique_ptr<FormatHost> (*)()> {
protected:
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
    gui::X11Server& server = gui::X11Server::get();
    const UserHome home;
    std::vector<Window> parents;
    std::vector<std::unique_ptr<FormatHost>> hosts;
};

TEST_P(WindowContract, AUserTurnsAControlAndTheHostHearsIt) {
    FormatHost& host = open();
    const Window parent = makeParent();
    openWindow(host, parent);
    EXPECT_EQ(host.windowSize(), kUsual);
    EXPECT_EQ(sizeOf(childOf(parent)), kUsual);
    host.takeEdits();
    for (int round = 0; round < 2; ++round) {
        drag(kSliderX, kSliderY, kSliderY + (round == 0 ? -60 : 60));
        const std::vector<FormatHost::Edit> edits = host.takeEdits();
        ASSERT_GE(edits.size(), 3u);
        EXPECT_EQ(edits.front().kind, Kind::Begin);
        EXPECT_EQ(edits.back().kind, Kind::End);
        double last = -1.0;
        for (std::size_t i = 1; i + 1 < edits.size(); ++i) {
            EXPECT_EQ(edits[i].kind, Kind::Value);
            EXPECT_EQ(edits[i].index, kGain);
            last = edits[i].value;
        }
        EXPECT_NEAR(host.value(kGain), last, 1e-3);
        play(host, programme(2, 2048));
        EXPECT_NEAR(host.value(kGain), last, 1e-3) << "it is what sounds";
    }
}

TEST_P(WindowContract, TheHostsValuesAndStatesMoveTheControls) {
    FormatHost& host = open();
    const Window parent = makeParent();
    const auto state = host.save();
    openWindow(host, parent);
    const auto strip = [&] { return server.pixels(childOf(parent), 80, kUsual.height); };
    const auto atRest = strip();
    host.setValue(kGain, 18.0);
    play(host, programme(2, 512));
    EXPECT_TRUE(waitFor([&] { return strip() != atRest; }));
    const auto moved = strip();
    host.takeEdits();
    ASSERT_TRUE(host.restore(state));
    EXPECT_TRUE(waitFor([&] { return strip() != moved; }));
    settle();
    EXPECT_NEAR(host.value(kGain), 0.0, 1e-6);
    for (const auto& edit : host.takeEdits()) EXPECT_EQ(edit.kind, Kind::Value) << "nobody has touched it";
}

TEST_P(WindowContract, ItsSizeFollowsTheHostWithinItsLimits) {
    FormatHost& host = open();
    const Window parent = makeParent();
    openWindow(host, parent);
    if (host.traits().resizesWindows) {
        for (const Size size : {Size{1003, 601}, Size{800, 480}, Size{1010, 755}}) {
            host.resizeWindow(size);
            EXPECT_TRUE(waitFor([&] { return sizeOf(childOf(parent)) == size; }));
            EXPECT_EQ(host.windowSize(), size);
        }
        host.resizeWindow({200, 100});
        EXPECT_TRUE(waitFor([&] { return host.windowSize() == Size{800, 480}; }));
    }
    // Somebody else may resize it as well: what the server says counts.
    XResizeWindow(server.display(), childOf(parent), 900, 540);
    server.sync();
    EXPECT_TRUE(waitFor([&] { return host.windowSize() == Size{900, 540}; }));
    settle();
    host.closeWindow();
    openWindow(host, parent);
    EXPECT_EQ(host.windowSize(), (Size{900, 540})) << "as it was left";
}

TEST_P(WindowContract, AUserChoosesASizeThatTheHostGrantsOrRefuses) {
    FormatHost& host = open();
    const Window parent = makeParent();
    openWindow(host, parent);
    // The first row of the menu of sizes, Compact, and later the second, Small.
    const auto choose = [&](int row) {
        const Size size = host.windowSize();
        std::thread user([&, row] {
            gui::X11Server* const seen = &server;
            Display* const other = XOpenDisplay(seen->name().c_str());
            const auto key = [&](KeySym symbol) {
                XTestFakeKeyEvent(other, XKeysymToKeycode(other, symbol), true, CurrentTime);
                XTestFakeKeyEvent(other, XKeysymToKeycode(other, symbol), false, CurrentTime);
                XSync(other, false);
                std::this_thread::sleep_for(100ms);
            };
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
    };
    choose(2);
    EXPECT_EQ(host.wantedSizes, (std::vector<Size>{{800, 480}}));
    EXPECT_TRUE(waitFor([&] { return sizeOf(childOf(parent)) == Size{800, 480}; }));
    host.refusesSizes = true;
    const auto before = server.pixels(childOf(parent), 800, 480);
    choose(3);
    EXPECT_EQ(sizeOf(childOf(parent)), (Size{800, 480}));
    EXPECT_NE(server.pixels(childOf(parent), 800, 480), before) << "the user is told";
    host.closeWindow();
    openWindow(host, parent);
    EXPECT_EQ(host.windowSize(), kUsual) << "as was said then";
}

TEST_P(WindowContract, ComesAndGoesWithoutATrace) {
    FormatHost& host = open();
    const Window parent = makeParent();
    openWindow(host, parent);
    host.closeWindow();
    settle();
    const int formerDescriptors = openDescriptors();
    const int count = rounds(20);
    {
        const Audio audio(host);
        for (int round = 0; round < count; ++round) {
            ASSERT_TRUE(host.openWindow(parent)) << round;
            // At whatever moment: before anything is shown, within a frame, or long after.
            for (int n = 0; n < round % 7 * 5; ++n) {
                host.idle();
                std::this_thread::sleep_for(1ms);
            }
            host.closeWindow();
            ASSERT_TRUE(server.children(parent).empty());
        }
        EXPECT_GT(audio.blocks(), 0);
    }
    // Of connections to the server as of everything else.
    EXPECT_EQ(openDescriptors(), formerDescriptors);
    openWindow(host, parent);
}

TEST_P(WindowContract, ItsWindowMayBeKilledWithAMenuOpenOrAControlHeld) {
    FormatHost& host = open();
    for (const bool hasMenu : {true, false}) {
        SCOPED_TRACE(hasMenu);
        Window parent = makeParent();
        openWindow(host, parent);
        host.takeEdits();
        std::thread killer;
        if (hasMenu) {
            killer = std::thread([&] {
                std::this_thread::sleep_for(700ms);
                Display* const other = XOpenDisplay(server.name().c_str());
                XDestroyWindow(other, parent);
                XCloseDisplay(other);
            });
            server.movePointer(kSliderX, kSliderY);
            settle();
            server.click(3);
            settle();
            killer.join();
            std::erase(parents, parent);
        } else {
            drag(kSliderX, kSliderY, kSliderY - 30, false);
            destroy(parent);
            server.release();
        }
        settle();
        host.closeWindow();
        settle();
        int held = 0;
        for (const auto& edit : host.takeEdits())
            held += (edit.kind == Kind::Begin) - (edit.kind == Kind::End);
        EXPECT_EQ(held, 0) << "the host waits for the end";
        play(host, programme(2, 512));
    }
}

TEST_P(WindowContract, ItsPluginMayGoFirst) {
    for (int round = 0; round < 3; ++round) {
        FormatHost& host = open();
        const Window parent = makeParent();
        openWindow(host, parent);
        if (round == 1) drag(kSliderX, kSliderY, kSliderY - 30, false);
        host.dropWithWindow();
        server.release();
        EXPECT_TRUE(server.children(parent).empty());
        hosts.clear();
    }
}

TEST_P(WindowContract, SeveralLiveSideBySide) {
    FormatHost& first = open();
    FormatHost& second = open();
    // One above the other, so that each has its slider in sight.
    const Window below = makeParent(0, 0);
    const Window above = makeParent(100, 0);
    openWindow(first, below);
    openWindow(second, above);
    first.takeEdits();
    second.takeEdits();
    drag(kSliderX, kSliderY, kSliderY - 40);
    EXPECT_FALSE(first.takeEdits().empty());
    EXPECT_TRUE(second.takeEdits().empty());
    first.closeWindow();
    drag(100 + kSliderX, kSliderY, kSliderY - 40);
    EXPECT_FALSE(second.takeEdits().empty());
    EXPECT_GT(first.value(kGain), 0.0);
}

TEST_P(WindowContract, KeysThatItDoesNotUseGoToTheHost) {
    FormatHost& host = open();
    const Window parent = makeParent();
    XSelectInput(server.display(), parent, KeyPressMask);
    openWindow(host, parent);
    const auto arrives = [&](KeySym symbol) {
        server.typeKey(symbol);
        settle();
        bool came = false;
        XEvent event{};
        while (XCheckWindowEvent(server.display(), parent, KeyPressMask, &event)) {
            came = came || XLookupKeysym(&event.xkey, 0) == symbol;
        }
        return came;
    };
    Window focus = 0;
    int revert = 0;
    XGetInputFocus(server.display(), &focus, &revert);
    EXPECT_NE(focus, childOf(parent)) << "nobody has clicked";
    server.movePointer(kSliderX, kSliderY);
    server.click();
    settle();
    EXPECT_TRUE(arrives(XK_space)) << "the host's transport";
    EXPECT_TRUE(arrives(XK_F5));
    EXPECT_FALSE(arrives(XK_Tab));
    host.closeWindow();
    settle();
    XGetInputFocus(server.display(), &focus, &revert);
    EXPECT_NE(focus, Window{0});
}

TEST_P(WindowContract, AFrozenWindowDelaysNoAudio) {
    FormatHost& host = open();
    openWindow(host, makeParent());
    Channels signal = programme(2, kLargest);
    float* const outputs[] = {signal[0].data(), signal[1].data()};
    const float* const inputs[] = {outputs[0], outputs[1]};
    const auto run = [&](int count) {
        for (int n = 0; n < count; ++n) host.process({inputs, {}, outputs, kLargest, {}, {}});
    };
    run(50);
    // Nobody idles from here on; what OpenGL draws goes on.
    RealtimeTrap trap;
    {
        const RealtimeScope realtime;
        run(500);
    }
    EXPECT_EQ(trap.total(), 0) << trap.report();
}

TEST_P(WindowContract, WithoutADisplayThereIsNoWindow) {
    FormatHost& host = open();
    ::setenv("DISPLAY", ":4711", 1);
    EXPECT_FALSE(host.openWindow(1));
    host.closeWindow();
    play(host, programme(2, 512));
}

INSTANTIATE_TEST_SUITE_P(Formats, WindowContract,
                         testing::Values(&makeClapHost, &makeVst3Host, &makeLv2Host, &makeLv2BridgeHost,
                                         &makeAaxHost),
                         [](const auto& tested) { return tested.param()->traits().name; });

}  // namespace
}  // namespace vanta::test
