#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <zlib.h>
#include <span>
#include <string>
#include <vector>

#include "plugin/presets/preset_manager.hpp"
#include "plugin/presets/preset_scan.hpp"
#include "plugin/presets/setup_archive.hpp"
#include "tests/plugin/preset_bytes.hpp"
#include "tests/support/temp_folder.hpp"

namespace vanta::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr int kAmple = 60000;

/// The names of folders or entries.
template <typename Items>
std::vector<std::string> namesOf(const Items& items) {
    std::vector<std::string> names;
    for (const auto& item : items) names.push_back(item->name);
    return names;
}

std::vector<std::string> flatNames(PresetManager& manager) {
    std::vector<PresetEntry*> all;
    manager.flatten(all);
    return namesOf(all);
}

/// A clock that goes on by one with each question.
class CountingTimer final : public IntervalTimer {
public:
    std::int64_t elapsed() const override { return questions_++; }
    void reset() override { questions_ = 0; }

private:
    mutable int questions_ = 0;
};

TEST(PresetFolder, NumbersOrderFoldersAndAreNotShown) {
    const TempFolder scratch;
    for (const char* name :
         {"_2 B", "_10 A", "C", "_x", "_", "_3", "_99999999999999 Huge", "_4\tTab", "b2"}) {
        std::filesystem::create_directories(scratch / name);
    }
    const PresetFolder folder(scratch.path, ".qmp", kAmple);
    EXPECT_THAT(namesOf(folder.folders), ElementsAre("", "Huge", "x", "B", "", "Tab", "A", "b2", "C"));
    EXPECT_EQ(folder.folders[3]->path, (scratch / "_2 B").string() + "/");
}

TEST(PresetFolder, NamesAreOrderedByUpperCasedCharactersAndThenByBytes) {
    const TempFolder all;
    const auto scratch = all / "[a]";  // brackets are plain characters
    std::filesystem::create_directories(scratch);
    for (const char* name :
         {"a.qmp", "B.qmp", "a b.QMP", "\xC3\xA9t\xC3\xA9.qmp", "\xC3\x89tude.qmp", "A.qmp", "z.Qmp",
          "bad\xFF.qmp", ".hidden.qmp", ".qmp", "other.txt", "noqmp", "c.qmp2"}) {
        writeBytes(scratch / name, "x");
    }
    std::filesystem::create_directories(scratch / "folder.qmp");
    std::filesystem::create_directories(scratch / ".hidden");
    ASSERT_EQ(::mkfifo((scratch / "pipe.qmp").c_str(), 0600), 0);
    const PresetFolder folder(scratch.string() + "/", ".qmp", kAmple);
    EXPECT_THAT(namesOf(folder.entries),
                ElementsAre("A", "a", "a b", "B", "bad\xFF", "z", "\xC3\x89tude", "\xC3\xA9t\xC3\xA9"));
    EXPECT_THAT(namesOf(folder.folders), ElementsAre("folder.qmp"));
    EXPECT_EQ(folder.entries[2]->path, (scratch / "a b.QMP").string());
}

TEST(PresetFolder, EachDirectoryIsVisitedOnceWhateverTheLinks) {
    const TempFolder scratch;
    scratch.write("real/deep/p.qmp", "x");
    scratch.write("elsewhere/q.qmp", "x");
    scratch.write("root/own/r.qmp", "x");
    const std::pair<const char*, const char*> links[] = {
        {"root", "own/loop"}, {"root/own", "an alias"},          {"real", "one"},
        {"real", "two"},      {"elsewhere/q.qmp", "linked.qmp"}, {"nowhere", "dangling.qmp"}};
    for (const auto& [to, link] : links) {
        std::filesystem::create_symlink(scratch / to, scratch / "root" / link);
    }
    PresetManager manager;
    manager.rescan(scratch / "root");
    EXPECT_THAT(namesOf(manager.folders), ElementsAre("one", "own"));
    EXPECT_THAT(flatNames(manager), ElementsAre("linked", "r", "p"));
}

TEST(PresetFolder, WhenTimeRunsOutFoldersAreListedButHoldNothing) {
    const TempFolder scratch;
    for (const char* name : {"a/1.qmp", "b/2.qmp", "c/3.qmp", "d/4.qmp", "top.qmp"}) scratch.write(name, "x");
    PresetFolder folder("", ".qmp", 0);
    const CountingTimer clock;
    PresetScan walk(clock, 3);  // the folder itself and two of the four
    folder.scan(scratch.path, walk);
    EXPECT_THAT(namesOf(folder.folders), ElementsAre("a", "b", "c", "d"));
    EXPECT_THAT(namesOf(folder.folders[1]->entries), ElementsAre("2"));
    EXPECT_THAT(namesOf(folder.folders[2]->entries), IsEmpty());
    EXPECT_THAT(namesOf(folder.folders[3]->entries), IsEmpty());
    EXPECT_TRUE(PresetFolder(scratch.path, ".qmp", 0).isEmpty());
}

