#include "tests/gui/x11_fixture.hpp"

#include <unistd.h>
#include <filesystem>
#include <fstream>
#include <sstream>

namespace vanta::gui {
namespace {

TEST_F(X11Test, TheScreenShowsWhatTheTreePaints) {
    for (const float scale : {1.0f, 1.5f, 2.0f}) {
        open(scale);
        expectPictureOnScreen();
        page->ground = 0xFF901020;
        page->markDirty({10.0f, 20.0f, 30.0f, 50.0f});
        settle(*ui);
        page->markDirty();
        expectPictureOnScreen();
        // Uncovered again.
        const Window cover = makeForeign();
        settle(*ui);
        XUnmapWindow(server.display(), cover);
        server.sync();
        expectPictureOnScreen();
    }
}

TEST_F(X11Test, SizesComeFromOutsideAndFromInside) {
    open(2.0f);
    XResizeWindow(server.display(), ui->window(), 500, 300);
    XResizeWindow(server.display(), ui->window(), 700, 500);
    server.sync();
    ASSERT_TRUE(runUntil(*ui, [&] { return ui->rootControl().localBounds().right == 350.0f; }));
    EXPECT_EQ(ui->rootControl().localBounds().bottom, 250.0f);
    expectPictureOnScreen();
    ui->rootControl().setSize(200.0f, 150.0f);
    expectPictureOnScreen();
    XWindowAttributes attributes{};
    XGetWindowAttributes(server.display(), ui->window(), &attributes);
    EXPECT_EQ(attributes.width, 400);
    EXPECT_EQ(attributes.height, 300);
    EXPECT_EQ(ui->rootControl().localBounds().right, 200.0f);
}

TEST_F(X11Test, TheScaleFollowsTheDesktop) {
    open(0.0f);
    EXPECT_EQ(ui->deviceBacking().scale(), 1.0f);
    const std::pair<std::string, float> cases[] = {{"144", 1.5f}, {"168", 2.0f}, {"120", 1.0f}};
    for (const auto& [dpi, scale] : cases) {
        const std::string resources = "Other.thing:\t7\nXft.dpi:\t" + dpi + "\n";
        XChangeProperty(server.display(), server.root(), XA_RESOURCE_MANAGER, XA_STRING, 8, PropModeReplace,
                        reinterpret_cast<const unsigned char*>(resources.data()),
                        static_cast<int>(resources.size()));
        server.sync();
        const float expected = scale;
        EXPECT_TRUE(runUntil(*ui, [&] { return ui->deviceBacking().scale() == expected; })) << dpi;
        EXPECT_EQ(ui->rootControl().localBounds().right, 300.0f);
        expectPictureOnScreen();
    }
    XDeleteProperty(server.display(), server.root(), XA_RESOURCE_MANAGER);
}

TEST_F(X11Test, FullScreenCoversTheMonitorAndEscapeLeavesIt) {
    const Window host = makeForeign();
    open(1.0f, host);
    const Window inside = ui->window();
    ui->rootControl().fullScreen = true;
    EXPECT_NE(ui->window(), inside);
    EXPECT_EQ(ui->rootControl().localBounds(), (Rect{0.0f, 0.0f, 1024.0f, 768.0f}));
    expectPictureOnScreen();
    ui->setScaleOverride(2.0f);
    expectPictureOnScreen();
    EXPECT_EQ(ui->rootControl().localBounds(), (Rect{0.0f, 0.0f, 512.0f, 384.0f}));
    ui->setScaleOverride(1.0f);
    settle(*ui);
    server.typeKey(XK_Escape);
    ASSERT_TRUE(runUntil(*ui, [&] { return !ui->rootControl().fullScreen; }));
    EXPECT_EQ(ui->window(), inside);
    EXPECT_EQ(ui->rootControl().localBounds().right, 300.0f);
    expectPictureOnScreen();
}

struct CloseCount {
    explicit CloseCount(X11Interface& ui) { ui.onClose.setHandler(this, &CloseCount::closed); }
    void closed(void*) { ++count; }
    int count = 0;
};

TEST_F(X11Test, AParentThatGoesOrAConnectionThatEndsClosesTheInterface) {
    open(1.0f, makeForeign());
    CloseCount closed(*ui);
    XDestroyWindow(server.display(), foreign.back());
    foreign.pop_back();
    server.sync();
    ASSERT_TRUE(runUntil(*ui, [&] { return !ui->isOpen(); }));
    EXPECT_EQ(closed.count, 1);
    ui->rootControl().setSize(100.0f, 100.0f);
    settle(*ui);
    EXPECT_EQ(ui->window(), kNoXid);

    open();
    CloseCount lost(*ui);
    XKillClient(server.display(), ui->window());
    server.sync();
    ASSERT_TRUE(runUntil(*ui, [&] { return lost.count == 1; }));
    EXPECT_FALSE(ui->isOpen());

    X11Settings nowhere;
    nowhere.displayName = server.name();
    nowhere.parentWindow = 0x7FFFFFF;
    EXPECT_THROW(X11Interface{nowhere}, std::runtime_error);
    nowhere.displayName = ":32767";
    EXPECT_THROW(X11Interface{nowhere}, std::runtime_error);
}

TEST_F(X11Test, TwoWindowsLiveSideBySide) {
    open(1.0f, makeForeign());
    const std::unique_ptr<X11Interface> first = std::move(ui);
    Pattern* const firstPage = page;
    open(1.0f, makeForeign(450, 0));
    server.movePointer(460 + 50, 50);
    server.press();
    server.release();
    const bool arrived = runUntil(*ui, [&] {
        first->idle();
        return std::count(log.begin(), log.end(), "page click") == 1;
    });
    EXPECT_TRUE(arrived);
    EXPECT_EQ(firstPage->lastPoint, Point{});
    EXPECT_EQ(page->lastPoint, (Point{10.0f, 10.0f}));
}

TEST_F(X11Test, HundredsOfWindowsLeaveNothingBehind) {
    const auto openFiles = [] {
        const std::filesystem::directory_iterator all("/proc/self/fd");
        return std::distance(begin(all), end(all));
    };
    const auto sharedBlocks = [] {
        std::ifstream table("/proc/sysvipc/shm");
        std::string line;
        int ours = 0;
        for (std::getline(table, line); std::getline(table, line);) {
            long key = 0, id = 0, permissions = 0, size = 0, maker = 0;
            std::istringstream(line) >> key >> id >> permissions >> size >> maker;
            ours += maker == getpid();
        }
        return ours;
    };
    const Window host = makeForeign();
    open(1.0f, host);
    ui.reset();
    const auto files = openFiles();
    const std::size_t windows = server.children(server.root()).size();
    for (int i = 0; i < 500; ++i) {
        X11Settings settings;
        settings.parentWindow = i % 2 ? host : kNoXid;
        settings.displayName = server.name();
        X11Interface interface(settings);
        interface.show();
        interface.idle();
        if (i == 0) {
            EXPECT_GT(sharedBlocks(), 0);
        }
    }
    server.sync();
    EXPECT_EQ(openFiles(), files);
    EXPECT_EQ(sharedBlocks(), 0);
    EXPECT_EQ(server.children(server.root()).size(), windows);
    EXPECT_TRUE(server.children(host).empty());
}

}  // namespace
}  // namespace vanta::gui
