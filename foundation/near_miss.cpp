#include "foundation/near_miss.hpp"

#include <fmt/format.h>

#include <algorithm>
#include <numeric>

#include "foundation/ascii.hpp"

namespace vanta {

namespace {

std::string lowered(std::string_view text) {
    std::string result(text);
    std::transform(result.begin(), result.end(), result.begin(), lowerCase);
    return result;
}

/// Insertions, deletions, replacements and swaps of neighbours that lead from `a` to `b` (optimal string
/// alignment).
std::size_t editDistance(std::string_view a, std::string_view b) {
    std::vector<std::size_t> beforeLast, last(b.size() + 1), row(b.size() + 1);
    std::iota(last.begin(), last.end(), std::size_t{0});
    for (std::size_t i = 1; i <= a.size(); ++i) {
        row[0] = i;
        for (std::size_t j = 1; j <= b.size(); ++j) {
            const std::size_t replaced = last[j - 1] + (a[i - 1] == b[j - 1] ? 0 : 1);
            row[j] = std::min({last[j] + 1, row[j - 1] + 1, replaced});
            const bool swapped = i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1];
            if (swapped) row[j] = std::min(row[j], beforeLast[j - 2] + 1);
        }
        beforeLast = last;
        last = row;
    }
    return last[b.size()];
}

}  // namespace

std::string_view nearMiss(std::string_view text, std::span<const std::string_view> names) {
    const std::string typed = lowered(text);
    if (typed.empty()) return {};
    std::size_t nearest = 1 + typed.size() / 3;
    std::string_view result;
    for (const std::string_view name : names) {
        // As many edits are needed at least as the lengths differ by.
        if (typed.size() > name.size() + nearest) continue;
        const std::string known = lowered(name);
        const bool begun = typed.size() >= 2 && known.starts_with(typed);
        const std::size_t distance = begun ? 1 : editDistance(typed, known);
        if (distance < nearest || (distance == nearest && result.empty())) {
            nearest = distance;
            result = name;
        }
    }
    return result;
}

std::string nearMissHint(std::string_view text, std::span<const std::string_view> names) {
    const std::string_view meant = nearMiss(text, names);
    return meant.empty() ? std::string() : fmt::format(": did you mean \"{}\"?", meant);
}

}  // namespace vanta
