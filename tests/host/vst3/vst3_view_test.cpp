#include <memory>

#include "host/vst3/factory.hpp"
#include "tests/host/formats/fake_view.hpp"
#include "tests/host/vst3/vst3_fixture.hpp"

namespace vanta::test {
namespace {

TEST_F(Vst3, AViewLivesInTheHostsWindowFromItsRunLoop) {
    FakeView::Log log;
    auto* const owner = new vst3::Factory(FakeView::factory(log));
    auto plugin = std::make_unique<Vst3Instance>(
        static_cast<v3_plugin_factory**>(static_cast<void*>(&owner->interface())));
    auto** const controller = plugin->controller;
    EXPECT_EQ(v3_cpp_obj(controller)->create_view(controller, "inspector"), nullptr);
    v3_plugin_view** const view = v3_cpp_obj(controller)->create_view(controller, "editor");
    ASSERT_TRUE(view);
    v3_view_rect rectangle{};
    EXPECT_EQ(v3_cpp_obj(view)->get_size(view, &rectangle), V3_OK);
    EXPECT_TRUE(rectangle.right > 100 && rectangle.bottom > 100) << "before there is a window";
    v3_plugin_view_content_scale** scale = nullptr;
    ASSERT_EQ(v3_cpp_obj_query_interface(view, v3_plugin_view_content_scale_iid, &scale), V3_OK);
    v3_cpp_obj(scale)->set_content_scale_factor(scale, 1.5f);
    RunLoop runLoop;
    Frame frame;
    frame.runLoop = &runLoop;
    v3_cpp_obj(view)->set_frame(view, frame.as<v3_plugin_frame>());
    int parent = 0;
    EXPECT_NE(v3_cpp_obj(view)->attached(view, &parent, "HWND"), V3_OK);
    ASSERT_EQ(v3_cpp_obj(view)->attached(view, &parent, "X11EmbedWindowID"), V3_OK);
    EXPECT_EQ(v3_cpp_obj(view)->attached(view, &parent, "X11EmbedWindowID"), V3_FALSE) << "twice";
    EXPECT_EQ(log.parent, reinterpret_cast<NativeWindow>(&parent));
    EXPECT_TRUE(log.isVisible && log.scale == 1.5);
    runLoop.run();
    EXPECT_EQ(log.idles, 1);
    EXPECT_TRUE(log.host->requestResize({500, 200}));
    EXPECT_EQ(log.size, (ViewSize{500, 200}));
    rectangle = {10, 10, 100, 900};
    EXPECT_EQ(v3_cpp_obj(view)->check_size_constraint(view, &rectangle), V3_OK);
    EXPECT_TRUE(rectangle.right == 310 && rectangle.bottom == 210);
    EXPECT_EQ(plugin->arrange({0x3F, 0x3F}, {0x3F}), V3_TRUE);
    runLoop.run();
    EXPECT_EQ(log.alive, 1) << "another, for another model";
    // The view keeps what it shows, whatever the host lets go of first.
    plugin.reset();
    v3_cpp_obj_unref(scale);
    runLoop.run();
    EXPECT_EQ(v3_cpp_obj(view)->removed(view), V3_OK);
    EXPECT_EQ(log.alive, 0);
    v3_cpp_obj(view)->set_frame(view, nullptr);
    v3_cpp_obj_unref(view);
    EXPECT_EQ(frame.references + runLoop.references, 0);
    EXPECT_EQ(owner->unref(), 0u);
}

}  // namespace
}  // namespace vanta::test