TEST(PresetManager, NumbersEntriesLevelByLevelAndByBanksOf128) {
    const TempFolder scratch;
    scratch.write("_1 first/sub/last.qmp", "x");
    for (int i = 0; i < 128; ++i) scratch.write("_1 first/" + std::to_string(1000 + i) + ".qmp", "x");
    scratch.write("zero.qmp", "x");
    PresetManager manager;
    manager.rescan(scratch.path);
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
    const TempFolder scratch;
    for (const char* name : {"main/a.qmp", "main/sub/b.qmp", "old/a.qmp", "old/c.qmp"})
        scratch.write(name, "x");
    PresetManager manager;
    manager.rescan(scratch / "main");
    manager.addFolder(scratch / "old", "V1 Preset Folder");
    manager.rescan(scratch / "main");
    EXPECT_THAT(flatNames(manager), ElementsAre("a", "b", "a", "c"));
    EXPECT_EQ(manager.mainCount(), 2);
    EXPECT_EQ(manager.extraFolders()[0]->name, "V1 Preset Folder");
    EXPECT_EQ(manager.entryAt(0, 3)->label, "(0/3) c");
    EXPECT_EQ(manager.find("c", true), nullptr);
    EXPECT_EQ(manager.find("c", false), manager.entryAt(0, 3));
    EXPECT_EQ(manager.find("A", false), nullptr);

    using Direction = PresetManager::Direction;
    const auto walk = [&](const char* from, Direction direction) {
        const PresetEntry* to = manager.neighbour(scratch / from, direction);
        return to ? std::filesystem::relative(to->path, scratch.path).string() : "none";
    };
    EXPECT_EQ(walk("main/sub/b.qmp", Direction::Next), "main/a.qmp");
    EXPECT_EQ(walk("main/a.qmp", Direction::Previous), "main/sub/b.qmp");
    EXPECT_EQ(walk("main/a.qmp", Direction::Same), "main/a.qmp");
    EXPECT_EQ(walk("old/a.qmp", Direction::Previous), "main/sub/b.qmp");
    EXPECT_EQ(walk("old/c.qmp", Direction::Next), "main/a.qmp");
    EXPECT_EQ(walk("missing.qmp", Direction::Next), "none");
    manager.rescan(scratch / "missing");
    EXPECT_THAT(namesOf(manager.entries), IsEmpty());
}

// --- SetupArchive ---

constexpr std::int64_t kFolder = -1;

std::string header() {
    std::string bytes(53, '?');
    return bytes.replace(0, 8, "QS/ISB/3");
}

/// A record by the format's description.
std::string record(const std::string& name, std::int64_t size, std::int64_t second) {
    std::string bytes(68, '\0');
    bytes[0] = static_cast<char>(name.size());
    bytes.replace(1, std::min<std::size_t>(name.size(), 67), name.substr(0, 67));
    return bytes + Bytes().number(size).number(second).bytes;
}

std::string end() {
    return record("", 0, 0);
}

std::string zipped(const std::string& content) {
    uLongf size = compressBound(content.size());
    std::string out(size, '\0');
    compress(reinterpret_cast<Bytef*>(out.data()), &size, reinterpret_cast<const Bytef*>(content.data()),
             content.size());
    out.resize(size);
    return out;
}

std::string file(const std::string& name, const std::string& content) {
    const std::string packed = zipped(content);
    return record(name, static_cast<std::int64_t>(packed.size()), static_cast<std::int64_t>(content.size())) +
           packed;
}

std::string folder(const std::string& name, const std::string& content) {
    return record(name, static_cast<std::int64_t>(content.size() + 76), kFolder) + content + end();
}

std::string archive(const std::string& factory) {
    return header() + folder("ApplicationData", file("data", "d")) + folder("FactoryPresets", factory) +
           end();
}

bool extract(const std::string& bytes, const std::filesystem::path& target, bool overwrite = true) {
    return extractFolder(std::as_bytes(std::span(bytes)), "factorypresets", target, overwrite);
}

TEST(SetupArchive, OneFileThatFailsDoesNotKeepTheNextFromBeingWritten) {
    const std::string packed = zipped("content");
    const auto size = static_cast<std::int64_t>(packed.size());
    for (const std::string& fault :
         {record("no zlib", 3, 3) + "abc", record("short", size, 6) + packed,
          record("long", size, 8) + packed, record("cut", size - 3, 7) + packed.substr(0, packed.size() - 3),
          record("huge", size, 0x7FFFFFFF) + packed, file("../out", "x"), file("sub/bad", "x"),
          file("..", "x"), folder("..", file("out", "x"))}) {
        const TempFolder scratch;
        EXPECT_FALSE(
            extract(archive(fault + folder("_1 Sub", folder("Deep", file("good", "g")))), scratch / "in"));
        EXPECT_EQ(readBytes(scratch / "in/_1 Sub/Deep/good"), "g");
        EXPECT_EQ(scratch.names().size(), 1u);
        EXPECT_EQ(std::distance(std::filesystem::directory_iterator(scratch / "in"), {}), 1);
    }
}

TEST(SetupArchive, ArchivesOfAnotherKindAndCutOnesFail) {
    const TempFolder scratch;
    const std::string sound = archive(file("a.qmp", "one"));
    EXPECT_FALSE(extract("QS/ISB/4" + sound.substr(8), scratch / "x"));
    EXPECT_FALSE(extract(header() + folder("Other", "") + end(), scratch / "x"));
    EXPECT_FALSE(std::filesystem::exists(scratch / "x"));
    // The last record only ends the top level; one may do without what comes after it.
    for (std::size_t size = 0; size < sound.size() - 76; ++size) {
        ASSERT_FALSE(extract(sound.substr(0, size), scratch / "x")) << size;
    }
    std::string deep = end();
    for (int i = 0; i < 2000; ++i) deep = folder("d", deep);
    EXPECT_FALSE(extract(archive(deep), scratch.path)) << "deeper than any stack";
}

}  // namespace
}  // namespace vanta::test
