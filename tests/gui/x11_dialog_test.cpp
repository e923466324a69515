#include "tests/gui/x11_fixture.hpp"

#include <atomic>
#include <filesystem>
#include <fstream>
#include <thread>

#include <fmt/format.h>

#include "gui/tree/file_dialogs.hpp"
#include "tests/gui/fake_zenity.hpp"

namespace vanta::gui {
namespace {

constexpr int kConfirm = UserInterface::kConfirmation | UserInterface::kWithCancel;

class X11DialogTest : public X11Test {
protected:
    struct Turn {
        std::string asked;  ///< an argument of the dialog that has to be open
        std::function<void()> then;
    };

    /// While dialogs have the loop.
    void take(std::vector<Turn> all) {
        turns = std::move(all);
        next = 0;
        timer = ui->createTimer();
        timer->interval = 10;
        timer->onTick.setHandler(this, &X11DialogTest::step);
        timer->running = true;
    }
    void step(void*) {
        if (next == turns.size()) return;
        if (zenity.wasAsked(turns[next].asked)) turns[next++].then();
    }
    ~X11DialogTest() override { timer.reset(); }

    test::FakeZenity zenity;
    std::vector<Turn> turns;
    std::size_t next = 0;
    std::unique_ptr<Timer> timer;
};

TEST_F(X11DialogTest, AFileIsChosenWhileNothingElseCanBeUsed) {
    open();
    page->takeFocus();
    const std::unique_ptr<OpenSaveDialog> dialog = ui->createOpenDialog();
    dialog->title = "Pick";
    dialog->path = "/nowhere/song.wav";
    std::atomic<bool> painted = false;
    std::thread renderer;
    take({{"--file-selection",
           [&] {
               renderer = std::thread([&] {
                   ui->rootControl().lockObject();
                   painted = true;
                   ui->rootControl().unlockObject();
               });
               server.movePointer(60, 50);
               server.click();
               server.typeKey(XK_Up);
               XResizeWindow(server.display(), ui->window(), 500, 400);
               server.sync();
           }},
          {"--title=Pick", [] {}},
          {fmt::format("--attach={}", ui->window()), [&] { settle(*ui); }},
          {"--filename=/song.wav", [&] { zenity.answer(0, "/tmp/s\xFF.wav\n"); }}});
    EXPECT_TRUE(dialog->show());
    EXPECT_EQ(dialog->path.value(), "/tmp/s\xFF.wav");
    renderer.join();
    EXPECT_TRUE(painted) << "the lock is free meanwhile";
    EXPECT_EQ(std::count(log.begin(), log.end(), "page down0"), 0);
    EXPECT_TRUE(page->keys.empty());
    EXPECT_EQ(ui->rootControl().localBounds().right, 500.0f);
    EXPECT_EQ(ui->rootControl().focusedControl(), page);
    expectPictureOnScreen();
}

TEST_F(X11DialogTest, NoFileIsReplacedUnasked) {
    open();
    const std::string stem = testing::TempDir() + "vanta-mix";
    std::ofstream(stem + ".wav") << "here";
    const std::unique_ptr<OpenSaveDialog> dialog = ui->createSaveDialog();
    dialog->defaultExtension = "wav";
    const auto save = [&] { zenity.answer(0, stem + "\n"); };
    take({{"--save", save}, {"--question", [&] { zenity.answer(1); }}, {"--save", save}, {"--question", [&] {
                                                                                              zenity.answer(
                                                                                                  0);
                                                                                          }}});
    EXPECT_TRUE(dialog->show());
    EXPECT_EQ(next, 4u);
    EXPECT_EQ(dialog->path.value(), stem + ".wav");
    std::filesystem::remove(stem + ".wav");
    take({{"--save", save}});
    EXPECT_TRUE(dialog->show()) << "nothing to ask";
    const std::unique_ptr<SelectFolderDialog> folder = ui->createSelectFolderDialog();
    take({{"--directory", [&] { zenity.answer(1); }}});
    folder->path = "/tmp";
    EXPECT_FALSE(folder->show());
    EXPECT_EQ(folder->path.value(), "/tmp");
}

TEST_F(X11DialogTest, MessagesAreAnsweredByTheDesktop) {
    open();
    zenity.answer(1);
    EXPECT_TRUE(ui->showMessage("Really?", kConfirm));
    EXPECT_TRUE(zenity.wasAsked("--title=Confirmation"));
    zenity.answer(0);
    EXPECT_FALSE(ui->showMessage("Really?", UserInterface::kWithCancel));
    EXPECT_TRUE(zenity.wasAsked("--title=Information"));
    zenity.answer(1);
    EXPECT_FALSE(ui->showMessage("So it is.", UserInterface::kConfirmation)) << "there was no choice";
}

TEST_F(X11DialogTest, MessagesNeedNoOtherProgram) {
    zenity.hide();
    open();
    page->takeFocus();
    const auto answers = [&](std::vector<std::function<void()>> steps) {
        const Script script(*ui, std::move(steps));
        return ui->showMessage("A message that is longer than one line of its panel would be.", kConfirm);
    };
    EXPECT_FALSE(answers({[&] { server.typeKey(XK_Return); }}));
    EXPECT_TRUE(answers({[&] { server.typeKey(XK_Escape); }}));
    EXPECT_TRUE(answers({[&] { server.typeKey(XK_Tab); }, [&] { server.typeKey(XK_space); }}));
    // Beside the panel, then on Cancel.
    EXPECT_TRUE(answers({[&] { server.movePointer(60, 20); }, [&] { server.click(); },
                         [&] { server.movePointer(220, 125); }, [&] { server.click(); }}));
    EXPECT_EQ(std::count(log.begin(), log.end(), "page down0"), 0);
    EXPECT_EQ(ui->rootControl().focusedControl(), page);
    expectPictureOnScreen();
    ui->hide();
    settle(*ui);
    testing::internal::CaptureStderr();
    EXPECT_TRUE(ui->showMessage("Nobody sees this.", kConfirm));
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "Nobody sees this.\n");
}

TEST_F(X11DialogTest, AWindowThatDiesClosesItsDialogs) {
    const auto kill = [&] {
        XDestroyWindow(server.display(), foreign.back());
        foreign.clear();
        server.sync();
    };
    open(1.0f, makeForeign());
    // To a window manager an embedded window is part of its host's.
    take({{fmt::format("--attach={}", foreign.back()), kill}});
    EXPECT_FALSE(ui->createOpenDialog()->show());
    EXPECT_FALSE(ui->isOpen());
    EXPECT_FALSE(zenity.isOpen());
    timer.reset();
    zenity.hide();
    open(1.0f, makeForeign());
    const Script script(*ui, {kill});
    EXPECT_TRUE(ui->showMessage("Really?", kConfirm));
}

TEST_F(X11DialogTest, AnInterfaceThatIsDeletedClosesItsDialogs) {
    open();
    auto dialog = ui->createSelectFolderDialog();
    auto& executioner = ui->make<Executioner>(ui);
    take({{"--directory", [&] { ui->postDeferred(executioner, 0); }}});
    timer.release();  // goes with the interface
    EXPECT_FALSE(dialog->show());
    EXPECT_FALSE(ui);
    EXPECT_FALSE(zenity.isOpen());
    zenity.hide();
    open();
    ui->postDeferred(ui->make<Executioner>(ui), 0);
    EXPECT_TRUE(ui->showMessage("Really?", kConfirm));
    EXPECT_FALSE(ui);
}

}  // namespace
}  // namespace vanta::gui
