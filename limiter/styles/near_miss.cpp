#include "limiter/styles/near_miss.hpp"

#include <fmt/format.h>

#include <algorithm>
#include <numeric>
#include <vector>

namespace vanta {
namespace {

char lower(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

/// Least number of characters to insert, remove or replace (Levenshtein 1966), one row at a time.
std::size_t editDistance(std::string_view a, std::string_view b) {
    std::vector<std::size_t> row(b.size() + 1);
    std::iota(row.begin(), row.end(), std::size_t{0});
    for (std::size_t i = 1; i <= a.size(); ++i) {
        std::size_t diagonal = row[0];
        row[0] = i;
        for (std::size_t j = 1; j <= b.size(); ++j) {
            const std::size_t replaced = diagonal + (lower(a[i - 1]) == lower(b[j - 1]) ? 0 : 1);
            diagonal = row[j];
            row[j] = std::min({row[j] + 1, row[j - 1] + 1, replaced});
        }
    }
    return row.back();
}

}  // namespace

std::string nearMissHint(std::string_view name, std::span<const std::string_view> candidates) {
    std::string_view best;
    std::size_t bestDistance = 1 + std::max<std::size_t>(2, name.size() / 3);
    for (const std::string_view candidate : candidates) {
        const std::size_t distance = editDistance(name, candidate);
        if (distance < bestDistance) {
            bestDistance = distance;
            best = candidate;
        }
    }
    return best.empty() ? std::string{} : fmt::format("; did you mean \"{}\"?", best);
}

}  // namespace vanta
