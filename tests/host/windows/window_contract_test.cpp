#include "tests/host/windows/window_contract.hpp"

namespace vanta::test {
namespace {

using Kind = FormatHost::Edit::Kind;

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
    EXPECT_TRUE(followsSize(parent, {900, 540})) << "what the server says counts";
    EXPECT_EQ(host.windowSize(), (Size{900, 540}));
    host.closeWindow();
    openWindow(host, parent);
    EXPECT_EQ(host.windowSize(), (Size{900, 540})) << "as it was left";
}

TEST_P(WindowContract, AUserChoosesASizeThatTheHostGrantsOrRefuses) {
    FormatHost& host = open();
    const Window parent = makeParent();
    openWindow(host, parent);
    chooseSize(host, 2);
    EXPECT_EQ(host.wantedSizes, (std::vector<Size>{{800, 480}}));
    EXPECT_TRUE(waitFor([&] { return sizeOf(childOf(parent)) == Size{800, 480}; }));
    host.refusesSizes = true;
    const auto before = server.pixels(childOf(parent), 800, 480);
    chooseSize(host, 3);
    EXPECT_EQ(sizeOf(childOf(parent)), (Size{800, 480}));
    EXPECT_NE(server.pixels(childOf(parent), 800, 480), before) << "the user is told";
    host.closeWindow();
    openWindow(host, parent);
    EXPECT_EQ(host.windowSize(), kUsual) << "as was said then";
}

class WindowKeys : public WindowContract {
protected:
    /// A click on the slider of Gain brings it the keyboard.
    FormatHost& openWithKeyboard() {
        FormatHost& host = open();
        parent = makeParent();
        XSelectInput(server.display(), parent, KeyPressMask);
        openWindow(host, parent);
        EXPECT_NE(keyboardOwner(), childOf(parent)) << "nobody has clicked";
        server.movePointer(kSliderX, kSliderY + 60);
        server.click();
        EXPECT_TRUE(waitFor([&] { return keyboardOwner() == childOf(parent); }));
        settle();
        return host;
    }
    Window keyboardOwner() {
        Window focus = 0;
        int revert = 0;
        XGetInputFocus(server.display(), &focus, &revert);
        return focus;
    }
    /// At the host's window.
    bool arrives(KeySym symbol) {
        server.typeKey(symbol);
        return waitFor([&] { return hasArrived(symbol); });
    }
    bool hasArrived(KeySym symbol) {
        bool came = false;
        XEvent event{};
        while (XCheckWindowEvent(server.display(), parent, KeyPressMask, &event)) {
            came = came || XLookupKeysym(&event.xkey, 0) == symbol;
        }
        return came;
    }
    void openField() {
        server.movePointer(kSliderX, kSliderY);
        server.click();
        server.click();
        settle();
    }
    void typeUnheard(std::initializer_list<KeySym> symbols) {
        for (const KeySym symbol : symbols) {
            server.typeKey(symbol);
            settle();
            EXPECT_FALSE(hasArrived(symbol)) << XKeysymToString(symbol);
        }
    }

    Window parent = 0;
};

TEST_P(WindowKeys, WhatItDoesNotUseGoesToTheHost) {
    FormatHost& host = openWithKeyboard();
    for (const KeySym symbol : {XK_space, XK_F5, XK_r, XK_3, XK_Return})
        EXPECT_TRUE(arrives(symbol)) << XKeysymToString(symbol);
    typeUnheard({XK_Tab});
    host.closeWindow();
    settle();
    EXPECT_NE(keyboardOwner(), Window{0});
}

TEST_P(WindowKeys, WhatIsTypedIntoAFieldStaysThere) {
    FormatHost& host = openWithKeyboard();
    openField();
    host.takeEdits();
    typeUnheard({XK_r, XK_space, XK_BackSpace, XK_BackSpace, XK_4, XK_period, XK_5});
    EXPECT_TRUE(host.takeEdits().empty());
    EXPECT_TRUE(arrives(XK_F5)) << "no field wants it";
    typeUnheard({XK_Return});
    EXPECT_TRUE(waitFor([&] { return std::abs(host.value(kGain) - 4.5) < 1e-3; }));
    const std::vector<FormatHost::Edit> edits = host.takeEdits();
    ASSERT_EQ(edits.size(), 3u);
    EXPECT_EQ(edits.front().kind, Kind::Begin);
    EXPECT_NEAR(edits[1].value, 4.5, 1e-3);
    EXPECT_TRUE(arrives(XK_3)) << "the field has gone";
    openField();
    typeUnheard({XK_9, XK_Escape});
    EXPECT_NEAR(host.value(kGain), 4.5, 1e-3) << "it was not meant";
    EXPECT_TRUE(arrives(XK_space));
}

VANTA_WINDOW_FORMATS(WindowContract);
VANTA_WINDOW_FORMATS(WindowKeys);

}  // namespace
}  // namespace vanta::test
