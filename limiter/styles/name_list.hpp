#pragma once

#include <array>
#include <cstddef>
#include <string_view>

namespace vanta {

// Names in one text, separated by commas.

/// The first name, and in `rest` what follows it.
constexpr std::string_view takeName(std::string_view& rest) {
    // Not find: where g++ looks for undefined behaviour, it takes no pointer into a text for a constant.
    std::size_t comma = 0;
    while (comma < rest.size() && rest[comma] != ',') ++comma;
    const std::string_view name = rest.substr(0, comma);
    rest = comma < rest.size() ? rest.substr(comma + 1) : std::string_view{};
    return name;
}

/// Position of a name, -1 for none.
constexpr int listPosition(std::string_view names, std::string_view name) {
    for (int position = 0; !names.empty(); ++position) {
        if (takeName(names) == name) return position;
    }
    return -1;
}

/// The names of the rows of a table, separated by commas.
template <const auto& rows>
struct NamesOf {
    static constexpr std::size_t kSize = [] {
        std::size_t size = rows.size() - 1;
        for (const auto& row : rows) size += row.name.size();
        return size;
    }();
    static constexpr std::array<char, kSize> kText = [] {
        std::array<char, kSize> text{};
        std::size_t end = 0;
        for (const auto& row : rows) {
            if (end > 0) text[end++] = ',';
            for (const char c : row.name) text[end++] = c;
        }
        return text;
    }();
    static constexpr std::string_view value{kText.data(), kText.size()};
};

}  // namespace vanta
