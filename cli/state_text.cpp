#include "cli/state_text.hpp"

#include <fmt/format.h>

#include <algorithm>
#include <nlohmann/json.hpp>
#include <vector>

#include "host/offline/limiter_settings.hpp"

namespace vanta {

namespace {

using Json = nlohmann::ordered_json;

constexpr std::size_t kNameWidth = 36;
constexpr std::size_t kGap = 2;

/// What one compare slot holds, or the instance while the slots are not in use.
struct Shown {
    std::string slot;  ///< empty while the slots are not in use
    PresetState::Values preset;
    std::vector<float> values;
    std::vector<std::string> texts;
};

/// In the words of a table that has all of the values: those of one may depend on another.
std::vector<std::string> textsOf(const std::vector<float>& values) {
    LimiterSettings table;
    for (std::size_t i = 0; i < values.size(); ++i)
        table.parameterAt(static_cast<int>(i))->setValue(values[i], 0);
    std::vector<std::string> texts;
    for (std::size_t i = 0; i < values.size(); ++i)
        texts.push_back(table.parameterAt(static_cast<int>(i))->text(values[i]));
    return texts;
}

std::vector<Shown> shownOf(SessionInstance& instance, const CompareStates::Contents& compare) {
    if (!compare.initialized) {
        const std::vector<float> values = instance.parameterValues();
        return {{{}, instance.presetState().values(), values, textsOf(values)}};
    }
    std::vector<Shown> shown;
    for (std::size_t i = 0; i < compare.slots.size(); ++i) {
        const State& slot = compare.slots[i];
        shown.push_back({i == 0 ? "A" : "B", slot.preset, slot.values, textsOf(slot.values)});
    }
    return shown;
}

std::string presetText(const PresetState::Values& preset) {
    if (preset.name.empty()) return "none";
    return preset.name + (preset.modified ? " (modified)" : "");
}

/// A line of the table a row, the last column as long as it needs.
std::string table(const std::vector<std::vector<std::string>>& rows) {
    std::vector<std::size_t> widths(rows.front().size(), 0);
    for (const auto& row : rows)
        for (std::size_t i = 0; i < row.size(); ++i) widths[i] = std::max(widths[i], row[i].size() + kGap);
    widths.front() = std::max(widths.front(), kNameWidth);
    std::string text;
    for (const auto& row : rows) {
        for (std::size_t i = 0; i + 1 < row.size(); ++i) text += fmt::format("{:<{}}", row[i], widths[i]);
        text += row.back() + "\n";
    }
    return text;
}

Json presetObject(const PresetState::Values& preset) {
    Json object;
    object["name"] = preset.name;
    object["modified"] = preset.modified;
    return object;
}

Json valueObjects(const SessionInstance& instance, const std::vector<float>& values,
                  const std::vector<std::string>& texts) {
    Json object = Json::object();
    for (std::size_t i = 0; i < values.size(); ++i) {
        Json& value = object[instance.parameterAt(static_cast<int>(i))->name()];
        value["value"] = values[i];
        value["text"] = texts[i];
    }
    return object;
}

}  // namespace

std::string stateText(SessionInstance& instance) {
    const CompareStates::Contents compare = instance.compareStates().contents();
    const std::vector<Shown> shown = shownOf(instance, compare);
    std::vector<std::vector<std::string>> rows(1, {"Preset"});
    for (const Shown& each : shown) rows[0].push_back(presetText(each.preset));
    for (int i = 0; i < instance.parameterCount(); ++i) {
        auto& row = rows.emplace_back(1, instance.parameterAt(i)->name());
        for (const Shown& each : shown) row.push_back(each.texts[static_cast<std::size_t>(i)]);
    }
    if (compare.initialized) {
        auto& row = *rows.insert(rows.begin(), {"Compare"});
        for (std::size_t i = 0; i < shown.size(); ++i) {
            const bool current = static_cast<int>(i) == compare.current;
            row.push_back(shown[i].slot + (current ? " (current)" : ""));
        }
    }
    return table(rows);
}

std::string stateJson(SessionInstance& instance) {
    const CompareStates::Contents compare = instance.compareStates().contents();
    const std::vector<float> values = instance.parameterValues();
    Json object;
    object["preset"] = presetObject(instance.presetState().values());
    object["parameters"] = valueObjects(instance, values, textsOf(values));
    if (compare.initialized) {
        const std::vector<Shown> shown = shownOf(instance, compare);
        Json& slots = object["compare"];
        slots["current"] = shown[static_cast<std::size_t>(compare.current)].slot;
        slots["modified"] = compare.modified;
        for (const Shown& each : shown) {
            slots[each.slot]["preset"] = presetObject(each.preset);
            slots[each.slot]["parameters"] = valueObjects(instance, each.values, each.texts);
        }
    }
    // A preset's name may be in any bytes.
    return object.dump(2, ' ', false, Json::error_handler_t::replace) + "\n";
}

}  // namespace vanta
