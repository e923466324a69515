#pragma once

#include "tests/gui/x11_server.hpp"

// After the server, whose headers define what must be taken back before ours.
#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "gui/graphics/bitmap.hpp"
#include "tests/gui/test_interface.hpp"

namespace vanta::gui {

using Log = std::vector<std::string>;

/// Paints what no two pixels in a row have in common, so that shifts and gaps show.
class Pattern : public LoggedControl {
public:
    using LoggedControl::LoggedControl;
    void paint(Canvas& canvas) override {
        ++paints;
        canvas.fillRect(localBounds(), Color::of(ground));
        for (int i = 0; i < 12; ++i) {
            const auto at = static_cast<float>(i) * 7.0f;
            canvas.fillRect(Rect::ofSize(at, at, 5.0f, 9.0f),
                            Color::of(0xFF2080C0u + static_cast<unsigned>(i)));
        }
        canvas.drawLine({3.0f, 80.0f}, {91.0f, 7.0f}, Color::of(0xFFFFFFFF), 2.0f);
    }
    void wheel_(const Control::WheelMove& move) { moves.push_back(move); }
    bool wheel(WheelPhase phase, Point point, int modifiers, const WheelMove& move) override {
        if (phase == WheelPhase::Move) wheel_(move);
        return LoggedControl::wheel(phase, point, modifiers, move);
    }
    void mouseDown(int button, Point point, int modifiers) override {
        lastModifiers = modifiers;
        lastPoint = point;
        LoggedControl::mouseDown(button, point, modifiers);
    }
    bool keyDown(const KeyPress& key) override {
        keys.push_back(key);
        return LoggedControl::keyDown(key);
    }

    std::uint32_t ground = 0xFF405060;
    int paints = 0;
    std::vector<WheelMove> moves;
    std::vector<KeyPress> keys;
    int lastModifiers = 0;
    Point lastPoint;
};

/// An interface of 300 x 200 with one control at (50, 40) of 100 x 90, the window's corner at (0, 0).
class X11Test : public testing::Test {
protected:
    X11Test() { server.movePointer(1000, 700); }
    ~X11Test() override {
        for (const Window window : foreign) XDestroyWindow(server.display(), window);
        server.sync();
    }

    X11Interface& open(float scale = 1.0f, Window parent = kNoXid) {
        X11Settings settings;
        settings.parentWindow = parent;
        settings.width = 300.0f;
        settings.height = 200.0f;
        settings.scale = scale;
        settings.displayName = server.name();
        settings.acceleration = acceleration;
        ui = std::make_unique<X11Interface>(settings);
        page = &ui->make<Pattern>("page", log, Rect::ofSize(50.0f, 40.0f, 100.0f, 90.0f), &ui->rootControl());
        page->focusable = true;
        page->takesWheel = true;
        ui->show();
        settle(*ui);
        log.clear();
        return *ui;
    }
    Window makeForeign(int x = 0, int y = 0, unsigned width = 400, unsigned height = 300) {
        foreign.push_back(server.makeWindow(x, y, width, height));
        return foreign.back();
    }
    bool logged(const Log& expected) {
        const bool came = runUntil(*ui, [&] { return log == expected; });
        EXPECT_EQ(log, expected);
        return came;
    }
    /// The window shows what the tree paints into memory, or soon will.
    void expectPictureOnScreen() {
        settle(*ui);
        int wrong = wrongPixels();
        runUntil(*ui, [&] { return (wrong = wrongPixels()) == 0; });
        EXPECT_EQ(wrong, 0);
    }
    int wrongPixels() {
        const RootControl::MessageScope scope(ui->rootControl());
        Bitmap expected(ui->deviceBacking());
        expected.setLogicalSize(ui->rootControl().localBounds().right,
                                ui->rootControl().localBounds().bottom);
        ui->rootControl().drawTree(expected.canvas());
        const int width = expected.pixelRect().right;
        const int height = expected.pixelRect().bottom;
        const std::vector<unsigned> seen = server.pixels(ui->window(), width, height);
        if (seen.size() != static_cast<std::size_t>(width * height)) return width * height;
        int wrong = 0;
        for (std::size_t i = 0; i < seen.size(); ++i) {
            for (int shift = 0; shift < 24; shift += 8) {
                const auto byte = [&](unsigned pixel) { return static_cast<int>(pixel >> shift & 255u); };
                wrong += std::abs(byte(seen[i]) - byte(expected.row(0)[i])) > tolerance;
            }
        }
        return wrong;
    }

    X11Server& server = X11Server::get();
    int acceleration = 0;  ///< as AccelerationMode has it
    int tolerance = 0;     ///< of each byte of a pixel
    Log log;
    std::vector<Window> foreign;
    std::unique_ptr<X11Interface> ui;
    Pattern* page = nullptr;
};

/// Does one thing after the other while a menu or a dialog has the loop.
struct Script {
    Script(X11Interface& ui, std::vector<std::function<void()>> all, int milliseconds = 40)
        : steps(std::move(all)) {
        timer = ui.createTimer();
        timer->interval = milliseconds;
        timer->onTick.setHandler(this, &Script::step);
        timer->running = true;
    }
    void step(void*) {
        if (next < steps.size()) {
            steps[next++]();
        } else {
            timer->running = false;
        }
    }
    std::vector<std::function<void()>> steps;
    std::size_t next = 0;
    std::unique_ptr<Timer> timer;
};

struct Executioner : Component {
    Executioner(UserInterface& owner, std::unique_ptr<X11Interface>& victim) : Component(owner), ui(victim) {}
    void deferredCall(int) override { std::exchange(ui, nullptr).reset(); }
    std::unique_ptr<X11Interface>& ui;
};

}  // namespace vanta::gui
