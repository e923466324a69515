#include "tests/gui/x11_server.hpp"

// After the server, whose headers define what must be taken back before ours.
#include <X11/keysym.h>
#include <gtest/gtest.h>

#include <chrono>
#include <functional>
#include <thread>

#include "tests/host/clap/clap_host.hpp"
#include "tests/host/vst3/vst3_host.hpp"
#include "tests/plugin/user_home.hpp"

namespace vanta::test {
namespace {

using namespace std::chrono_literals;

class FormatWindows : public testing::Test {
protected:
    FormatWindows() {
        ::setenv("DISPLAY", server.name().c_str(), 1);
        server.movePointer(1000, 700);
    }
    static bool waitFor(FormatHost& host, const std::function<bool()>& condition) {
        const auto end = std::chrono::steady_clock::now() + 10s;
        while (!condition()) {
            if (std::chrono::steady_clock::now() > end) return false;
            host.idle();
            std::this_thread::sleep_for(1ms);
        }
        return true;
    }
    std::string titleOf(Window window) {
        char* name = nullptr;
        XFetchName(server.display(), window, &name);
        const std::string title = name ? name : "";
        XFree(name);
        return title;
    }
    /// 0 if there is none.
    Window windowWithTitle(const std::string& title) {
        for (const Window window : server.children(server.root())) {
            if (titleOf(window) == title) return window;
        }
        return 0;
    }
    Window transientOf(Window window) {
        Window above = 0;
        XGetTransientForHint(server.display(), window, &above);
        return above;
    }

