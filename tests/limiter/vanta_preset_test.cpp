#include "limiter/vanta_preset.hpp"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/plugin/preset_bytes.hpp"
#include "tests/plugin/recording_owner.hpp"

namespace vanta {
namespace {

using test::presetBytes;
using test::RecordingOwner;
using test::ScratchFolder;

using Values = std::vector<float>;

struct Table {
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
    ScratchFolder folder;
    Table table;
    for (const Values& values : {otherValues(), defaults()}) {
        for (int i = 0; i < VantaParameters::kParameterCount; ++i) {
            table.owner.parameterAt(i)->setValue(values[static_cast<std::size_t>(i)], 0);
        }
        ASSERT_TRUE(savePresetFile(table.parameters, folder.file("p.qmp")));
        EXPECT_EQ(std::filesystem::file_size(folder.file("p.qmp")), 136u);
        Table loaded;
        EXPECT_TRUE(loadPresetFile(loaded.parameters, folder.file("p.qmp"), LockOutputRule::Ignore));
        EXPECT_EQ(loaded.owner.values(), values);
        EXPECT_EQ(loaded.owner.depth, 0);
    }
}

TEST(VantaPreset, LongerAndShorterFilesLoadWhatTheyShould) {
    ScratchFolder folder;
    Values longer = otherValues();
    longer.resize(40, 3.0f);
    Table table;
    EXPECT_TRUE(loadPresetFile(table.parameters, folder.write("long", presetBytes("Vn2p", 2, longer)),
                               LockOutputRule::Ignore));
    EXPECT_EQ(table.owner.values(), otherValues());

    Values shorter = otherValues();
    shorter.resize(10);
    EXPECT_TRUE(loadPresetFile(table.parameters, folder.write("short", presetBytes("Vn2p", 2, shorter)),
                               LockOutputRule::Ignore));
    Values expected = defaults();
    std::copy(shorter.begin(), shorter.end(), expected.begin());
    EXPECT_EQ(table.owner.values(), expected);
}

TEST(VantaPreset, Version1LacksThreeParameters) {
    ScratchFolder folder;
    Values stored;
    const Values values = otherValues();
    for (std::size_t i = 0; i < values.size(); ++i) {
        if (i != 7 && i != 8 && i != 16) stored.push_back(values[i]);
    }
    ASSERT_EQ(stored.size(), 28u);
    Table table;
    for (auto* parameter : {&table.parameters.channelLinkCenter, &table.parameters.auditionLimiting}) {
        parameter->setMapped(true);
    }
    EXPECT_TRUE(loadPresetFile(table.parameters, folder.write("p", presetBytes("Vn2p", 1, stored)),
                               LockOutputRule::Ignore));
    Values expected = values;
    for (const std::size_t added : {7u, 8u, 16u}) expected[added] = 0.0f;
    EXPECT_EQ(table.owner.values(), expected);
}

/// Of the first generation, in its own order.
const Values kFirstGeneration{6, 2, 1.5f, 0.25f, 0.75f, 0.8f, 1.8f, 3, 2, 1, 1, -2, 0, 1, 4, 1, 3, 99, 0};

TEST(VantaPreset, TheFirstGenerationIsUnderstood) {
    ScratchFolder folder;
    Table table;
    auto& p = table.parameters;
    for (auto* parameter : {&p.filterDcOffset, &p.sideChainTriggering, &p.unityGain, &p.channelLinkLfe}) {
        parameter->setMapped(true);
    }
    EXPECT_TRUE(loadPresetFile(p, folder.write("p", presetBytes("Vntr", 3, kFirstGeneration)),
                               LockOutputRule::Ignore));
    Values expected = defaults();
    const std::vector<std::pair<int, float>> held{{0, 6.0f},  {1, 2.0f},   {2, 1.5f},  {3, 0.25f}, {4, 0.75f},
                                                  {5, 0.4f},  {6, 0.9f},   {9, 3.0f},  {11, 2.0f}, {12, 1.0f},
                                                  {17, 1.0f}, {18, -2.0f}, {19, 0.0f}, {20, 1.0f}, {24, 4.0f},
                                                  {21, 1.0f}, {23, 3.0f},  {22, 0.0f}, {10, 0.0f}};
    for (const auto& [index, value] : held) expected[static_cast<std::size_t>(index)] = value;
    EXPECT_EQ(table.owner.values(), expected);

    // A short file leaves the links at today's default, not at half of it.
    const Values start(kFirstGeneration.begin(), kFirstGeneration.begin() + 6);
    EXPECT_TRUE(loadPresetFile(p, folder.write("p", presetBytes("Vntr", 3, start)), LockOutputRule::Ignore));
    EXPECT_EQ(p.channelLinkTransients.value(), 0.4f);
    EXPECT_EQ(p.channelLinkRelease.value(), 0.5f);
}

TEST(VantaPreset, WhatIsNoPresetChangesNothing) {
    ScratchFolder folder;
    Table table;
    table.parameters.unityGain.setMapped(true);
    const Values before = table.owner.values();
    table.owner.changes.clear();
    for (const std::string& bytes :
         {std::string(), presetBytes("Vn2p", 3, otherValues()), presetBytes("Vntr", 2, kFirstGeneration),
          presetBytes("Vn1p", 2, otherValues()), presetBytes("Vn2p", 0, otherValues())}) {
        EXPECT_FALSE(loadPresetFile(table.parameters, folder.write("p", bytes), LockOutputRule::Ignore));
        EXPECT_EQ(table.owner.values(), before);
    }
    EXPECT_FALSE(loadPresetFile(table.parameters, folder.file("missing"), LockOutputRule::Ignore));
    EXPECT_FALSE(loadPresetFile(table.parameters, folder.path(), LockOutputRule::Honour));
    EXPECT_TRUE(table.owner.changes.empty());
}

TEST(VantaPreset, ATruncatedFileAppliesWhatItHeldAndFails) {
    ScratchFolder folder;
    const std::string whole = presetBytes("Vn2p", 2, otherValues());
    for (const std::size_t held : {0u, 1u, 5u, 30u}) {
        Table table;
        Values expected = defaults();
        for (std::size_t i = 0; i < held; ++i) expected[i] = otherValues()[i];
        EXPECT_FALSE(loadPresetFile(table.parameters, folder.write("p", whole.substr(0, 12 + 4 * held + 3)),
                                    LockOutputRule::Ignore));
        EXPECT_EQ(table.owner.values(), expected) << held;
    }
    const std::string old = presetBytes("Vntr", 3, kFirstGeneration);
    Table table;
    EXPECT_FALSE(loadPresetFile(table.parameters, folder.write("p", old.substr(0, 12 + 4 * 7)),
                                LockOutputRule::Ignore));
    EXPECT_EQ(table.parameters.channelLinkRelease.value(), 0.9f) << "in today's range all the same";
}

TEST(VantaPreset, LockOutputKeepsTheLevels) {
    ScratchFolder folder;
    const auto path = folder.write("p", presetBytes("Vn2p", 2, otherValues()));
    Table table;
    ASSERT_TRUE(table.parameters.lockOutput.mapped());
    EXPECT_TRUE(loadPresetFile(table.parameters, path, LockOutputRule::Honour));
    Values expected = otherValues();
    for (const std::size_t kept : {0u, 18u, 9u, 11u, 12u, 10u, 15u, 13u}) expected[kept] = defaults()[kept];
    EXPECT_EQ(table.owner.values(), expected);

    EXPECT_FALSE(table.parameters.lockOutput.mapped()) << "the file has unlocked it";
    EXPECT_TRUE(loadPresetFile(table.parameters, path, LockOutputRule::Honour));
    EXPECT_EQ(table.owner.values(), otherValues());
}

}  // namespace
}  // namespace vanta
