#include "plugin/parameters/label_text.hpp"

#include <algorithm>
#include <span>

#include "plugin/parameters/number_text.hpp"

namespace vanta {
namespace {

constexpr Replacement kQualifiers[] = {{"High ", "Hi"}, {"Low ", "Lo"}};
constexpr Replacement kShapes[] = {{"HiPass", "HP"},  {"HiShelf", "HS"}, {"HiCut", "HC"},   {"LoPass", "LP"},
                                   {"LoShelf", "LS"}, {"LoCut", "LC"},   {"BandPass", "BP"}};
constexpr Replacement kWords[] = {{"Frequency", "Freq"},
                                  {"Threshold", "Thresh"},
                                  {"Release", "Rel"},
                                  {"Attack", "Att"},
                                  {"Crossover", "Cross"}};
constexpr std::span<const Replacement> kStages[] = {kQualifiers, kShapes, kWords};

bool isDigitOrCapital(char c) {
    return isDigit(c) || (c >= 'A' && c <= 'Z');
}

/// "Short Term" becomes "S" and "Term".
struct Initials {
    /// Of every word but the last: the first character, with the digits and capitals directly after it.
    std::string reduced;
    std::string last;

    std::size_t size() const { return reduced.size() + last.size(); }
};

Initials initialsOf(const std::string& text) {
    Initials result;
    const std::size_t lastBlank = text.rfind(' ');
    const std::size_t lastWord = lastBlank == std::string::npos ? 0 : lastBlank + 1;
    bool keeps = false;
    for (std::size_t i = 0; i < lastWord; ++i) {
        const bool first = text[i] != ' ' && (i == 0 || text[i - 1] == ' ');
        keeps = text[i] != ' ' && (first || (keeps && isDigitOrCapital(text[i])));
        if (keeps) result.reduced += text[i];
    }
    result.last = text.substr(lastWord);
    return result;
}

/// A letter before a number says less than the number.
void dropLetterBeforeDigit(Initials& text) {
    const std::string all = text.reduced + text.last;
    if (all.size() <= 2 || isDigit(all[0]) || !isDigit(all[1])) return;
    (text.reduced.empty() ? text.last : text.reduced).erase(0, 1);
}

std::string withoutVowels(const Initials& text, std::size_t maxLength) {
    std::string result = text.reduced;
    for (const char c : text.last) {
        if (result.size() >= maxLength) break;
        if (std::string_view("eyuioa()-").find(c) == std::string_view::npos) result += c;
    }
    return result;
}

}  // namespace

std::vector<std::string> splitAtCommas(std::string_view text) {
    std::vector<std::string> parts;
    for (;;) {
        const std::size_t comma = text.find(',');
        parts.emplace_back(text.substr(0, comma));
        if (comma == std::string_view::npos) return parts;
        text.remove_prefix(comma + 1);
    }
}

void replaceAll(std::string& text, const Replacement& replacement) {
    const auto [what, by] = replacement;
    for (std::size_t at = text.find(what); at != std::string::npos; at = text.find(what, at + by.size())) {
        text.replace(at, what.size(), by);
    }
}

std::string abbreviate(std::string text, int maxLength) {
    if (maxLength <= 0) return text;
    const auto limit = static_cast<std::size_t>(maxLength);
    for (const auto& stage : kStages) {
        if (text.size() <= limit) return text;
        for (const Replacement& replacement : stage) replaceAll(text, replacement);
    }
    if (text.size() <= limit) return text;
    Initials initials = initialsOf(text);
    if (initials.size() > limit) dropLetterBeforeDigit(initials);
    text = initials.size() > limit ? withoutVowels(initials, limit) : initials.reduced + initials.last;
    return text.substr(0, limit);
}

}  // namespace vanta
