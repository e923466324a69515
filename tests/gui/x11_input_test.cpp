#include "tests/gui/x11_fixture.hpp"

#include "gui/controls/text_editor.hpp"
#include "gui/x11/wheel_meter.hpp"
#include "gui/x11/x11_pointer.hpp"

namespace vanta::gui {
namespace {

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

    const auto hasKeyboard = [&](Window window) {
        settle(*ui);
        Window owner = kNoXid;
        int revert = 0;
        XGetInputFocus(server.display(), &owner, &revert);
        return owner == window;
    };
    XSetInputFocus(server.display(), host, RevertToParent, CurrentTime);
    server.sync();
    const std::unique_ptr<TextEditor> editor = ui->createTextEditor();
    for (const bool hadFocus : {true, false}) {
        page->setFocus(hadFocus ? page : nullptr);
        EXPECT_TRUE(hasKeyboard(host));
        editor->begin();
        EXPECT_TRUE(hasKeyboard(ui->window())) << "the host's shortcuts would come first";
        editor->commit();
        EXPECT_TRUE(hasKeyboard(host));
    }
    const Window other = makeForeign();
    editor->begin();
    EXPECT_TRUE(hasKeyboard(ui->window()));
    XSetInputFocus(server.display(), other, RevertToParent, CurrentTime);
    server.sync();
    editor->cancel();
    EXPECT_TRUE(hasKeyboard(other)) << "somebody has taken it meanwhile";
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

}  // namespace
}  // namespace vanta::gui
