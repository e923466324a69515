#include "tests/gui/x11_server.hpp"

// After the server, whose headers define what must be taken back before ours.
#include <gtest/gtest.h>
#include <poll.h>
#include <unistd.h>

#include <atomic>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <thread>

#include "gui/controls/popup_menu.hpp"
#include "gui/graphics/bitmap.hpp"
#include "gui/x11/wheel_meter.hpp"
#include "gui/x11/x11_bitmap.hpp"
#include "gui/x11/x11_clipboard.hpp"
#include "gui/x11/x11_pointer.hpp"
#include "gui/x11/x11_session.hpp"
#include "gui/x11/x11_window.hpp"
#include "tests/gui/test_interface.hpp"

namespace vanta::gui {
namespace {

using Log = std::vector<std::string>;

/// Paints what no two pixels in a row have in common, so that shifts and gaps show.
class Pattern : public LoggedControl {
public:
    using LoggedControl::LoggedControl;
    void paint(Canvas& canvas) override {
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
    /// The window shows what the tree paints into memory.
    void expectPictureOnScreen() {
        settle(*ui);
        Bitmap expected(ui->deviceBacking());
        expected.setLogicalSize(ui->rootControl().localBounds().right,
                                ui->rootControl().localBounds().bottom);
        ui->rootControl().drawTree(expected.canvas());
        const int width = expected.pixelRect().right;
        const int height = expected.pixelRect().bottom;
        const std::vector<unsigned> seen = server.pixels(ui->window(), width, height);
        ASSERT_EQ(seen.size(), static_cast<std::size_t>(width * height));
        int wrong = 0;
        for (std::size_t i = 0; i < seen.size(); ++i) wrong += seen[i] != (expected.row(0)[i] & 0xFFFFFFu);
        EXPECT_EQ(wrong, 0);
    }

    X11Server& server = X11Server::get();
    Log log;
    std::vector<Window> foreign;
    std::unique_ptr<X11Interface> ui;
    Pattern* page = nullptr;
};

TEST_F(X11Test, PressDragAndReleaseOutsideTheWindowReachTheControlThatWasPressed) {
    open();
    server.movePointer(60, 50);
    logged({"page enter", "page move"});
    log.clear();
    server.press();
    server.movePointer(90, 60);
    settle(*ui);
    server.movePointer(900, 700);
    settle(*ui);
    server.release();
    ASSERT_TRUE(runUntil(*ui, [&] { return !log.empty() && log.back() == "page leave"; }));
    EXPECT_EQ(log, (Log{"page move", "page down0", "page move", "page move", "page move", "page up0",
                        "page leave"}));
    EXPECT_EQ(page->lastPoint, (Point{10.0f, 10.0f}));
    EXPECT_EQ(page->lastModifiers, modifier::kLeftButton);
}

TEST_F(X11Test, ManyMovesWithinAFrameAreOne) {
    open();
    server.movePointer(60, 50);
    settle(*ui);
    log.clear();
    for (int x = 61; x < 100; ++x) server.movePointer(x, 50);
    settle(*ui);
    EXPECT_LE(log.size(), 3u);
    EXPECT_EQ(page->lastPoint, Point{});
}

TEST_F(X11Test, ClicksCloseTogetherAreADoubleClickAndTheThirdIsNot) {
    open(2.0f);
    server.movePointer(120, 100);
    for (int i = 0; i < 3; ++i) server.click();
    server.movePointer(180, 100);
    server.click(3);
    settle(*ui);
    std::erase_if(log, [](const std::string& entry) { return entry.find("lick") == std::string::npos; });
    EXPECT_EQ(log, (Log{"page click", "page doubleClick", "page click", "page rightClick"}));
    EXPECT_EQ(page->lastPoint, (Point{40.0f, 10.0f}));
}

TEST_F(X11Test, TheWheelTurnsUpAndWithCtrlAndShiftSideways) {
    open();
    server.movePointer(60, 50);
    server.click(4);
    settle(*ui);
    server.holdKey(XK_Control_L, true);
    server.holdKey(XK_Shift_L, true);
    server.click(5);
    server.holdKey(XK_Shift_L, false);
    server.holdKey(XK_Control_L, false);
    ASSERT_TRUE(runUntil(*ui, [&] { return page->moves.size() == 2; }));
    EXPECT_EQ(page->moves[0].pixels, (Point{0.0f, 25.0f}));
    EXPECT_EQ(page->moves[1].pixels, (Point{-25.0f, 0.0f}));
    EXPECT_FLOAT_EQ(page->moves[0].amount.y, 0.002f);
}

TEST(WheelMeter, AFastTurnGoesFurther) {
    WheelMeter meter;
    meter.measure({0.0f, 1.0f}, 1000);
    EXPECT_FLOAT_EQ(meter.measure({0.0f, 1.0f}, 1010).amount.y, 0.1f);
    EXPECT_FLOAT_EQ(meter.measure({0.0f, -1.0f}, 1510).amount.y, -0.002f);
    EXPECT_FLOAT_EQ(meter.measure({0.0f, 1.0f}, 1511).amount.y, 0.1f);
}

TEST(ScrollAxes, CountFromWhereTheyStandInClicks) {
    ScrollAxes axes;
    axes.set(7, 2, {true, 15.0, 300.0});
    axes.set(7, 3, {false, -10.0, 0.0});
    EXPECT_EQ(axes.moved(7, 2, 307.5), (Point{0.0f, -0.5f}));
    EXPECT_EQ(axes.moved(7, 2, 277.5), (Point{0.0f, 2.0f}));
    EXPECT_EQ(axes.moved(7, 3, 5.0), (Point{-0.5f, 0.0f}));
    EXPECT_EQ(axes.moved(7, 1, 99.0), Point{});
    EXPECT_EQ(axes.moved(8, 2, 99.0), Point{});
}

TEST_F(X11Test, KeysGoToTheFocusAndWhatIsNotUsedGoesToTheHost) {
    const Window host = makeForeign();
    open(1.0f, host);
    page->takenKey = Key::Up;
    page->takeFocus();
    settle(*ui);
    server.typeKey(XK_Up);
    server.typeKey(XK_g);
    ASSERT_TRUE(runUntil(*ui, [&] { return page->keys.size() == 2; }));
    EXPECT_EQ(page->keys[0].key, Key::Up);
    EXPECT_EQ(page->keys[1].character, U'g');
    settle(*ui);
    XEvent event;
    std::vector<KeySym> told;
    while (XCheckTypedEvent(server.display(), kKeyPressEvent, &event))
        told.push_back(XLookupKeysym(&event.xkey, 0));
    EXPECT_EQ(told, std::vector<KeySym>{XK_g});
}

TEST_F(X11Test, AnEmbedderGivesTheFocusAndIsAskedForIt) {
    const Window host = makeForeign();
    open(1.0f, host);
    const Atom protocol = XInternAtom(server.display(), "_XEMBED", kXFalse);
    const auto tell = [&](long message, long detail, Window window) {
        XEvent event{};
        event.xclient.type = ClientMessage;
        event.xclient.window = ui->window();
        event.xclient.message_type = protocol;
        event.xclient.format = 32;
        event.xclient.data.l[1] = message;
        event.xclient.data.l[2] = detail;
        event.xclient.data.l[3] = static_cast<long>(window);
        XSendEvent(server.display(), ui->window(), kXFalse, NoEventMask, &event);
        server.sync();
    };
    constexpr long kEmbedded = 0;
    constexpr long kRequestFocus = 3;
    constexpr long kFocusIn = 4;
    constexpr long kFirst = 1;
    tell(kEmbedded, 0, host);
    tell(kFocusIn, kFirst, kNoXid);
    EXPECT_TRUE(runUntil(*ui, [&] { return ui->rootControl().focusedControl() == page; }));
    XEvent asked{};
    EXPECT_TRUE(
        runUntil(*ui, [&] { return XCheckTypedWindowEvent(server.display(), host, ClientMessage, &asked); }));
    EXPECT_EQ(asked.xclient.message_type, protocol);
    EXPECT_EQ(asked.xclient.data.l[1], kRequestFocus);
}

TEST_F(X11Test, TheLossOfTheFocusOrOfTheWindowEndsAPress) {
    open();
    server.movePointer(60, 50);
    server.press();
    settle(*ui);
    log.clear();
    XSetInputFocus(server.display(), makeForeign(500, 0), RevertToParent, CurrentTime);
    server.sync();
    ASSERT_TRUE(runUntil(*ui, [&] { return std::count(log.begin(), log.end(), "page up0") == 1; }));
    server.release();
    server.press();
    settle(*ui);
    log.clear();
    ui->hide();
    ASSERT_TRUE(runUntil(*ui, [&] { return std::count(log.begin(), log.end(), "page up0") == 1; }));
    EXPECT_FALSE(page->hasCapture());
    server.release();
}

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

TEST_F(X11Test, OtherThreadsWakeTheLoopAndTimersTick) {
    open();
    struct Target : Component {
        using Component::Component;
        void deferredCall(int argument) override { got = argument; }
        int got = 0;
    };
    auto& target = ui->make<Target>();
    std::thread([&] { ui->postDeferred(target, 5); }).join();
    pollfd ready{ui->fd(), POLLIN, 0};
    EXPECT_EQ(poll(&ready, 1, 1000), 1);
    EXPECT_TRUE(runUntil(*ui, [&] { return target.got == 5; }));

    struct Ticks {
        void tick(void* timer) {
            if (++count == 3) static_cast<Timer*>(timer)->running = false;
        }
        int count = 0;
    } ticks;
    const std::unique_ptr<Timer> timer = ui->createTimer();
    timer->interval = 5;
    timer->onTick.setHandler(&ticks, &Ticks::tick);
    timer->running = true;
    EXPECT_TRUE(runUntil(*ui, [&] { return ticks.count == 3; }));
    settle(*ui);
    EXPECT_EQ(ticks.count, 3);
}

TEST_F(X11Test, TextIsCopiedFromOneInterfaceToAnother) {
    open();
    EXPECT_EQ(ui->clipboard(), "");
    const std::unique_ptr<X11Interface> first = std::move(ui);
    open();
    const std::string copied = "-1.5 dB \xE2\x89\xA4 \xE2\x88\x9E";
    first->setClipboard(copied);
    EXPECT_EQ(first->clipboard(), copied);
    std::atomic<bool> done = false;
    std::string pasted;
    std::thread reader([&] {
        X11Display display(server.name());
        pasted = X11Clipboard(display).text();
        done = true;
    });
    EXPECT_TRUE(runUntil(*first, [&] { return done.load(); }));
    reader.join();
    EXPECT_EQ(pasted, copied);
    // The last one counts.
    ui->setClipboard("2");
    settle(*ui);
    EXPECT_EQ(ui->clipboard(), "2");
    EXPECT_EQ(first->clipboard(), "") << "nobody answers within the time";
}

struct Executioner : Component {
    Executioner(UserInterface& owner, std::unique_ptr<X11Interface>& victim) : Component(owner), ui(victim) {}
    void deferredCall(int) override { std::exchange(ui, nullptr).reset(); }
    std::unique_ptr<X11Interface>& ui;
};

TEST_F(X11Test, ADeferredCallMayDeleteTheInterface) {
    X11Interface& interface = open();
    interface.postDeferred(interface.make<Executioner>(ui), 0);
    interface.run();
    EXPECT_FALSE(ui);
}

TEST_F(X11Test, PicturesAreSentWhereMemoryIsNotShared) {
    X11Session session(server.name());
    EXPECT_TRUE(session.display.sharesMemory());
    session.display.sharesNoMemory();
    const Window window = createWindow(session.display, session.display.root(), {0, 0, 40, 30}, true);
    XMapRaised(session.display.get(), window);
    X11Bitmap bitmap(session.backing, session.display);
    bitmap.setPixelSize(40, 30);
    for (int i = 0; i < 40 * 30; ++i) bitmap.row(0)[i] = static_cast<Pixel>(i * 999);
    bitmap.show(window, {5, 6, 35, 25});
    XSync(session.display.get(), kXFalse);
    const std::vector<unsigned> seen = server.pixels(window, 40, 30);
    ASSERT_EQ(seen.size(), 1200u);
    EXPECT_EQ(seen[6 * 40 + 5], bitmap.row(6)[5]);
    EXPECT_EQ(seen[24 * 40 + 34], bitmap.row(24)[34]);
    EXPECT_NE(seen[24 * 40 + 35], bitmap.row(24)[35]);
}

/// Does one thing after the other while a menu has the loop.
struct Script {
    Script(X11Interface& ui, std::vector<std::function<void()>> all) : steps(std::move(all)) {
        timer = ui.createTimer();
        timer->interval = 40;
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

class X11MenuTest : public X11Test {
protected:
    std::unique_ptr<PopupMenu> makeMenu() {
        std::unique_ptr<PopupMenu> menu = ui->createPopupMenu();
        menu->addItem("First", 1);
        menu->addItem("Refused", 2);
        menu->item(1)->enabled = false;
        menu->addSeparator();
        menu->addItem("More", 3);
        menu->item(3)->addItem("Deep & wide", 31);
        menu->addItem("Last\tCtrl+L", 4);
        menu->onPicked.setHandler(this, &X11MenuTest::picked);
        return menu;
    }
    void picked(void* item) { pickedId = static_cast<MenuItem*>(item)->id; }

    int pickedId = 0;
};

TEST_F(X11MenuTest, ItemsArePickedByKeysAndByMouse) {
    open();
    const auto menu = makeMenu();
    X11Server& s = server;
    // Past what is refused, and round.
    Script keys(*ui, {[&] { s.typeKey(XK_Down); }, [&] { s.typeKey(XK_Down); }, [&] { s.typeKey(XK_Right); },
                      [&] { s.typeKey(XK_Return); }});
    menu->show({10.0f, 10.0f});
    EXPECT_EQ(pickedId, 31);
    Script letter(*ui, {[&] { s.typeKey(XK_l); }, [&] { s.typeKey(XK_Return); }});
    menu->show({10.0f, 10.0f});
    EXPECT_EQ(pickedId, 4);
    Script mouse(*ui, {[&] { s.movePointer(40, 45); }, [&] { s.click(); }, [&] { s.movePointer(40, 25); },
                       [&] { s.click(); }});
    menu->show({10.0f, 10.0f});
    EXPECT_EQ(pickedId, 1);
}

TEST_F(X11MenuTest, APressOutsideOrEscapeTurnsAwayAndIsSwallowed) {
    open();
    const auto menu = makeMenu();
    const std::size_t windows = server.children(server.root()).size();
    Script outside(*ui, {[&] { server.movePointer(250, 190); }, [&] { server.press(); }});
    menu->show({10.0f, 10.0f});
    server.release();
    Script escape(*ui, {[&] { server.typeKey(XK_Escape); }});
    menu->show({10.0f, 10.0f});
    settle(*ui);
    EXPECT_EQ(pickedId, 0);
    EXPECT_EQ(std::count(log.begin(), log.end(), "page down0"), 0);
    EXPECT_EQ(server.children(server.root()).size(), windows);
}

TEST_F(X11MenuTest, AWindowThatDiesUnderAMenuClosesIt) {
    open(1.0f, makeForeign());
    const auto menu = makeMenu();
    const std::size_t windows = server.children(server.root()).size();
    Script death(*ui, {[&] {
        XDestroyWindow(server.display(), foreign.back());
        foreign.clear();
        server.sync();
    }});
    menu->show({10.0f, 10.0f});
    EXPECT_FALSE(ui->isOpen());
    EXPECT_TRUE(runUntil(*ui, [&] { return server.children(server.root()).size() == windows - 1; }));
}

TEST_F(X11MenuTest, AnInterfaceThatIsDeletedUnderAMenuClosesIt) {
    const std::size_t windows = server.children(server.root()).size();
    open();
    auto menu = makeMenu();
    ui->postDeferred(ui->make<Executioner>(ui), 0);
    menu->show({10.0f, 10.0f});
    EXPECT_FALSE(ui);
    // It shares the connection, which ends in step with the server.
    menu.reset();
    EXPECT_EQ(server.children(server.root()).size(), windows);
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
    for (int i = 0; i < 200; ++i) {
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
