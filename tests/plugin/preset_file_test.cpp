#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include <csignal>

#include <cmath>
#include <limits>
#include <random>
#include <span>
#include <sstream>
#include <string>
#include <vector>

#include "foundation/resource.hpp"
#include "plugin/parameters/float_plugin_parameter.hpp"
#include "plugin/parameters/indexed_plugin_parameter.hpp"
#include "plugin/presets/custom_preset_loader.hpp"
#include "plugin/presets/parameter_file_list.hpp"
#include "plugin/presets/preset_map.hpp"
#include "plugin/presets/preset_preloader.hpp"
#include "tests/plugin/preset_bytes.hpp"
#include "tests/plugin/recording_owner.hpp"

namespace vanta {
namespace {

using test::Bytes;
using test::contentOf;
using test::presetBytes;
using test::RecordingOwner;
using test::ScratchFolder;

constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
constexpr float kInf = std::numeric_limits<float>::infinity();

/// Four parameters with the defaults 1, 2, 3, 4 and values 5, 6, 7, 8.
struct FourParameters {
    FourParameters() {
        float initial = 1.0f;
        for (FloatPluginParameter* parameter : {&a, &b, &c}) parameter->setRange(0.0f, 100.0f, initial++);
        d.setRange(0, 10, 4);
        float value = 5.0f;
        for (int i = 0; i < owner.parameterCount(); ++i) owner.parameterAt(i)->setValue(value++, 0);
        owner.changes.clear();
    }

    bool load(const std::string& bytes, int requiredVersion = kAnyVersion) {
        std::istringstream stream(bytes);
        BinaryDataReader reader(stream);
        CustomPresetLoader loader(owner, "Test", 3);
        return readPreset(loader, reader, requiredVersion);
    }

