#pragma once

#include "plugin/presets/preset_folder.hpp"

namespace vanta {

/// Hears which preset a user has chosen.
class PresetListener {
public:
    virtual ~PresetListener() = default;
    virtual void presetChosen(const PresetEntry& entry) = 0;
};

/// The presets of a product: the root is the user's preset folder, the main part; extra folders follow it.
/// All entries in the order of `flatten` are numbered for MIDI, 128 a bank. One thread at a time.
class PresetManager final : public PresetFolder {
public:
    static constexpr int kTimeBudgetMs = 2500;
    static constexpr int kProgramsPerBank = 128;
    /// Of `neighbour`.
    enum class Direction { Previous = 0, Same = 1, Next = 2 };

    explicit PresetManager(std::string fileExtension = ".qmp");

    /// Reads the main part from the disk again and numbers all entries. Entries that others point at are
    /// gone.
    void rescan(const std::string& folderPath);
    /// Reads one more folder, to be listed after what is there, and numbers all entries. `shownName` is what
    /// menus show, or empty for the folder's own name.
    void addFolder(const std::string& folderPath, const std::string& shownName);

    /// All entries, breadth-first: the main part, then the extra folders. Sets `mainCount`.
    void flatten(std::vector<PresetEntry*>& out);
    /// Null if there is none, as from all that follow.
    PresetEntry* entryAt(int bank, int program);
    /// The first entry of this very name, of the main part or of all.
    PresetEntry* find(const std::string& entryName, bool mainOnly);
    /// The entry before or after the one with this path, around the ends; from the main part one stays in
    /// it.
    PresetEntry* neighbour(const std::string& entryPath, Direction direction);

    const std::vector<std::unique_ptr<PresetFolder>>& extraFolders() const { return extraFolders_; }
    const std::string& fileExtension() const { return extension; }
    /// How many of the flat list belong to the main part; see `flatten`.
    int mainCount() const { return mainCount_; }

private:
    void number();

    std::vector<std::unique_ptr<PresetFolder>> extraFolders_;
    int mainCount_ = 0;
};

}  // namespace vanta
