// Windows that a thread draws by OpenGL.

#include "tests/gui/x11_fixture.hpp"

// After the server, whose headers define what must be taken back before ours.
#include <gtest/gtest.h>

#include <filesystem>

#include "app/gallery/gallery_page.hpp"
#include "gui/animation/animator.hpp"

namespace vanta::gui {
namespace {

using Scope = RootControl::MessageScope;

class X11OpenGlTest : public X11Test {
protected:
    X11OpenGlTest() {
        acceleration = AccelerationMode::kForced | 1;
        // At the ends of lines.
        tolerance = 64;
    }
    void markAll() {
        const Scope scope(ui->rootControl());
        page->ground = (page->ground + 0x112233u) | 0xFF000000u;
        page->markDirty();
    }
};

TEST_F(X11OpenGlTest, TheScreenShowsWhatTheTreePaints) {
    for (const float scale : {1.0f, 1.5f, 2.0f}) {
        open(scale);
        EXPECT_TRUE(ui->accelerated);
        expectPictureOnScreen();
        markAll();
        expectPictureOnScreen();
        // Uncovered again.
        const Window cover = makeForeign();
        settle(*ui);
        XUnmapWindow(server.display(), cover);
        server.sync();
        expectPictureOnScreen();
    }
}

TEST_F(X11OpenGlTest, ASizeIsShownWhenItHasBeenSet) {
    open();
    markAll();
    expectPictureOnScreen();
    for (int i = 0; i < 20; ++i) {
        const auto step = static_cast<float>(i * 7 % 50);
        const Scope scope(ui->rootControl());
        ui->rootControl().setSize(200.0f + 4.0f * step, 150.0f + step);
        EXPECT_EQ(wrongPixels(), 0) << i;
    }
}

TEST_F(X11OpenGlTest, AStormOfSizesEndsWithTheLast) {
    open(2.0f);
    for (int i = 0; i < 60; ++i) {
        XResizeWindow(server.display(), ui->window(), static_cast<unsigned>(300 + i * 37 % 400),
                      static_cast<unsigned>(200 + i * 29 % 300));
        server.sync();
        if (i % 3 == 0) ui->idle();
        if (i % 4 == 0) markAll();
    }
    XResizeWindow(server.display(), ui->window(), 500, 300);
    server.sync();
    EXPECT_TRUE(runUntil(*ui, [&] {
        return ui->rootControl().localBounds() == Rect{0.0f, 0.0f, 250.0f, 150.0f};
    }));
    expectPictureOnScreen();
}

TEST_F(X11OpenGlTest, FullScreenAndBackWhileItDraws) {
    open(1.0f, makeForeign());
    const Window inside = ui->window();
    for (int i = 0; i < 5; ++i) {
        markAll();
        ui->idle();
        ui->rootControl().fullScreen = true;
        EXPECT_EQ(ui->rootControl().localBounds(), (Rect{0.0f, 0.0f, 1024.0f, 768.0f}));
        if (i == 0) expectPictureOnScreen();
        markAll();
        ui->rootControl().fullScreen = false;
        EXPECT_EQ(ui->window(), inside);
    }
    expectPictureOnScreen();
}

/// Hears of each frame, and changes something in it if told.
struct Restless {
    explicit Restless(Pattern& animated) : pattern(animated) {
        const Scope scope(pattern.ui().rootControl());
        auto& animator = pattern.ui().make<Animator>();
        animator.onFrame.setHandler(this, &Restless::frame);
        animator.running = true;
    }
    void frame(void*) {
        ++frames;
        onInterfaceThread = onInterfaceThread || pattern.ui().isInterfaceThread();
        if (!changes) return;
        pattern.ground = (pattern.ground + 1) | 0xFF000000u;
        pattern.markDirty();
    }
    Pattern& pattern;
    bool changes = false;
    bool onInterfaceThread = false;
    int frames = 0;
};

TEST_F(X11OpenGlTest, FramesTickOnTheirThreadAndPaintOnlyWhatIsDirty) {
    open();
    markAll();
    expectPictureOnScreen();
    Restless restless(*page);
    const auto count = [&](int Restless::*number) {
        const Scope scope(ui->rootControl());
        return restless.*number;
    };
    const auto paints = [&] {
        const Scope scope(ui->rootControl());
        return page->paints;
    };
    settle(*ui);
    const int before = paints();
    const int first = count(&Restless::frames);
    EXPECT_TRUE(runUntil(*ui, [&] { return count(&Restless::frames) > first + 5; }));
    EXPECT_EQ(paints(), before);
    {
        const Scope scope(ui->rootControl());
        EXPECT_FALSE(restless.onInterfaceThread);
        restless.changes = true;
    }
    EXPECT_TRUE(runUntil(*ui, [&] { return paints() > before + 5; }));
    {
        const Scope scope(ui->rootControl());
        restless.changes = false;
    }
    expectPictureOnScreen();
    ui.reset();
}

TEST_F(X11OpenGlTest, AllControlsAreDrawnWhileTheyAreUsed) {
    X11Settings settings;
    settings.width = gallery::kPageWidth;
    settings.height = gallery::kPageHeight;
    settings.scale = 1.0f;
    settings.displayName = server.name();
    settings.acceleration = acceleration;
    ui = std::make_unique<X11Interface>(settings);
    gallery::buildGallery(*ui, true);
    ui->show();
    settle(*ui);
    for (int x = 20; x < 780; x += 20) {
        server.movePointer(x, 40 + x * 3 / 5);
        if (x % 100 == 0) settle(*ui);
    }
    server.movePointer(60, 110);
    server.press();
    for (int y = 110; y > 40; y -= 5) {
        server.movePointer(60, y);
        ui->idle();
    }
    server.release();
    server.movePointer(1000, 700);
    expectPictureOnScreen();
    ui.reset();
}

TEST_F(X11OpenGlTest, WindowsCloseAndDieWhileTheyAreDrawn) {
    for (int i = 0; i < 10; ++i) {
        open(1.0f, makeForeign());
        Restless restless(*page);
        {
            const Scope scope(ui->rootControl());
            restless.changes = true;
        }
        settle(*ui);
        if (i % 2 == 0) {
            XDestroyWindow(server.display(), foreign.back());
            foreign.pop_back();
            server.sync();
            EXPECT_TRUE(runUntil(*ui, [&] { return !ui->isOpen(); }));
        }
        ui.reset();
    }
}

TEST_F(X11OpenGlTest, AHundredWindowsLeaveNothingBehind) {
    const auto entries = [](const char* folder) {
        const std::filesystem::directory_iterator all(folder);
        return std::distance(begin(all), end(all));
    };
    const Window host = makeForeign();
    const auto openAndClose = [&](int i) {
        X11Settings settings;
        settings.parentWindow = i % 2 ? host : kNoXid;
        settings.displayName = server.name();
        settings.acceleration = acceleration;
        X11Interface interface(settings);
        ASSERT_TRUE(interface.accelerated);
        interface.show();
        // Till the thread runs, and sometimes till it draws.
        runUntil(interface, [&] {
            const Scope scope(interface.rootControl());
            return interface.rootControl().dirtyRect().isEmpty() || i % 3 == 0;
        });
    };
    openAndClose(0);
    openAndClose(1);
    const auto files = entries("/proc/self/fd");
    const auto threads = entries("/proc/self/task");
    const std::size_t windows = server.children(server.root()).size();
    for (int i = 0; i < 100; ++i) openAndClose(i);
    server.sync();
    EXPECT_EQ(entries("/proc/self/fd"), files);
    EXPECT_EQ(entries("/proc/self/task"), threads);
    EXPECT_EQ(server.children(server.root()).size(), windows);
    EXPECT_TRUE(server.children(host).empty());
}

TEST_F(X11OpenGlTest, AServerThatGoesClosesTheInterface) {
    auto other = std::make_unique<X11Server>();
    X11Settings settings;
    settings.displayName = other->name();
    settings.acceleration = acceleration;
    X11Interface interface(settings);
    page = &interface.make<Pattern>("page", log, Rect{0.0f, 0.0f, 200.0f, 200.0f}, &interface.rootControl());
    interface.show();
    settle(interface);
    Restless restless(*page);
    {
        const Scope scope(interface.rootControl());
        restless.changes = true;
    }
    settle(interface);
    other.reset();
    EXPECT_TRUE(runUntil(interface, [&] { return !interface.isOpen(); }));
}

TEST_F(X11OpenGlTest, WhatOpenGlCannotDrawIsDrawnInMemoryWithoutAWord) {
    // Here OpenGL itself would draw in memory, which is slower than our own way.
    acceleration = AccelerationMode::kDefault;
    tolerance = 0;
    open();
    EXPECT_FALSE(ui->accelerated);
    expectPictureOnScreen();

    const X11Server bare({"-extension", "GLX"});
    X11Settings settings;
    settings.displayName = bare.name();
    settings.acceleration = AccelerationMode::kForced | 1;
    X11Interface without(settings);
    EXPECT_FALSE(without.accelerated);
    without.show();
    EXPECT_TRUE(runUntil(without, [&] { return without.rootControl().dirtyRect().isEmpty(); }));
}

}  // namespace
}  // namespace vanta::gui
