#include "plugin/presets/preset_folder.hpp"

#include <glib.h>

#include <algorithm>
#include <charconv>
#include <filesystem>
#include <string_view>
#include <system_error>
#include <utility>

#include "foundation/file_enumerator.hpp"
#include "plugin/presets/preset_scan.hpp"

namespace vanta {
namespace {

constexpr std::string_view kBlank = " \t\r\n\v\f";

/// Bytes that are no UTF-8 count as characters of their own.
std::u32string upperCased(const std::string& text) {
    std::u32string upper;
    const char* end = text.data() + text.size();
    for (const char* at = text.data(); at < end;) {
        const gunichar character = g_utf8_get_char_validated(at, end - at);
        const bool isCharacter = character < static_cast<gunichar>(-2);
        const gunichar raw = static_cast<unsigned char>(*at);
        upper += static_cast<char32_t>(isCharacter ? g_unichar_toupper(character) : raw);
        at = isCharacter ? g_utf8_next_char(at) : at + 1;
    }
    return upper;
}

std::string lastComponent(const std::string& path) {
    const std::size_t end = path.find_last_not_of('/');
    if (end == std::string::npos) return {};
    const std::size_t slash = path.rfind('/', end);
    const std::size_t start = slash == std::string::npos ? 0 : slash + 1;
    return path.substr(start, end + 1 - start);
}

/// Takes "_" and number from the front of a name; the result is the number.
int takeOrder(std::string& name) {
    if (!name.starts_with('_')) return PresetFolder::kUnordered;
    name.erase(0, 1);
    const std::size_t digits = std::min(name.find_first_not_of("0123456789"), name.size());
    if (digits == 0) return 0;
    int order = 0;
    if (std::from_chars(name.data(), name.data() + digits, order).ec != std::errc{}) order = 0;
    name.erase(0, digits);
    name.erase(0, std::min(name.find_first_not_of(kBlank), name.size()));
    return order;
}

/// Sorted, without those that begin with a dot.
std::vector<std::string> listNames(const std::string& pattern, bool directories) {
    PosixFileEnumerator enumerator(pattern, directories);
    std::vector<std::string> names;
    for (std::string name; enumerator.next();) {
        enumerator.name(name);
        if (!name.starts_with('.')) names.push_back(name);
    }
    std::sort(names.begin(), names.end(), presetNameLess);
    return names;
}

bool isLink(const std::string& path) {
    std::error_code ignored;
    return std::filesystem::is_symlink(path, ignored);
}

}  // namespace

bool presetNameLess(const std::string& a, const std::string& b) {
    const int order = upperCased(a).compare(upperCased(b));
    return order != 0 ? order < 0 : a < b;
}

PresetFolder::PresetFolder(const std::string& folderPath, std::string fileExtension, int timeBudgetMs)
    : extension(std::move(fileExtension)) {
    scan(folderPath, timeBudgetMs);
}

void PresetFolder::scan(const std::string& folderPath, int timeBudgetMs) {
    const SteadyIntervalTimer timer;
    PresetScan walk(timer, timeBudgetMs);
    scan(folderPath, walk);
}

void PresetFolder::scan(const std::string& folderPath, PresetScan& walk) {
    folders.clear();
    entries.clear();
    path = folderPath.ends_with('/') || folderPath.empty() ? folderPath : folderPath + "/";
    name = lastComponent(folderPath);
    order = takeOrder(name);
    if (path.empty() || !walk.hasTime() || !walk.enter(path)) return;
    listFolders(walk);
    listEntries();
}

void PresetFolder::listFolders(PresetScan& walk) {
    std::vector<std::string> names = listNames(path + "*", true);
    // Where a link leads to a folder that also stands here in its own right, that one is shown.
    std::stable_partition(names.begin(), names.end(), [&](const auto& each) { return !isLink(path + each); });
    for (const std::string& each : names) {
        if (walk.hasEntered(path + each)) continue;
        std::unique_ptr<PresetFolder> folder(new PresetFolder(extension));
        folder->scan(path + each, walk);
        folders.push_back(std::move(folder));
    }
    std::sort(folders.begin(), folders.end(), [](const auto& a, const auto& b) {
        return a->order != b->order ? a->order < b->order : presetNameLess(a->name, b->name);
    });
}

void PresetFolder::listEntries() {
    for (const std::string& file : listNames(path + "*" + extension, false)) {
        auto entry = std::make_unique<PresetEntry>();
        entry->path = path + file;
        entry->name = file.substr(0, file.size() - extension.size());
        entries.push_back(std::move(entry));
    }
    std::sort(entries.begin(), entries.end(),
              [](const auto& a, const auto& b) { return presetNameLess(a->name, b->name); });
}

}  // namespace vanta
