#pragma once

#include <memory>
#include <string>
#include <vector>

namespace vanta {

/// One preset file.
struct PresetEntry {
    std::string path;   ///< the file
    std::string name;   ///< the file name without folder and extension
    std::string label;  ///< with its MIDI bank and program in front
    int bank = -1;      ///< -1 until numbered, as `program`
    int program = -1;
};

class PresetScan;

/// A folder of preset files and its sub-folders, as read from the disk. A folder name may begin with "_" and
/// a number, which is not shown and orders it among its sisters.
class PresetFolder {
public:
    /// Of a folder without a number: after all that have one.
    static constexpr int kUnordered = 10000;

    /// Scans. `fileExtension` with its dot; `timeBudgetMs` as in `scan`.
    PresetFolder(const std::string& folderPath, std::string fileExtension, int timeBudgetMs);
    PresetFolder(const PresetFolder&) = delete;
    PresetFolder& operator=(const PresetFolder&) = delete;
    virtual ~PresetFolder() = default;

    /// Reads the folder anew, all sub-folders included. When the budget has run out, folders are still listed
    /// but hold nothing. Names with a leading dot are skipped, the extension's case does not count, and each
    /// directory is visited once, whatever the links. What cannot be read is empty.
    void scan(const std::string& folderPath, int timeBudgetMs);
    /// The same with a clock of the caller's.
    void scan(const std::string& folderPath, PresetScan& walk);

    bool isEmpty() const { return folders.empty() && entries.empty(); }

    std::string extension;
    std::vector<std::unique_ptr<PresetFolder>> folders;  ///< by `order`, then by name
    std::string name;                                    ///< without "_" and number
    std::vector<std::unique_ptr<PresetEntry>> entries;   ///< by name
    int order = kUnordered;
    std::string path;  ///< ends with a separator

protected:
    /// Empty, not scanned.
    explicit PresetFolder(std::string fileExtension) : extension(std::move(fileExtension)) {}

private:
    void listFolders(PresetScan& walk);
    void listEntries();
};

/// Whether `a` comes before `b` in a menu: by upper-cased Unicode characters, then by bytes.
bool presetNameLess(const std::string& a, const std::string& b);

}  // namespace vanta