    RecordingOwner owner;
    FloatPluginParameter a{owner, "A"};
    FloatPluginParameter b{owner, "B"};
    FloatPluginParameter c{owner, "C"};
    IndexedPluginParameter<int> d{owner, "D"};
};

using Values = std::vector<float>;
const Values kUntouched{5, 6, 7, 8};

TEST(PresetFile, LoadsInOneChangeBlock) {
    FourParameters four;
    EXPECT_TRUE(four.load(presetBytes("Test", 3, {10, 20, 30, 9})));
    EXPECT_EQ(four.owner.values(), (Values{10, 20, 30, 9}));
    EXPECT_EQ(four.owner.blocksEnded, 1);
    EXPECT_EQ(four.owner.depth, 0);
}

TEST(PresetFile, OtherPlugInsAndVersionsChangeNothing) {
    for (const std::string& bytes :
         {std::string(), std::string("Te"), presetBytes("Tset", 3, {1, 1, 1, 1}),
          presetBytes("Test", 4, {1, 1, 1, 1}), presetBytes("Test", 0, {1, 1, 1, 1}),
          presetBytes("Test", -1, {1, 1, 1, 1}), presetBytes("Test", 2, {1, 1, 1, 1}),
          Bytes().tag("Test").number(3).bytes}) {
        FourParameters four;
        EXPECT_FALSE(four.load(bytes));
        EXPECT_EQ(four.owner.values(), kUntouched);
        EXPECT_TRUE(four.owner.changes.empty());
    }
    FourParameters four;
    EXPECT_FALSE(four.load(presetBytes("Test", 3, {1, 1, 1, 1}), 2));
    EXPECT_EQ(four.owner.values(), kUntouched);
}

TEST(PresetFile, TakesShortLongAndDamagedRecords) {
    struct Case {
        std::string what, bytes;
        bool loaded;
        Values values;
    };
    const auto head = [](std::int64_t count) { return Bytes().tag("Test").number(3).number(count); };
    for (const Case& c :
         {Case{"longer", presetBytes("Test", 3, {9, 9, 9, 9, 77, 78}), true, {9, 9, 9, 9}},
          Case{"shorter", presetBytes("Test", 3, {9, 9}), true, {9, 9, 3, 4}},
          Case{"empty", head(0).bytes, true, {1, 2, 3, 4}},
          Case{"negative count", head(-7).bytes, true, {1, 2, 3, 4}},
          Case{"cut in a value", head(4).reals({9, 9}).bytes + "ab", false, {9, 9, 7, 8}},
          Case{"huge count", head(0x7FFFFFFF).reals({9}).bytes, false, {9, 6, 7, 8}},
          Case{"no numbers", head(4).reals({kNaN, kInf, -kInf, kNaN}).bytes, true, {1, 2, 3, 4}},
          Case{"out of range", head(4).reals({1e30f, -5, 9, 1e30f}).bytes, true, {100, 0, 9, 10}}}) {
        FourParameters four;
        EXPECT_EQ(four.load(c.bytes), c.loaded) << c.what;
        EXPECT_EQ(four.owner.values(), c.values) << c.what;
        EXPECT_EQ(four.owner.depth, 0) << c.what;
    }
}

TEST(PresetFile, RandomBytesNeverLeaveTheRange) {
    std::mt19937 random(20240607);
    for (int i = 0; i < 4000; ++i) {
        std::string bytes = presetBytes("Test", 3, {1, 2, 3, 4});
        bytes.resize(random() % 40);
        for (std::size_t at = 8; at < bytes.size(); ++at) bytes[at] = static_cast<char>(random());
        FourParameters four;
        four.load(bytes);
        for (int p = 0; p < 4; ++p) {
            const AbstractPluginParameter& parameter = *four.owner.parameterAt(p);
            ASSERT_TRUE(parameter.value() >= parameter.minimum() && parameter.value() <= parameter.maximum());
        }
    }
}

/// Version 1 had B, something that is gone, and A.
std::string mapBytes() {
    return Bytes()
        .tag("PMap")
        .number(1)
        .number(4)
        .number(3)
        .number(1)
        .number(-1)
        .number(0)
        .number(2)
        .number(3)
        .bytes;
}

TEST(PresetFile, OlderVersionsGoByTheirMap) {
    static const std::string good = mapBytes();
    static const std::string wrong = Bytes().tag("PMap").number(1).number(4).number(1).number(9).bytes;
    const auto asBytes = [](const std::string& text) { return std::as_bytes(std::span(text)); };
    static const Resource maps[] = {{"PresetMap_Test_1.qmpresetmap", asBytes(good)},
                                    {"PresetMap_Test_2.qmpresetmap", asBytes(wrong)}};
    addResources(maps);

    FourParameters four;
    EXPECT_TRUE(four.load(presetBytes("Test", 1, {20, 30, 40})));
    EXPECT_EQ(four.owner.values(), (Values{40, 20, 3, 4}));
    FourParameters untouched;
    EXPECT_FALSE(untouched.load(presetBytes("Test", 2, {20, 30, 40})));
    EXPECT_EQ(untouched.owner.values(), kUntouched);

    CustomPresetLoader loader(four.owner, "Test", 3);
    EXPECT_TRUE(loader.acceptVersion(1));
    EXPECT_EQ(loader.parameterCount(), 3);
    EXPECT_FALSE(loader.acceptVersion(2));
    EXPECT_TRUE(loader.acceptVersion(1));
    EXPECT_EQ(loader.parameterCount(), 3);
    EXPECT_TRUE(loader.acceptVersion(3));
    EXPECT_EQ(loader.parameterCount(), 4);
}

TEST(PresetMap, RefusesWhatDoesNotAddUp) {
    const auto read = [](const std::string& bytes) {
        std::istringstream stream(bytes);
        BinaryDataReader reader(stream);
        return readPresetMap(reader);
    };
    const auto map = read(mapBytes());
    ASSERT_TRUE(map);
    EXPECT_EQ(map->oldToNew, (std::vector<int>{1, -1, 0}));
    EXPECT_EQ(map->added, (std::vector<int>{2, 3}));
    EXPECT_TRUE(map->fits(4));
    EXPECT_FALSE(map->fits(5));
    EXPECT_FALSE(map->fits(3));
    EXPECT_FALSE((PresetMap{{0, 7}, {}}.fits(2)));
    EXPECT_FALSE((PresetMap{{0, -2}, {}}.fits(2)));
    const auto head = [](std::int64_t version, std::int64_t newCount, std::int64_t oldCount) {
        return Bytes().tag("PMap").number(version).number(newCount).number(oldCount);
    };
    EXPECT_FALSE(read("PMa"));
    EXPECT_FALSE(read(head(2, 1, 1).number(0).bytes));
    EXPECT_FALSE(read(head(1, 1, 0).bytes));
    EXPECT_FALSE(read(head(1, 0, 1).number(0).bytes));
    EXPECT_FALSE(read(head(1, 0x7FFFFFFF, 0x7FFFFFFF).number(0).bytes));
    EXPECT_FALSE(read(head(1, 0x7FFFFFFF, 1).number(0).bytes));
    EXPECT_TRUE(read(head(1, 1, 2).number(0).number(0).bytes)->added.empty());
}

TEST(PresetPreloader, FillsAnArrayAndLeavesTheParametersAlone) {
    FourParameters four;
    std::vector<float> values(4, 55.0f);
    std::istringstream stream(presetBytes("Test", 19, {7.5f, kNaN}));
    BinaryDataReader reader(stream);
    PresetPreloader loader(four.owner, "Test", values);
    EXPECT_TRUE(readPreset(loader, reader, 19));
    EXPECT_EQ(values, (Values{7.5f, 2, 3, 4}));
    EXPECT_EQ(four.owner.values(), kUntouched);
    EXPECT_EQ(four.owner.blocksEnded, 0);
}

TEST(ParameterFileList, WritesTheRecordAsItIsDescribed) {
    FourParameters four;
    ScratchFolder folder;
    const ParameterFileList list(four.owner, "Test");
    ASSERT_TRUE(writeFile(list, folder.file("p"), 3));
    EXPECT_EQ(contentOf(folder.file("p")), presetBytes("Test", 3, kUntouched));
    EXPECT_EQ(folder.fileCount(), 1u);
    for (FloatPluginParameter* parameter : {&four.a, &four.b, &four.c}) parameter->setValue(0.0f, 0);
    EXPECT_TRUE(loadCollection(list, folder.file("p"), 3));
    EXPECT_EQ(four.owner.values(), kUntouched);
    EXPECT_FALSE(loadCollection(list, folder.file("p"), 2));
    EXPECT_FALSE(loadCollection(list, folder.file("missing"), 3));
    EXPECT_FALSE(loadCollection(list, folder.path(), 3));
}

TEST(ParameterFileList, AnUpdateInPlaceChangesItsFourBytesAlone) {
    FourParameters four;
    ScratchFolder folder;
    // The file's other values differ from the parameters', so that a stray write shows.
    std::string bytes = presetBytes("Test", 3, {50, 51, 52, 3});
    const auto path = folder.write("p", bytes);
    four.c.setValue(33.0f, 0);
    const ParameterFileList list(four.owner, "Test", {&four.a, &four.b, &four.c, &four.d});
    ASSERT_TRUE(writeFile(list, path, 3, 2, 1));
    EXPECT_EQ(contentOf(path), presetBytes("Test", 3, {50, 51, 33, 3}));
    ASSERT_TRUE(writeFile(list, path, 3, 3, std::numeric_limits<int>::max()));
    EXPECT_EQ(contentOf(path), presetBytes("Test", 3, {50, 51, 33, 8}));
}

TEST(ParameterFileList, WhatIsNotExactlyItsFileIsWrittenWhole) {
    FourParameters four;
    ScratchFolder folder;
    const ParameterFileList list(four.owner, "Test");
    const std::string whole = presetBytes("Test", 3, kUntouched);
    for (const std::string& bytes :
         {presetBytes("Tset", 3, {1, 1, 1, 1}), presetBytes("Test", 2, {1, 1, 1, 1}),
          presetBytes("Test", 3, {1, 1, 1}), presetBytes("Test", 3, {1, 1, 1, 1, 1}), std::string("x"),
          presetBytes("Test", 3, {1, 1, 1, 1}) + "tail"}) {
        const auto path = folder.write("p", bytes);
        EXPECT_TRUE(writeFile(list, path, 3, 1, 1));
        EXPECT_EQ(contentOf(path), whole);
    }
    EXPECT_TRUE(writeFile(list, folder.file("new"), 3, 1, 1));
    EXPECT_EQ(contentOf(folder.file("new")), whole);

    std::stringstream foreign(presetBytes("Tset", 3, {1, 1, 1, 1}));
    const std::string before = foreign.str();
    BinaryDataWriter writer(foreign);
    EXPECT_FALSE(writeValues(list, writer, 3, 1, 1));
    EXPECT_EQ(foreign.str(), before);
    std::ostringstream unreadable;
    BinaryDataWriter blind(unreadable);
    EXPECT_FALSE(writeValues(list, blind, 3, 1, 1));
}

TEST(ParameterFileList, AFailedWriteLeavesTheOldFileAndNothingElse) {
    FourParameters four;
    ScratchFolder folder;
    const ParameterFileList list(four.owner, "Test");
    EXPECT_FALSE(writeFile(list, folder.file("missing") / "p", 3));
    std::filesystem::create_directory(folder.file("directory"));
    EXPECT_FALSE(writeFile(list, folder.file("directory"), 3));
    EXPECT_EQ(folder.fileCount(), 1u);

    const auto target = folder.write("target", presetBytes("Test", 3, {1, 1, 1, 1}));
    std::filesystem::create_symlink(target, folder.file("link"));
    std::filesystem::permissions(target,
                                 std::filesystem::perms::owner_read | std::filesystem::perms::owner_write);
    ASSERT_TRUE(writeFile(list, folder.file("link"), 3));
    EXPECT_TRUE(std::filesystem::is_symlink(folder.file("link")));
    EXPECT_EQ(contentOf(target), presetBytes("Test", 3, kUntouched));
    EXPECT_EQ(std::filesystem::status(target).permissions(),
              std::filesystem::perms::owner_read | std::filesystem::perms::owner_write);
}

TEST(ParameterFileList, AFullDiskLeavesTheOldFile) {
    FourParameters four;
    ScratchFolder folder;
    const ParameterFileList list(four.owner, "Test");
    const auto path = folder.write("p", "old");
    // A limit on the size of files fails a write just as a disk without room does.
    rlimit before{};
    ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &before), 0);
    const auto handler = std::signal(SIGXFSZ, SIG_IGN);
    const rlimit tight{10, before.rlim_max};
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &tight), 0);
    const bool written = writeFile(list, path, 3);
    setrlimit(RLIMIT_FSIZE, &before);
    std::signal(SIGXFSZ, handler);
    EXPECT_FALSE(written);
    EXPECT_EQ(contentOf(path), "old");
    EXPECT_EQ(folder.fileCount(), 1u);
}

TEST(ParameterFileList, NeverReplacesWhatIsNoRegularFile) {
    FourParameters four;
    ScratchFolder folder;
    const ParameterFileList list(four.owner, "Test");
    const auto pipe = folder.file("pipe");
    ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
    std::filesystem::create_symlink(pipe, folder.file("link"));
    for (const char* name : {"pipe", "link"}) EXPECT_FALSE(writeFile(list, folder.file(name), 3));
    EXPECT_TRUE(std::filesystem::is_fifo(pipe));
    EXPECT_EQ(folder.fileCount(), 2u);
}

}  // namespace
}  // namespace vanta
