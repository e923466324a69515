#include "limiter/model/vanta_preset.hpp"

#include <gtest/gtest.h>

#include <span>
#include <string>
#include <vector>

#include "tests/plugin/preset_bytes.hpp"
#include "tests/plugin/recording_owner.hpp"
#include "tests/support/temp_folder.hpp"

namespace vanta::test {
namespace {

using Values = std::vector<float>;

struct Table {
    bool load(const std::string& bytes, LockOutputRule rule = LockOutputRule::Ignore) {
        return loadPreset(parameters, std::as_bytes(std::span(bytes)), rule);
    }
    void set(const Values& values) {
        for (std::size_t i = 0; i < values.size(); ++i) {
            owner.parameterAt(static_cast<int>(i))->setValue(values[i], 0);
        }
    }

    RecordingOwner owner;
    VantaParameters parameters{owner};
};

Values defaults() {
    return Table().owner.values();
}

/// Within every range, and different from every default.
Values otherValues() {
    Table table;
    Values values = table.owner.values();
    for (std::size_t i = 0; i < values.size(); ++i) {
        const AbstractPluginParameter& parameter = *table.owner.parameterAt(static_cast<int>(i));
        values[i] = values[i] == parameter.minimum() ? parameter.maximum() : parameter.minimum();
    }
    return values;
}

TEST(VantaPreset, EveryValueSurvivesAFile) {
    TempFolder folder;
    Table table;
    for (const Values& values : {otherValues(), defaults()}) {
        table.set(values);
        ASSERT_TRUE(savePresetFile(table.parameters, folder / "p.qmp"));
        Table loaded;
        EXPECT_TRUE(loadPresetFile(loaded.parameters, folder / "p.qmp", LockOutputRule::Ignore));
        EXPECT_EQ(loaded.owner.values(), values);
    }
}

TEST(VantaPreset, Version1LacksThreeParameters) {
    Values stored = otherValues(), expected = stored;
    stored.resize(31);
    for (std::size_t i = 31; i < expected.size(); ++i) expected[i] = defaults()[i];  // came still later
    for (const int added : {16, 8, 7}) {
        stored.erase(stored.begin() + added);
        expected[static_cast<std::size_t>(added)] = 0.0f;
    }
    Table table;
    table.set(otherValues());
    EXPECT_TRUE(table.load(presetBytes("Vn2p", 1, stored)));
    EXPECT_EQ(table.owner.values(), expected);
}

/// Of the first generation, in its own order.
const Values kFirstGeneration{6, 2, 1.5f, 0.25f, 0.75f, 0.8f, 1.8f, 3, 2, 1, 1, -2, 0, 1, 4, 1, 3, 99, 0};

TEST(VantaPreset, TheFirstGenerationIsUnderstood) {
    Table table;
    auto& p = table.parameters;
    table.set(otherValues());  // of which nothing must stay
    EXPECT_TRUE(table.load(presetBytes("Vntr", 3, kFirstGeneration)));
    Values expected = defaults();
    const std::vector<std::pair<int, float>> held{{0, 6.0f},  {1, 2.0f},   {2, 1.5f},  {3, 0.25f}, {4, 0.75f},
                                                  {5, 0.4f},  {6, 0.9f},   {9, 3.0f},  {11, 2.0f}, {12, 1.0f},
                                                  {17, 1.0f}, {18, -2.0f}, {19, 0.0f}, {20, 1.0f}, {24, 4.0f},
                                                  {21, 1.0f}, {23, 3.0f},  {22, 0.0f}, {10, 0.0f}};
    for (const auto& [index, value] : held) expected[static_cast<std::size_t>(index)] = value;
    EXPECT_EQ(table.owner.values(), expected);

    // A short file leaves the links at today's default, not at half of it.
    const Values start(kFirstGeneration.begin(), kFirstGeneration.begin() + 6);
    EXPECT_TRUE(table.load(presetBytes("Vntr", 3, start)));
    EXPECT_EQ(p.channelLinkTransients.value(), 0.4f);
    EXPECT_EQ(p.channelLinkRelease.value(), 0.5f);
    // One that ends early leaves them in today's range.
    EXPECT_FALSE(table.load(presetBytes("Vntr", 3, kFirstGeneration).substr(0, 12 + 4 * 7)));
    EXPECT_EQ(p.channelLinkRelease.value(), 0.9f);
}

TEST(VantaPreset, WhatIsNoPresetChangesNothing) {
    TempFolder folder;
    Table table;
    table.parameters.unityGain.setMapped(true);
    const Values before = table.owner.values();
    table.owner.changes.clear();
    for (const std::string& bytes :
         {std::string(), presetBytes("Vn2p", kPresetVersion + 1, otherValues()),
          presetBytes("Vntr", 2, kFirstGeneration), presetBytes("Vn1p", 2, otherValues()),
          presetBytes("Vn2p", 0, otherValues())}) {
        EXPECT_FALSE(table.load(bytes));
        EXPECT_EQ(table.owner.values(), before);
    }
    EXPECT_FALSE(loadPresetFile(table.parameters, folder / "missing", LockOutputRule::Ignore));
    EXPECT_FALSE(loadPresetFile(table.parameters, folder.path, LockOutputRule::Honour));
    EXPECT_TRUE(table.owner.changes.empty());
}

TEST(VantaPreset, LockOutputKeepsTheLevels) {
    const std::string preset = presetBytes("Vn2p", kPresetVersion, otherValues());
    Table table;
    ASSERT_TRUE(table.parameters.lockOutput.mapped());
    EXPECT_TRUE(table.load(preset, LockOutputRule::Honour));
    Values expected = otherValues();
    for (const std::size_t kept : {0u, 18u, 9u, 11u, 12u, 10u, 15u, 13u}) expected[kept] = defaults()[kept];
    EXPECT_EQ(table.owner.values(), expected);

    EXPECT_FALSE(table.parameters.lockOutput.mapped()) << "the file has unlocked it";
    EXPECT_TRUE(table.load(preset, LockOutputRule::Honour));
    EXPECT_EQ(table.owner.values(), otherValues());
}

}  // namespace
}  // namespace vanta::test
