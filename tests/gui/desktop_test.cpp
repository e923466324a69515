#include <gmock/gmock.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <thread>

#include "gui/desktop/portal_dialog.hpp"
#include "gui/desktop/zenity_dialog.hpp"
#include "tests/gui/fake_portal.hpp"
#include "tests/gui/fake_zenity.hpp"

namespace vanta::gui {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::Not;
using Kind = FileQuestion::Kind;
using State = DesktopDialog::State;
using test::FakePortal;
using test::FakeZenity;

bool becomes(const std::function<bool()>& condition) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(5);
    while (!condition() && std::chrono::steady_clock::now() < end)
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    return condition();
}

State answerOf(DesktopDialog& dialog) {
    becomes([&] { return dialog.poll() != State::Open; });
    return dialog.poll();
}

TEST(FileQuestion, FiltersFindFilesInEitherCase) {
    const auto filters = parseFilters("Audio |*.wav; *.FLAC|Nothing||Takes|take-?.1|All|*.*|Odd");
    ASSERT_EQ(filters.size(), 3u);
    EXPECT_EQ(filters[0].name, "Audio");
    EXPECT_THAT(filters[0].patterns, ElementsAre("*.[wW][aA][vV]", "*.[fF][lL][aA][cC]"));
    EXPECT_THAT(filters[1].patterns, ElementsAre("[tT][aA][kK][eE]-?.1"));
    EXPECT_THAT(filters[2].patterns, ElementsAre("*"));
}

TEST(FileQuestion, StartsWhereThereIsAFolderAndAddsExtensions) {
    const std::string folder = std::filesystem::temp_directory_path().string();
    EXPECT_EQ(startingPlace(folder).folder, folder);
    EXPECT_EQ(startingPlace(folder).name, "");
    const StartingPlace gone = startingPlace(folder + "/no such folder/nor this/song.wav");
    EXPECT_EQ(gone.folder, folder);
    EXPECT_EQ(gone.name, "song.wav");
    for (const std::string& bad : {std::string{}, std::string("/tmp\0/x", 7)}) {
        EXPECT_EQ(startingPlace(bad).folder, "");
    }
    EXPECT_EQ(withExtension("/a.b/song", ".wav"), "/a.b/song.wav");
    EXPECT_EQ(withExtension("/a/song.flac", "wav"), "/a/song.flac");
    EXPECT_EQ(withExtension("/a/song", ""), "/a/song");
}

/// A name that is no UTF-8, and one that a shell would take apart.
const std::string kOddPath = "/tmp/a b$(x)'\xFF.wav";

TEST(PortalDialog, GivesThePathInTheFileSystemsBytes) {
    const FakePortal portal({.uris = {"file:///tmp/a%20b$(x)'%FF.wav", "file:///tmp/other"}});
    PortalDialog dialog({Kind::Open, "Pick", "/tmp/nothing/here.wav", parseFilters("Audio|*.wav"), 0x1F});
    EXPECT_EQ(answerOf(dialog), State::Accepted);
    EXPECT_EQ(dialog.chosenPath(), kOddPath);
    EXPECT_EQ(portal.method(), "OpenFile");
    for (const char* part : {"('x11:1f', 'Pick', ", "'current_folder': <b'/tmp'>", "'modal': <true>",
                             "'filters': <[('Audio', [(uint32 0, '*.[wW][aA][vV]')])]>"}) {
        EXPECT_THAT(portal.arguments(), HasSubstr(part));
    }
    EXPECT_THAT(portal.arguments(), Not(HasSubstr("directory")));
}

TEST(PortalDialog, SavesAndSelectsFolders) {
    const FakePortal portal({.namesRequests = true, .uris = {"file:///tmp/mix"}});
    PortalDialog saving({Kind::Save, "\xFF", kOddPath, {}, 0});
    EXPECT_EQ(answerOf(saving), State::Accepted);
    EXPECT_EQ(portal.method(), "SaveFile");
    EXPECT_THAT(portal.arguments(), HasSubstr("'current_name': <\"a b$(x)'\xEF\xBF\xBD.wav\">"));
    PortalDialog folder({Kind::Folder, "", "/tmp", {}, 0});
    EXPECT_EQ(answerOf(folder), State::Accepted);
    EXPECT_EQ(folder.chosenPath(), "/tmp/mix");
    EXPECT_THAT(portal.arguments(), HasSubstr("'directory': <true>"));
}

