#include <gtest/gtest.h>

#include "tests/host/clap/clap_test.hpp"
#include "tests/host/formats/fake_view.hpp"

namespace vanta::test {
namespace {

class ClapWindow : public ClapInside {
protected:
    ClapWindow() : ClapInside(FakeView::factory(log)) {}
    FakeView::Log log;
};

TEST_F(ClapWindow, LivesWithinTheHostsWindow) {
    ClapHost host(factory());
    const clap_plugin_t* plugin = &host.plugin();
    const auto& gui = *host.extension<clap_plugin_gui_t>(CLAP_EXT_GUI);
    const auto& timer = *host.extension<clap_plugin_timer_support_t>(CLAP_EXT_TIMER_SUPPORT);
    EXPECT_FALSE(gui.create(plugin, CLAP_WINDOW_API_WAYLAND, false));
    EXPECT_FALSE(gui.show(plugin)) << "nothing to show yet";
    ASSERT_TRUE(gui.create(plugin, CLAP_WINDOW_API_X11, false));
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    ASSERT_TRUE(gui.set_scale(plugin, 2.0));
    ASSERT_TRUE(gui.get_size(plugin, &width, &height));
    EXPECT_EQ(width, 2u * static_cast<unsigned>(hosted(host).model().interfaceWidth()));
    clap_window_t window{};
    window.api = CLAP_WINDOW_API_X11;
    window.x11 = 77;
    ASSERT_TRUE(gui.set_parent(plugin, &window));
    EXPECT_EQ(log.parent, 77u);
    EXPECT_EQ(log.scale, 2.0);
    EXPECT_EQ(log.size.width, static_cast<int>(width)) << "as announced";
    ASSERT_TRUE(gui.show(plugin));
    EXPECT_TRUE(log.isVisible);
    timer.on_timer(plugin, 41);
    timer.on_timer(plugin, 99);
    EXPECT_EQ(log.idles, 1);
    width = 10;
    ASSERT_TRUE(gui.adjust_size(plugin, &width, &height));
    EXPECT_EQ(width, 300u);
    EXPECT_TRUE(gui.set_size(plugin, 310, 200));
    EXPECT_EQ(log.size, (ViewSize{310, 200}));
    EXPECT_TRUE(log.host->requestResize({500, 300}));
    host.refusesSizes = true;
    EXPECT_FALSE(log.host->requestResize({500, 300}));

    ASSERT_TRUE(host.extension<ClapPluginAudioPortsConfig>(kClapAudioPortsConfig)->select(plugin, 6));
    EXPECT_EQ(log.alive, 1) << "it changes over by itself";
    log.host->viewClosed(true);
    EXPECT_TRUE(host.wasClosed);
    gui.destroy(plugin);
    EXPECT_EQ(log.alive, 0);
    ASSERT_TRUE(gui.create(plugin, CLAP_WINDOW_API_X11, false));
    ASSERT_TRUE(gui.set_parent(plugin, &window));
}

TEST_F(ClapInside, HasNoWindowWithoutAnInterface) {
    const ClapHost host(factory());
    EXPECT_EQ(host.extension<void>(CLAP_EXT_GUI), nullptr);
    EXPECT_EQ(host.extension<void>(CLAP_EXT_TIMER_SUPPORT), nullptr);
}

}  // namespace
}  // namespace vanta::test