    gui::X11Server& server = gui::X11Server::get();
    const UserHome home;
};

TEST_F(FormatWindows, AFloatingWindowOfClapFollowsTheHostAndTellsThatItWasClosed) {
    ClapHost host;
    ASSERT_TRUE(host.open(kStereoLayout, 48000.0, 512, false));
    const clap_plugin_t* const plugin = &host.plugin();
    const auto& gui = *host.extension<clap_plugin_gui_t>(CLAP_EXT_GUI);
    ASSERT_TRUE(gui.create(plugin, nullptr, true));
    const Window main = server.makeWindow(0, 0, 100, 100);
    clap_window_t window{};
    window.api = CLAP_WINDOW_API_X11;
    window.x11 = main;
    EXPECT_FALSE(gui.set_parent(plugin, &window));
    EXPECT_TRUE(gui.set_transient(plugin, &window));
    gui.suggest_title(plugin, "Track 3: Limiter");
    ASSERT_TRUE(gui.show(plugin));
    const Window own = windowWithTitle("Track 3: Limiter");
    ASSERT_NE(own, Window{0});
    EXPECT_EQ(transientOf(own), main);
    const auto isSeen = [&] {
        XWindowAttributes attributes{};
        return XGetWindowAttributes(server.display(), own, &attributes) != 0 &&
               attributes.map_state == IsViewable;
    };
    EXPECT_TRUE(waitFor(host, isSeen));
    for (int round = 0; round < 2; ++round) {
        // As a window manager asks.
        XEvent close{};
        close.xclient.type = ClientMessage;
        close.xclient.window = own;
        close.xclient.message_type = XInternAtom(server.display(), "WM_PROTOCOLS", false);
        close.xclient.format = 32;
        close.xclient.data.l[0] = static_cast<long>(XInternAtom(server.display(), "WM_DELETE_WINDOW", false));
        XSendEvent(server.display(), own, false, NoEventMask, &close);
        server.sync();
        EXPECT_TRUE(waitFor(host, [&] { return host.wasClosed && !isSeen(); }));
        host.wasClosed = false;
        ASSERT_TRUE(gui.show(plugin)) << "it was only hidden";
        EXPECT_TRUE(waitFor(host, isSeen));
    }
    gui.destroy(plugin);
    XDestroyWindow(server.display(), main);
    server.sync();
    EXPECT_EQ(windowWithTitle("Track 3: Limiter"), Window{0});
}

TEST_F(FormatWindows, AChangeOfLayoutBringsAnotherWindowIntoTheSamePlace) {
    ClapHost host;
    ASSERT_TRUE(host.open(kStereoLayout, 48000.0, 512, false));
    const Window parent = server.makeWindow(0, 0, 1020, 760);
    ASSERT_TRUE(host.openWindow(parent));
    host.resizeWindow({1000, 600});
    host.deactivate();
    const auto& configs = *host.extension<ClapPluginAudioPortsConfig>(kClapAudioPortsConfig);
    for (const ChannelLayout layout : {ChannelLayout{6}, ChannelLayout{0}, kStereoLayout}) {
        ASSERT_TRUE(configs.select(&host.plugin(), static_cast<clap_id>(layout)));
        EXPECT_EQ(host.windowSize(), (FormatHost::Size{1000, 600}));
        ASSERT_EQ(server.children(parent).size(), 1u);
        const Window child = server.children(parent).front();
        EXPECT_TRUE(waitFor(host, [&] {
            std::vector<unsigned> pixels = server.pixels(child, 400, 300);
            std::ranges::sort(pixels);
            return std::ranges::unique(pixels).begin() - pixels.begin() > 50;
        })) << "nothing is painted";
    }
    host.closeWindow();
    XDestroyWindow(server.display(), parent);
}

TEST_F(FormatWindows, Vst3HostsFindParametersAndHandKeysOver) {
    Vst3Host host;
    ASSERT_TRUE(host.open(kStereoLayout, 48000.0, 512, false));
    const Window parent = server.makeWindow(0, 0, 1020, 760);
    ASSERT_TRUE(host.openWindow(parent));
    v3_plugin_view** const view = host.view();
    v3_plugin_view_parameter_finder** finder = nullptr;
    ASSERT_EQ(v3_cpp_obj_query_interface(view, v3_plugin_view_parameter_finder_iid, &finder), V3_OK);
    v3_param_id id = 99;
    const auto find = [&](int x, int y) { return v3_cpp_obj(finder)->find_parameter(finder, x, y, &id); };
    EXPECT_EQ(find(36, 300), V3_OK);
    EXPECT_EQ(id, 0u) << "Gain";
    EXPECT_EQ(find(400, 200), V3_FALSE);
    v3_plugin_view_content_scale** scale = nullptr;
    ASSERT_EQ(v3_cpp_obj_query_interface(view, v3_plugin_view_content_scale_iid, &scale), V3_OK);
    EXPECT_EQ(v3_cpp_obj(scale)->set_content_scale_factor(scale, 2.0f), V3_OK);
    EXPECT_EQ(host.windowSize(), (FormatHost::Size{1900, 1140}));
    EXPECT_EQ(find(72, 600), V3_OK) << "in pixels";
    v3_cpp_obj_unref(scale);
    v3_cpp_obj_unref(finder);

    constexpr std::int16_t kTab = 2;
    constexpr std::int16_t kUp = 12;
    constexpr std::int16_t kCtrl = 4;
    const auto down = [&](std::int16_t character, std::int16_t code, std::int16_t modifiers = 0) {
        return v3_cpp_obj(view)->on_key_down(view, character, code, modifiers);
    };
    EXPECT_EQ(down(0, kUp), V3_FALSE) << "nothing has the focus";
    EXPECT_EQ(down(' ', 7), V3_FALSE);
    EXPECT_EQ(v3_cpp_obj(view)->on_key_up(view, ' ', 7, 0), V3_FALSE);
    EXPECT_EQ(down(0, kTab), V3_TRUE);
    EXPECT_EQ(v3_cpp_obj(view)->on_key_up(view, 0, kTab, 0), V3_TRUE);
    EXPECT_EQ(down('z', 0, kCtrl), V3_TRUE) << "undo";

    constexpr std::int16_t kReturn = 4;
    EXPECT_EQ(down('7', 0), V3_FALSE);
    server.movePointer(72, 600);
    server.click();
    server.click();
    EXPECT_TRUE(waitFor(host, [&] { return down('7', 0) == V3_TRUE; })) << "a field is open";
    EXPECT_EQ(down('s', 0, kCtrl), V3_FALSE) << "the host's in any case";
    EXPECT_EQ(down(0, kReturn), V3_TRUE);
    EXPECT_NEAR(host.value(0), 7.0, 1e-3);
    EXPECT_EQ(down('7', 0), V3_FALSE);
    host.closeWindow();
    XDestroyWindow(server.display(), parent);
}

}  // namespace
}  // namespace vanta::test
