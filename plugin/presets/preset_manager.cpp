#include "plugin/presets/preset_manager.hpp"

#include <algorithm>
#include <cstdint>
#include <deque>
#include <utility>

#include <fmt/format.h>

namespace vanta {
namespace {

/// Breadth-first.
void appendEntries(std::deque<const PresetFolder*> queue, std::vector<PresetEntry*>& out) {
    while (!queue.empty()) {
        const PresetFolder& folder = *queue.front();
        queue.pop_front();
        for (const auto& sub : folder.folders) queue.push_back(sub.get());
        for (const auto& entry : folder.entries) out.push_back(entry.get());
    }
}

}  // namespace

PresetManager::PresetManager(std::string fileExtension) : PresetFolder(std::move(fileExtension)) {}

void PresetManager::rescan(const std::string& folderPath) {
    scan(folderPath, kTimeBudgetMs);
    number();
}

void PresetManager::addFolder(const std::string& folderPath, const std::string& shownName) {
    auto folder = std::make_unique<PresetFolder>(folderPath, extension, kTimeBudgetMs);
    if (!shownName.empty()) folder->name = shownName;
    extraFolders_.push_back(std::move(folder));
    number();
}

void PresetManager::flatten(std::vector<PresetEntry*>& out) {
    out.clear();
    appendEntries({this}, out);
    mainCount_ = static_cast<int>(out.size());
    std::deque<const PresetFolder*> extras;
    for (const auto& folder : extraFolders_) extras.push_back(folder.get());
    appendEntries(std::move(extras), out);
}

void PresetManager::number() {
    std::vector<PresetEntry*> all;
    flatten(all);
    for (std::size_t i = 0; i < all.size(); ++i) {
        PresetEntry& entry = *all[i];
        entry.bank = static_cast<int>(i) / kProgramsPerBank;
        entry.program = static_cast<int>(i) % kProgramsPerBank;
        entry.label = fmt::format("({}/{}) {}", entry.bank, entry.program, entry.name);
    }
}

PresetEntry* PresetManager::entryAt(int bank, int program) {
    std::vector<PresetEntry*> all;
    flatten(all);
    const std::int64_t position = std::int64_t{bank} * kProgramsPerBank + program;
    const bool isThere = bank >= 0 && program >= 0 && position < static_cast<std::int64_t>(all.size());
    return isThere ? all[static_cast<std::size_t>(position)] : nullptr;
}

PresetEntry* PresetManager::find(const std::string& entryName, bool mainOnly) {
    std::vector<PresetEntry*> all;
    flatten(all);
    if (mainOnly) all.resize(static_cast<std::size_t>(mainCount_));
    const auto found = std::find_if(all.begin(), all.end(),
                                    [&](const PresetEntry* entry) { return entry->name == entryName; });
    return found == all.end() ? nullptr : *found;
}

PresetEntry* PresetManager::neighbour(const std::string& entryPath, Direction direction) {
    std::vector<PresetEntry*> all;
    flatten(all);
    const auto found = std::find_if(all.begin(), all.end(),
                                    [&](const PresetEntry* entry) { return entry->path == entryPath; });
    if (found == all.end()) return nullptr;
    const std::size_t count = all.size();
    const std::size_t mainPart = static_cast<std::size_t>(mainCount_);
    const auto from = static_cast<std::size_t>(found - all.begin());
    std::size_t to = (from + count + static_cast<std::size_t>(direction) - 1) % count;
    if (from < mainPart && to >= mainPart) to = direction == Direction::Next ? 0 : mainPart - 1;
    return all[to];
}

}  // namespace vanta
