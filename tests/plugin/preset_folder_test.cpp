#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "plugin/presets/preset_manager.hpp"
#include "plugin/presets/preset_scan.hpp"
#include "tests/plugin/preset_bytes.hpp"

namespace vanta {
namespace {

using test::ScratchFolder;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr int kAmple = 60000;

void touch(const ScratchFolder& scratch, const std::string& name) {
    std::filesystem::create_directories(scratch.file(name).parent_path());
    scratch.write(name, "x");
}

std::vector<std::string> folderNames(const PresetFolder& folder) {
    std::vector<std::string> names;
    for (const auto& sub : folder.folders) names.push_back(sub->name);
    return names;
}

std::vector<std::string> entryNames(const PresetFolder& folder) {
    std::vector<std::string> names;
    for (const auto& entry : folder.entries) names.push_back(entry->name);
    return names;
}

std::vector<std::string> flatNames(PresetManager& manager) {
    std::vector<PresetEntry*> all;
    manager.flatten(all);
    std::vector<std::string> names;
    for (const PresetEntry* entry : all) names.push_back(entry->name);
    return names;
}

/// A clock that goes on by one with each question.
class CountingTimer final : public IntervalTimer {
public:
    int elapsed() const override { return questions++; }
    void reset() override { questions = 0; }

private:
    mutable int questions = 0;
};

TEST(PresetFolder, NumbersOrderFoldersAndAreNotShown) {
    const ScratchFolder scratch;
    for (const char* name :
         {"_2 B", "_10 A", "C", "_x", "_", "_3", "_99999999999999 Huge", "_4\tTab", "b2"}) {
        std::filesystem::create_directories(scratch.file(name));
    }
    const PresetFolder folder(scratch.path(), ".qmp", kAmple);
    EXPECT_THAT(folderNames(folder), ElementsAre("", "Huge", "x", "B", "", "Tab", "A", "b2", "C"));
    EXPECT_EQ(folder.folders[2]->order, 0);
    EXPECT_EQ(folder.folders[6]->order, 10);
    EXPECT_EQ(folder.folders[8]->order, PresetFolder::kUnordered);
    EXPECT_EQ(folder.folders[3]->path, scratch.file("_2 B").string() + "/");
}

TEST(PresetFolder, NamesAreOrderedByUpperCasedCharactersAndThenByBytes) {
    const ScratchFolder scratch;
    for (const char* name : {"a.qmp", "B.qmp", "a b.QMP", "\xC3\xA9t\xC3\xA9.qmp", "\xC3\x89tude.qmp",
                             "A.qmp", "z.Qmp", "bad\xFF.qmp", ".hidden.qmp", ".qmp", "other.txt", "noqmp"}) {
        touch(scratch, name);
    }
    std::filesystem::create_directories(scratch.file("folder.qmp"));
    std::filesystem::create_directories(scratch.file(".hidden"));
    const PresetFolder folder(scratch.path().string() + "/", ".qmp", kAmple);
    EXPECT_THAT(entryNames(folder),
                ElementsAre("A", "a", "a b", "B", "bad\xFF", "z", "\xC3\x89tude", "\xC3\xA9t\xC3\xA9"));
    EXPECT_THAT(folderNames(folder), ElementsAre("folder.qmp"));
    EXPECT_EQ(folder.entries[2]->path, scratch.file("a b.QMP").string());
}

TEST(PresetFolder, EachDirectoryIsVisitedOnceWhateverTheLinks) {
    const ScratchFolder scratch;
    touch(scratch, "real/deep/p.qmp");
    touch(scratch, "elsewhere/q.qmp");
    std::filesystem::create_directories(scratch.file("root/own"));
    touch(scratch, "root/own/r.qmp");
    std::filesystem::create_symlink(scratch.file("root"), scratch.file("root/own/loop"));
    std::filesystem::create_symlink("own", scratch.file("root/an alias"));
    std::filesystem::create_symlink(scratch.file("real"), scratch.file("root/one"));
    std::filesystem::create_symlink(scratch.file("real"), scratch.file("root/two"));
    std::filesystem::create_symlink(scratch.file("elsewhere/q.qmp"), scratch.file("root/linked.qmp"));
    std::filesystem::create_symlink(scratch.file("nowhere"), scratch.file("root/dangling.qmp"));
    PresetManager manager;
    manager.rescan(scratch.file("root"));
    EXPECT_THAT(folderNames(manager), ElementsAre("one", "own"));
    EXPECT_THAT(flatNames(manager), ElementsAre("linked", "r", "p"));
}

TEST(PresetFolder, WhenTimeRunsOutFoldersAreListedButHoldNothing) {
    const ScratchFolder scratch;
    for (const char* name : {"a/1.qmp", "b/2.qmp", "c/3.qmp", "d/4.qmp", "top.qmp"}) touch(scratch, name);
    PresetFolder folder("", ".qmp", 0);
    EXPECT_TRUE(folder.isEmpty());
    const CountingTimer clock;
    PresetScan walk(clock, 3);  // the folder itself and two of the four
    folder.scan(scratch.path(), walk);
    EXPECT_THAT(folderNames(folder), ElementsAre("a", "b", "c", "d"));
    EXPECT_THAT(entryNames(*folder.folders[1]), ElementsAre("2"));
    EXPECT_THAT(entryNames(*folder.folders[2]), IsEmpty());
    EXPECT_THAT(entryNames(*folder.folders[3]), IsEmpty());
    EXPECT_EQ(folder.folders[3]->path, scratch.file("d").string() + "/");
    const PresetFolder none(scratch.path(), ".qmp", 0);
    EXPECT_TRUE(none.isEmpty());
}

TEST(PresetManager, NumbersEntriesLevelByLevelAndByBanksOf128) {
    const ScratchFolder scratch;
    touch(scratch, "_1 first/sub/last.qmp");
    for (int i = 0; i < 128; ++i) touch(scratch, "_1 first/" + std::to_string(1000 + i) + ".qmp");
    touch(scratch, "zero.qmp");
    PresetManager manager;
    manager.rescan(scratch.path());
    EXPECT_EQ(manager.entryAt(0, 0)->name, "zero");
    EXPECT_EQ(manager.entryAt(0, 0)->label, "(0/0) zero");
    EXPECT_EQ(manager.entryAt(0, 127)->name, "1126");
    EXPECT_EQ(manager.entryAt(1, 0)->label, "(1/0) 1127");
    EXPECT_EQ(manager.entryAt(1, 1)->name, "last");
    for (const auto& [bank, program] :
         std::vector<std::pair<int, int>>{{1, 2}, {-1, 0}, {0, -1}, {1 << 30, 0}}) {
        EXPECT_EQ(manager.entryAt(bank, program), nullptr);
    }
}

TEST(PresetManager, ExtraFoldersFollowAndBrowsingStaysInTheMainPart) {
    const ScratchFolder scratch;
    for (const char* name : {"main/a.qmp", "main/sub/b.qmp", "old/a.qmp", "old/c.qmp"}) touch(scratch, name);
    PresetManager manager;
    manager.rescan(scratch.file("main"));
    manager.addFolder(scratch.file("old"), "V1 Preset Folder");
    manager.rescan(scratch.file("main"));
    EXPECT_THAT(flatNames(manager), ElementsAre("a", "b", "a", "c"));
    EXPECT_EQ(manager.mainCount(), 2);
    EXPECT_EQ(manager.extraFolders()[0]->name, "V1 Preset Folder");
    EXPECT_EQ(manager.entryAt(0, 3)->label, "(0/3) c");
    EXPECT_EQ(manager.find("c", true), nullptr);
    EXPECT_EQ(manager.find("c", false), manager.entryAt(0, 3));
    EXPECT_EQ(manager.find("A", false), nullptr);

    using Direction = PresetManager::Direction;
    const auto walk = [&](const char* from, Direction direction) {
        const PresetEntry* to = manager.neighbour(scratch.file(from), direction);
        return to ? std::filesystem::relative(to->path, scratch.path()).string() : "none";
    };
    EXPECT_EQ(walk("main/sub/b.qmp", Direction::Next), "main/a.qmp");
    EXPECT_EQ(walk("main/a.qmp", Direction::Previous), "main/sub/b.qmp");
    EXPECT_EQ(walk("main/a.qmp", Direction::Same), "main/a.qmp");
    EXPECT_EQ(walk("old/a.qmp", Direction::Previous), "main/sub/b.qmp");
    EXPECT_EQ(walk("old/c.qmp", Direction::Next), "main/a.qmp");
    EXPECT_EQ(walk("missing.qmp", Direction::Next), "none");
}

TEST(PresetManager, AFolderThatIsGoneIsEmpty) {
    const ScratchFolder scratch;
    PresetManager manager;
    manager.rescan(scratch.file("missing"));
    EXPECT_TRUE(manager.isEmpty());
    EXPECT_EQ(manager.find("x", false), nullptr);
    EXPECT_EQ(manager.path, scratch.file("missing").string() + "/");
}

}  // namespace
}  // namespace vanta