TEST(PortalDialog, TellsWhoTurnsAwayFromWhoNeverAsked) {
    const auto answerFrom = [](FakePortal::Behaviour behaviour, Kind kind) {
        const FakePortal portal(std::move(behaviour));
        PortalDialog dialog({kind, "", "", {}, 0});
        return answerOf(dialog);
    };
    EXPECT_EQ(answerFrom({.response = 1}, Kind::Open), State::Cancelled);
    EXPECT_EQ(answerFrom({.response = 2}, Kind::Open), State::Cancelled) << "by Escape";
    EXPECT_EQ(answerFrom({.version = 2}, Kind::Folder), State::Unavailable) << "it would give files";
    const FakeZenity noBus;
    PortalDialog dialog({Kind::Open, "", "", {}, 0});
    EXPECT_EQ(answerOf(dialog), State::Unavailable);
}

TEST(PortalDialog, EndsWithItsPortalAndTheRequestWithIt) {
    FakePortal portal({.answers = false});
    const auto open = [&] {
        auto dialog = std::make_unique<PortalDialog>(FileQuestion{Kind::Open, "", "", {}, 0});
        EXPECT_TRUE(becomes([&] { return dialog->poll() == State::Open && !portal.method().empty(); }));
        return dialog;
    };
    open().reset();
    EXPECT_TRUE(becomes([&] { return portal.wasClosed(); }));
    const auto left = open();
    portal.vanish();
    EXPECT_EQ(answerOf(*left), State::Unavailable);
}

TEST(ZenityDialog, AsksWithoutAShellAndGivesTheBytesBack) {
    const FakeZenity zenity;
    zenity.answer(0, kOddPath + "\n");
    ZenityDialog open({Kind::Open, "Pick 'one'", kOddPath, parseFilters("Audio|*.wav|All|*.*"), 31}, ":7");
    EXPECT_EQ(answerOf(open), State::Accepted);
    EXPECT_EQ(open.chosenPath(), kOddPath);
    EXPECT_THAT(zenity.arguments(),
                ElementsAre("--file-selection", "--title=Pick 'one'", "--modal", "--attach=31",
                            "--filename=" + kOddPath, "--file-filter=Audio | *.[wW][aA][vV]",
                            "--file-filter=All | *"));
    zenity.answer(0, "x\n");
    ZenityDialog save({Kind::Save, "", "/tmp/", {}, 0}, "");
    EXPECT_EQ(answerOf(save), State::Accepted);
    EXPECT_THAT(zenity.arguments(),
                ElementsAre("--file-selection", "--save", "--confirm-overwrite", "--filename=/tmp/"));
    zenity.answer(1);
    ZenityDialog folder({Kind::Folder, "", "/tmp/nothing", {}, 0}, "");
    EXPECT_EQ(answerOf(folder), State::Cancelled);
    EXPECT_THAT(zenity.arguments(), ElementsAre("--file-selection", "--directory", "--filename=/tmp/"));
}

TEST(ZenityDialog, ShowsMessagesAsTheyAre) {
    const FakeZenity zenity;
    zenity.answer(0);
    ZenityDialog telling({"Information", "<b> & \\n", false, 0}, "");
    EXPECT_EQ(answerOf(telling), State::Accepted);
    EXPECT_THAT(zenity.arguments(), Contains("--info"));
    EXPECT_THAT(zenity.arguments(), Contains("--no-markup"));
    EXPECT_THAT(zenity.arguments(), Contains("--text=<b> & \\\\n"));
    zenity.answer(1);
    ZenityDialog asking({"Confirmation", "Really?", true, 0}, "");
    EXPECT_EQ(answerOf(asking), State::Cancelled);
    EXPECT_THAT(zenity.arguments(), Contains("--question"));
    zenity.answer(255);
    ZenityDialog broken({"Confirmation", "Really?", true, 0}, "");
    EXPECT_EQ(answerOf(broken), State::Unavailable);
}

TEST(ZenityDialog, EndsItsProgramAndKnowsWhenThereIsNone) {
    const FakeZenity zenity;
    {
        ZenityDialog dialog({Kind::Open, "", "", {}, 0}, "");
        EXPECT_TRUE(becomes([&] { return !zenity.arguments().empty(); }));
        EXPECT_EQ(dialog.poll(), State::Open);
        EXPECT_TRUE(zenity.isOpen());
    }
    EXPECT_FALSE(zenity.isOpen());
    zenity.hide();
    ZenityDialog nobody({Kind::Open, "", "", {}, 0}, "");
    EXPECT_EQ(answerOf(nobody), State::Unavailable);
}

}  // namespace
}  // namespace vanta::gui
