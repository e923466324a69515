#include "plugin/parameters/indexed_parameter.hpp"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <utility>

#include "plugin/parameters/label_text.hpp"
#include "plugin/parameters/number_text.hpp"

namespace vanta {
namespace {

/// Which of `steps` equal parts of 0 to 1 a position is nearest to.
int nearestStep(float normal, int steps) {
    if (steps <= 0) return 0;
    const double position = (0.5 / steps + static_cast<double>(normal)) * steps;
    return static_cast<int>(std::clamp(position, 0.0, static_cast<double>(steps)));
}

/// A whole number at the start of a text, after blanks.
bool readInteger(std::string_view text, int* out) {
    text = skipBlanks(text);
    // from_chars takes no plus, and "+-1" is not a number.
    const bool plus = text.size() > 1 && text[0] == '+' && text[1] != '-';
    if (plus) text.remove_prefix(1);
    return std::from_chars(text.data(), text.data() + text.size(), *out).ec == std::errc();
}

}  // namespace

void IndexedParameter::setLabels(std::string_view commaSeparated) {
    ownLabels_ = splitAtCommas(commaSeparated);
    labels_ = &ownLabels_;
}

void IndexedParameter::setValueTable(std::span<const int> table, int start) {
    table_ = table;
    tableStart_ = start;
}

int IndexedParameter::mappedOf(int index) const {
    if (table_.empty()) return index;
    const int last = static_cast<int>(table_.size()) - 1;
    return table_[static_cast<std::size_t>(std::clamp(index - tableStart_, 0, last))];
}

int IndexedParameter::indexOf(int mapped) const {
    if (table_.empty()) return mapped;
    const auto found = std::find(table_.begin(), table_.end(), mapped);
    return tableStart_ + (found == table_.end() ? 0 : static_cast<int>(found - table_.begin()));
}

float IndexedParameter::normalize(float value) const {
    if (high() <= low()) return 0.0f;
    return (std::trunc(value) - minimum()) / (maximum() - minimum());
}

float IndexedParameter::denormalize(float normal) const {
    if (std::isnan(normal)) return normal;
    return static_cast<float>(nearestStep(normal, high() - low()) + low());
}

IndexedParameter::Zone IndexedParameter::zoneFor(int steps) const {
    Zone zone{low(), high(), true};
    for (std::size_t i = 0; i < zones.size(); ++i) {
        if (zones[i].second >= steps) {
            zone.high = zones[i].first;
            return zone;
        }
        zone.low = zones[i].first;
        zone.first = false;
    }
    return zone;
}

float IndexedParameter::normalizeZoned(float value, int steps) const {
    if (zones.empty()) return normalize(value);
    const Zone zone = zoneFor(steps);
    const int i = limit(value);
    if (i <= zone.low || i > zone.high) return 0.0f;
    return static_cast<float>(i - zone.low) / static_cast<float>(zone.high - zone.low);
}

bool IndexedParameter::denormalizeZoned(float normal, int steps, float* out) const {
    if (zones.empty() || std::isnan(normal))
        return AbstractPluginParameter::denormalizeZoned(normal, steps, out);
    const Zone zone = zoneFor(steps);
    const int k = nearestStep(normal, zone.high - zone.low);
    *out = static_cast<float>(k + zone.low);
    return zone.first || k > 0;
}

bool IndexedParameter::parseText(const std::string& text, float* out) const {
    auto found = std::find(labels_->begin(), labels_->end(), text);
    if (found == labels_->end()) {
        found = std::find_if(labels_->begin(), labels_->end(),
                             [&](const std::string& label) { return equalsIgnoringCase(label, text); });
    }
    int index = static_cast<int>(found - labels_->begin());
    const bool known =
        found != labels_->end() || (readInteger(text, &index) && index >= low() && index <= high());
    *out = known ? static_cast<float>(index) : value();
    return known;
}

std::string IndexedParameter::text(float value) const {
    const int index = limit(value);
    const auto position = static_cast<std::size_t>(index - low());
    return position < labels_->size() ? (*labels_)[position] : std::to_string(mappedOf(index));
}

std::string IndexedParameter::text(float value, int maxLength) const {
    return abbreviate(text(value), maxLength);
}

int IndexedParameter::zoneValue(int mapped) const {
    const auto found =
        std::find_if(zones.begin(), zones.end(), [&](const auto& zone) { return zone.second == mapped; });
    return found == zones.end() ? -1 : found->first;
}

}  // namespace vanta
