#include <algorithm>
#include <memory>

#include "host/vst3/factory.hpp"
#include "tests/host/vst3/vst3_fixture.hpp"

namespace vanta::test {
namespace {

struct FakeView final : EmbeddedView {
    FakeView(NativeWindow parent, EmbeddedViewHost& itsHost) : window_(parent + 1), host(itsHost) { ++count; }
    ~FakeView() override { --count; }
    NativeWindow window() const override { return window_; }
    void setVisible(bool visible) override { shown = visible; }
    ViewSize size() const override { return size_; }
    bool isResizable() const override { return true; }
    ViewSize nearestSize(ViewSize wanted) const override { return {std::max(wanted.width, 300), 200}; }
    void resize(ViewSize size) override { size_ = size; }
    void setScale(double factor) override { scale = factor; }
    void idle() override { ++idles; }

    static inline int count = 0;
    NativeWindow window_;
    EmbeddedViewHost& host;
    ViewSize size_{400, 200};
    double scale = 0.0;
    bool shown = false;
    int idles = 0;
};

/// Gives a view any size that it asks for, and has the only run loop.
struct Frame final : HostObject<HostFrame> {
    v3_result resize(v3_plugin_view** view, v3_view_rect* rectangle) override {
        return v3_cpp_obj(view)->on_size(view, rectangle);
    }
    HostUnknown* other(const std::uint8_t* id) override {
        return v3_tuid_match(id, v3_run_loop_iid) ? &runLoop : nullptr;
    }
    RunLoop runLoop;
};

TEST_F(Vst3, AViewLivesInTheHostsWindowFromItsRunLoop) {
    FakeView* fake = nullptr;
    auto* const owner = new vst3::Factory([&](HostedPlugin&, NativeWindow parent, EmbeddedViewHost& host) {
        auto made = std::make_unique<FakeView>(parent, host);
        fake = made.get();
        return made;
    });
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
    Frame frame;
    v3_cpp_obj(view)->set_frame(view, frame.as<v3_plugin_frame>());
    int parent = 0;
    EXPECT_NE(v3_cpp_obj(view)->attached(view, &parent, "HWND"), V3_OK);
    ASSERT_EQ(v3_cpp_obj(view)->attached(view, &parent, "X11EmbedWindowID"), V3_OK);
    EXPECT_EQ(v3_cpp_obj(view)->attached(view, &parent, "X11EmbedWindowID"), V3_FALSE) << "twice";
    EXPECT_EQ(fake->window(), reinterpret_cast<NativeWindow>(&parent) + 1);
    EXPECT_TRUE(fake->shown && fake->scale == 1.5);
    frame.runLoop.run();
    EXPECT_EQ(fake->idles, 1);
    EXPECT_TRUE(fake->host.requestResize({500, 200}));
    EXPECT_EQ(fake->size(), (ViewSize{500, 200}));
    rectangle = {10, 10, 100, 900};
    EXPECT_EQ(v3_cpp_obj(view)->check_size_constraint(view, &rectangle), V3_OK);
    EXPECT_TRUE(rectangle.right == 310 && rectangle.bottom == 210);
    EXPECT_EQ(plugin->arrange({0x3F, 0x3F}, {0x3F}), V3_TRUE);
    frame.runLoop.run();
    EXPECT_EQ(FakeView::count, 1) << "another, for another model";
    // The view keeps what it shows, whatever the host lets go of first.
    plugin.reset();
    v3_cpp_obj_unref(scale);
    frame.runLoop.run();
    EXPECT_EQ(v3_cpp_obj(view)->removed(view), V3_OK);
    EXPECT_EQ(FakeView::count, 0);
    v3_cpp_obj(view)->set_frame(view, nullptr);
    v3_cpp_obj_unref(view);
    EXPECT_EQ(frame.references + frame.runLoop.references, 0);
    EXPECT_EQ(owner->unref(), 0u);
}

}  // namespace
}  // namespace vanta::test
