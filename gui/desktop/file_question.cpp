#include "gui/desktop/file_question.hpp"

#include <cctype>
#include <filesystem>
#include <system_error>

namespace vanta::gui {
namespace {

namespace fs = std::filesystem;

std::vector<std::string_view> split(std::string_view joined, char separator) {
    std::vector<std::string_view> parts;
    while (true) {
        const std::size_t end = joined.find(separator);
        parts.push_back(joined.substr(0, end));
        if (end == std::string_view::npos) return parts;
        joined.remove_prefix(end + 1);
    }
}

std::string_view trimmed(std::string_view text) {
    while (!text.empty() && text.front() == ' ') text.remove_prefix(1);
    while (!text.empty() && text.back() == ' ') text.remove_suffix(1);
    return text;
}

/// "*.wav" as "*.[wW][aA][vV]": files from other systems come in capitals.
std::string ignoringCase(std::string_view pattern) {
    std::string result;
    for (const char c : pattern) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte < 0x80 && std::isalpha(byte)) {
            result +=
                {'[', static_cast<char>(std::tolower(byte)), static_cast<char>(std::toupper(byte)), ']'};
        } else {
            result += c;
        }
    }
    return result;
}

}  // namespace

std::vector<FileFilter> parseFilters(std::string_view joined) {
    std::vector<FileFilter> filters;
    const std::vector<std::string_view> parts = split(joined, '|');
    for (std::size_t i = 0; i + 1 < parts.size(); i += 2) {
        FileFilter filter{std::string(trimmed(parts[i])), {}};
        for (const std::string_view part : split(parts[i + 1], ';')) {
            const std::string_view pattern = trimmed(part);
            if (!pattern.empty()) filter.patterns.push_back(pattern == "*.*" ? "*" : ignoringCase(pattern));
        }
        if (filter.patterns.empty()) continue;
        if (filter.name.empty()) filter.name = std::string(trimmed(parts[i + 1]));
        filters.push_back(std::move(filter));
    }
    return filters;
}

StartingPlace startingPlace(const std::string& path) {
    // No path has this byte, and what stands before it is not what was meant.
    if (path.empty() || path.find('\0') != std::string::npos) return {};
    std::error_code error;
    const fs::path whole = fs::absolute(path, error);
    if (error) return {};
    if (fs::is_directory(whole, error)) return {whole.string(), {}};
    StartingPlace place{{}, whole.filename().string()};
    for (fs::path folder = whole.parent_path(); !folder.empty(); folder = folder.parent_path()) {
        if (fs::is_directory(folder, error)) {
            place.folder = folder.string();
            break;
        }
        if (folder == folder.parent_path()) break;
    }
    return place;
}

std::string withExtension(const std::string& path, std::string_view extension) {
    while (!extension.empty() && extension.front() == '.') extension.remove_prefix(1);
    if (extension.empty() || fs::path(path).has_extension()) return path;
    return path + '.' + std::string(extension);
}

}  // namespace vanta::gui
