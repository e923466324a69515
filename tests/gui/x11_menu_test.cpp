#include "tests/gui/x11_fixture.hpp"

#include "gui/controls/popup_menu.hpp"

namespace vanta::gui {
namespace {

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

}  // namespace
}  // namespace vanta::gui
