#include "plugin/presets/factory_presets.hpp"

#include <gtest/gtest.h>

#include <fstream>
#include <set>
#include <string>
#include <vector>

#include <fmt/format.h>

#include "limiter/factory/factory_archive.hpp"
#include "limiter/model/vanta_preset.hpp"
#include "plugin/presets/setup_archive.hpp"
#include "tests/plugin/preset_bytes.hpp"
#include "tests/plugin/recording_owner.hpp"
#include "tests/support/temp_folder.hpp"

namespace vanta::test {
namespace {

struct Table {
    RecordingOwner owner;
    VantaParameters parameters{owner};
};

/// A user's preset folder as it is after the first start.
struct RestoredPresets {
    RestoredPresets() {
        registerFactoryArchive();
        manager.rescan(folder / "presets");
        restored = restoreFactoryPresets(manager, folder / "data", false);
    }
    TempFolder folder;
    PresetManager manager;
    bool restored = false;
};

TEST(FactoryPresets, FillAnEmptyFolder) {
    RestoredPresets presets;
    EXPECT_TRUE(presets.restored);
    EXPECT_TRUE(std::filesystem::is_empty(presets.folder / "data"));
    std::vector<PresetEntry*> all;
    presets.manager.flatten(all);
    EXPECT_EQ(all.size(), readFolder(factoryArchive(), "FactoryPresets").size());
    EXPECT_EQ(presets.manager.entryAt(0, 0)->name, "Default Setting");
}

TEST(FactoryPresets, AreWholeAndWithinTheRangesOfTheirParameters) {
    RestoredPresets presets;
    std::vector<PresetEntry*> all;
    presets.manager.flatten(all);
    for (const PresetEntry* entry : all) {
        Table table;
        ASSERT_TRUE(loadPresetFile(table.parameters, entry->path, LockOutputRule::Ignore)) << entry->name;
        // Saved again it is the same file: nothing was clamped or replaced.
        const auto copy = presets.folder / "copy.qmp";
        ASSERT_TRUE(savePresetFile(table.parameters, copy));
        EXPECT_EQ(readBytes(copy), readBytes(entry->path)) << entry->name;
        EXPECT_FALSE(table.parameters.bypass.mapped()) << entry->name;
    }
}

TEST(FactoryPresets, RestoringKeepsEditedOnesUnlessTold) {
    RestoredPresets presets;
    const std::string path = presets.manager.find("Punchy", true)->path;
    const std::string factory = readBytes(path);
    std::ofstream(path, std::ios::trunc) << "mine";
    std::filesystem::remove(presets.manager.find("Safe", true)->path);
    EXPECT_TRUE(restoreFactoryPresets(presets.manager, presets.folder / "data", false));
    EXPECT_EQ(readBytes(path), "mine");
    EXPECT_NE(presets.manager.find("Safe", true), nullptr);
    EXPECT_TRUE(restoreFactoryPresets(presets.manager, presets.folder / "data", true));
    EXPECT_EQ(readBytes(path), factory);
}

TEST(FactoryPresets, TheDocsShowWhatIsInThem) {
    const std::string docs = readBytes(VANTA_PRESET_DOCS);
    std::size_t rows = 0;
    for (std::size_t at = 0; (at = docs.find("\n| ", at)) != std::string::npos; ++at) ++rows;
    const std::vector<ArchivedFile> files = readFolder(factoryArchive(), "FactoryPresets");
    std::set<std::filesystem::path> folders;
    for (const ArchivedFile& file : files) folders.insert(std::filesystem::path(file.path).parent_path());
    EXPECT_EQ(rows, files.size() + 2 * folders.size());  // with the two lines above each folder's table
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

}  // namespace
}  // namespace vanta::test
