#include "plugin/presets/factory_presets.hpp"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <fstream>
#include <map>
#include <string>
#include <vector>

#include <fmt/format.h>

#include "limiter/factory/factory_archive.hpp"
#include "limiter/vanta_preset.hpp"
#include "plugin/presets/setup_archive.hpp"
#include "tests/plugin/mutations.hpp"
#include "tests/plugin/preset_bytes.hpp"
#include "tests/plugin/recording_owner.hpp"

namespace vanta {
namespace {

using test::contentOf;
using test::RecordingOwner;
using test::ScratchFolder;

struct Table {
    RecordingOwner owner;
    VantaParameters parameters{owner};
};

/// A user's preset folder as it is after the first start.
struct RestoredPresets {
    RestoredPresets() {
        registerFactoryArchive();
        manager.rescan(folder.file("presets"));
        restored = restoreFactoryPresets(manager, folder.file("data"), false);
    }
    ScratchFolder folder;
    PresetManager manager;
    bool restored = false;
};

TEST(FactoryPresets, FillAnEmptyFolder) {
    RestoredPresets presets;
    EXPECT_TRUE(presets.restored);
    EXPECT_TRUE(std::filesystem::is_empty(presets.folder.file("data")));
    std::vector<std::pair<std::string, std::size_t>> tree;
    for (const auto& folder : presets.manager.folders)
        tree.emplace_back(folder->name, folder->entries.size());
    const std::vector<std::pair<std::string, std::size_t>> expected{
        {"Basic", 10}, {"Loud", 14}, {"Moderate", 14}, {"Safe", 4}, {"Mixing", 15}};
    EXPECT_EQ(tree, expected);
    EXPECT_EQ(presets.manager.entryAt(0, 0)->name, "Default Setting");
    EXPECT_EQ(presets.manager.entryAt(0, 57)->bank, 0);
    EXPECT_EQ(presets.manager.entryAt(0, 58), nullptr);
    for (const char* name :
         {"Final Few dB", "Gentle and Musical", "General Purpose Limiting", "Set and Forget",
          "Tonally Transparent", "Loud General Purpose Limiting", "Practically Clipping", "Wide and Open",
          "Bass - Limiter 1", "Drum Bus - Squeeze", "Vocals - Natural Limiting"}) {
        EXPECT_NE(presets.manager.find(name, true), nullptr) << name;
    }
}

TEST(FactoryPresets, AreWholeAndWithinTheRangesOfTheirParameters) {
    RestoredPresets presets;
    std::vector<PresetEntry*> all;
    presets.manager.flatten(all);
    ASSERT_EQ(all.size(), 58u);
    for (const PresetEntry* entry : all) {
        EXPECT_EQ(std::filesystem::file_size(entry->path), 136u);
        Table table;
        ASSERT_TRUE(loadPresetFile(table.parameters, entry->path, LockOutputRule::Ignore)) << entry->name;
        // Saved again it is the same file: nothing was clamped or replaced.
        const auto copy = presets.folder.file("copy.qmp");
        ASSERT_TRUE(savePresetFile(table.parameters, copy));
        EXPECT_EQ(contentOf(copy), contentOf(entry->path)) << entry->name;
        EXPECT_FALSE(table.parameters.bypass.mapped()) << entry->name;
    }
}

TEST(FactoryPresets, TheBasicOnesHaveTheirPublishedValues) {
    struct Row {
        const char* name;
        float style, lookahead, attack, release, linkTransients, linkRelease, oversampling, truePeak;
    };
    const std::vector<Row> rows{
        {"Default Setting", 5, 0.18f, 0.4072f, 0.3878f, 0.375f, 0.5f, 0, 1},
        {"Transparent", 0, 0, 0.5014f, 0.4995f, 0.5f, 0.3733f, 2, 1},
        {"Punchy", 1, 0, 0.3761f, 0.4439f, 0.5f, 0.3733f, 2, 1},
        {"Dynamic", 2, 0, 0.6223f, 0.5593f, 0.425f, 0.5f, 2, 1},
        {"Allround", 3, 0, 0.4072f, 0.2797f, 0.25f, 0.5f, 2, 1},
        {"Aggressive", 4, 0, 0.4729f, 0.3316f, 0.375f, 0.475f, 2, 1},
        {"Modern", 5, 0.1725f, 0.35f, 0.3523f, 0.5f, 0.3747f, 2, 1},
        {"Modern Loud", 5, 1.4839f, 0.9457f, 0.1635f, 0.25f, 0.475f, 2, 1},
        {"Modern Alternative", 5, 4.6028f, 0.8002f, 0.3942f, 0.4963f, 0, 2, 1},
        {"Bus", 6, 0.5f, 0.1778f, 0.3878f, 0.125f, 0.5f, 0, 0},
        {"Safe", 7, 0, 0.4729f, 0.2314f, 0.475f, 0.3767f, 2, 1},
    };
    RestoredPresets presets;
    for (const Row& row : rows) {
        const PresetEntry* entry = presets.manager.find(row.name, true);
        ASSERT_NE(entry, nullptr) << row.name;
        Table table;
        ASSERT_TRUE(loadPresetFile(table.parameters, entry->path, LockOutputRule::Ignore));
        const bool isDefault = std::string(row.name) == "Default Setting";
        const bool isSafe = std::string(row.name) == "Safe";
        const std::map<int, float> expected{{0, 0.0f},
                                            {1, row.style},
                                            {2, row.lookahead},
                                            {3, row.attack},
                                            {4, row.release},
                                            {5, row.linkTransients},
                                            {6, row.linkRelease},
                                            {9, row.oversampling},
                                            {10, row.truePeak},
                                            {12, 2.0f},
                                            {18, 0.0f},
                                            {19, isDefault || isSafe ? 1.0f : 0.0f},
                                            {21, isDefault ? 0.0f : 1.0f},
                                            {22, 1.0f},
                                            {23, isDefault ? 0.0f : 1.0f},
                                            {24, isDefault ? 2.0f : 6.0f},
                                            {25, 1.0f},
                                            {28, -14.0f}};
        const std::vector<float> values = table.owner.values();
        for (const auto& [index, value] : expected) {
            EXPECT_EQ(values[static_cast<std::size_t>(index)], value) << row.name << " at " << index;
        }
    }
}

TEST(FactoryPresets, RestoringKeepsEditedOnesUnlessTold) {
    RestoredPresets presets;
    const std::string path = presets.manager.find("Punchy", true)->path;
    const std::string factory = contentOf(path);
    std::ofstream(path, std::ios::trunc) << "mine";
    std::filesystem::remove(presets.manager.find("Safe", true)->path);
    EXPECT_TRUE(restoreFactoryPresets(presets.manager, presets.folder.file("data"), false));
    EXPECT_EQ(contentOf(path), "mine");
    EXPECT_NE(presets.manager.find("Safe", true), nullptr);
    EXPECT_TRUE(restoreFactoryPresets(presets.manager, presets.folder.file("data"), true));
    EXPECT_EQ(contentOf(path), factory);
}

TEST(FactoryPresets, TheDocsShowWhatIsInThem) {
    const std::string docs = contentOf(VANTA_PRESET_DOCS);
    std::size_t rows = 0;
    for (std::size_t at = 0; (at = docs.find("\n| ", at)) != std::string::npos; ++at) ++rows;
    const std::vector<ArchivedFile> files = readFolder(factoryArchive(), "FactoryPresets");
    EXPECT_EQ(files.size(), 58u);
    EXPECT_EQ(rows, files.size() + 2 * 6);  // with the two lines above each folder's table
    for (const ArchivedFile& file : files) {
        Table table;
        ASSERT_TRUE(loadPreset(table.parameters, file.bytes, LockOutputRule::Ignore));
        const VantaParameters& p = table.parameters;
        const std::string row =
            fmt::format("\n| {} | {} | {:.0f} | {:.1f} | ", std::filesystem::path(file.path).stem().string(),
                        p.style.text(p.style.value()), p.gain.value(), p.outputLevel.value());
        EXPECT_NE(docs.find(row), std::string::npos) << row;
    }
}

TEST(VantaPreset, AProcessThatIsKilledWhileItSavesLeavesTheOldFileOrTheNew) {
    const ScratchFolder folder;
    const auto path = folder.file("p.qmp");
    const auto save = [&](float gain) {
        Table table;
        table.parameters.gain.setValue(gain, 0);
        return savePresetFile(table.parameters, path);
    };
    ASSERT_TRUE(save(1.0f));
    for (int round = 0; round < 25; ++round) {
        const pid_t child = ::fork();
        if (child == 0) {
            for (int i = 0;; ++i) save(static_cast<float>(i % 2));
        }
        ::usleep(static_cast<useconds_t>(500 + 700 * round));
        ::kill(child, SIGKILL);
        ::waitpid(child, nullptr, 0);
        Table table;
        ASSERT_EQ(std::filesystem::file_size(path), 136u);
        ASSERT_TRUE(loadPresetFile(table.parameters, path, LockOutputRule::Ignore));
        ASSERT_TRUE(table.parameters.gain.value() == 0.0f || table.parameters.gain.value() == 1.0f);
    }
}

}  // namespace
}  // namespace vanta
