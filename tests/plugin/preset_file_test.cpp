#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <span>
#include <sstream>
#include <string>
#include <vector>

#include "foundation/resource.hpp"
#include "plugin/parameters/float_plugin_parameter.hpp"
#include "plugin/parameters/indexed_plugin_parameter.hpp"
#include "plugin/presets/custom_preset_loader.hpp"
#include "plugin/presets/parameter_file_list.hpp"
#include "tests/plugin/preset_bytes.hpp"
#include "tests/plugin/recording_owner.hpp"
#include "tests/support/temp_folder.hpp"

namespace vanta::test {
namespace {

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
         {Case{"whole", presetBytes("Test", 3, {10, 20, 30, 9}), true, {10, 20, 30, 9}},
          Case{"longer", presetBytes("Test", 3, {9, 9, 9, 9, 77, 78}), true, {9, 9, 9, 9}},
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
        EXPECT_EQ(four.owner.blocksEnded, 1) << c.what;
    }
}

TEST(PresetFile, OlderVersionsGoByTheirMap) {
    Bytes map;
    // Version 1 had B, something that is gone, and A.
    for (const int number : {1, 4, 3, 1, -1, 0, 2, 3}) map.number(number);
    static const std::string good = "PMap" + map.bytes;
    static const std::string wrong = Bytes().tag("PMap").number(1).number(4).number(1).number(9).bytes;
    static const Resource maps[] = {{"PresetMap_Test_1.qmpresetmap", std::as_bytes(std::span(good))},
                                    {"PresetMap_Test_2.qmpresetmap", std::as_bytes(std::span(wrong))}};
    addResources(maps);
    FourParameters four;
    EXPECT_FALSE(four.load(presetBytes("Test", 2, {20, 30, 40})));
    EXPECT_EQ(four.owner.values(), kUntouched);
    EXPECT_TRUE(four.load(presetBytes("Test", 1, {20, 30, 40})));
    EXPECT_EQ(four.owner.values(), (Values{40, 20, 3, 4}));
}

TEST(ParameterFileList, AnUpdateInPlaceChangesItsFourBytesAlone) {
    FourParameters four;
    TempFolder folder;
    // The file's other values differ from the parameters', so that a stray write shows.
    std::string bytes = presetBytes("Test", 3, {50, 51, 52, 3});
    const auto path = folder.write("p", bytes);
    four.c.setValue(33.0f, 0);
    const ParameterFileList list(four.owner, "Test", {&four.a, &four.b, &four.c, &four.d});
    ASSERT_TRUE(writeFile(list, path, 3, 2, 1));
    EXPECT_EQ(readBytes(path), presetBytes("Test", 3, {50, 51, 33, 3}));
    ASSERT_TRUE(writeFile(list, path, 3, 3, std::numeric_limits<int>::max()));
    EXPECT_EQ(readBytes(path), presetBytes("Test", 3, {50, 51, 33, 8}));
}

TEST(ParameterFileList, WhatIsNotExactlyItsFileIsWrittenWhole) {
    FourParameters four;
    TempFolder folder;
    const ParameterFileList list(four.owner, "Test");
    const std::string whole = presetBytes("Test", 3, kUntouched);
    for (const std::string& bytes :
         {presetBytes("Tset", 3, {1, 1, 1, 1}), presetBytes("Test", 2, {1, 1, 1, 1}),
          presetBytes("Test", 3, {1, 1, 1}), presetBytes("Test", 3, {1, 1, 1, 1, 1}), std::string("x"),
          presetBytes("Test", 3, {1, 1, 1, 1}) + "tail"}) {
        const auto path = folder.write("p", bytes);
        EXPECT_TRUE(writeFile(list, path, 3, 1, 1));
        EXPECT_EQ(readBytes(path), whole);
    }
    EXPECT_TRUE(writeFile(list, folder / "new", 3, 1, 1));
    EXPECT_EQ(readBytes(folder / "new"), whole);
}

}  // namespace
}  // namespace vanta::test
