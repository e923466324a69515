#pragma once

#include <array>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>

#include "limiter/styles/engine_curve.hpp"
#include "limiter/styles/name_list.hpp"
#include "plugin/parameters/parameter_units.hpp"

namespace vanta {

/// What a parameter can be set to, and how that reads.
struct ParameterValues {
    enum class Kind {
        Number,
        Choice,  ///< one of a few labels
        Switch,  ///< off or on, whatever the two labels are
    };

    Kind kind;
    float minimum = 0.0f;  ///< of the own number; an index counts from 0
    float maximum = 1.0f;
    float initial = 0.0f;                    ///< the default, as it is shown; an index of a choice or switch
    std::string_view labels = {};            ///< of a choice or switch, separated by commas
    std::optional<ParameterUnit> unit = {};  ///< of a number, like all that follows
    std::string_view format = {};            ///< empty: the unit's
    std::string (*formatter)(float) = nullptr;  ///< prints the shown value, in place of `format`
    EngineCurve curve = EngineCurve::Identity;
    float engineScale = 1.0f;  ///< engine value per unit of the curve
    float shownScale = 1.0f;   ///< shown value per engine value
};

/// A continuous parameter whose own number is what it shows.
constexpr ParameterValues numberValues(float minimum, float maximum, float initial,
                                       std::optional<ParameterUnit> unit = {}, std::string_view format = {}) {
    return {.kind = ParameterValues::Kind::Number,
            .minimum = minimum,
            .maximum = maximum,
            .initial = initial,
            .unit = unit,
            .format = format};
}

constexpr int countLabels(std::string_view labels) {
    int count = 1;
    for (const char c : labels) count += c == ',';
    return count;
}

/// The position of a label. A constant expression only if there is such a label.
constexpr int labelIndex(std::string_view labels, std::string_view label) {
    const int position = listPosition(labels, label);
    if (position < 0) throw std::logic_error("no such label");
    return position;
}

/// One of several labels, the default by its label.
consteval ParameterValues choiceValues(std::string_view labels, std::string_view initial) {
    return {.kind = ParameterValues::Kind::Choice,
            .maximum = static_cast<float>(countLabels(labels) - 1),
            .initial = static_cast<float>(labelIndex(labels, initial)),
            .labels = labels};
}

/// Off or on.
consteval ParameterValues switchValues(std::string_view labels, std::string_view initial) {
    ParameterValues values = choiceValues(labels, initial);
    values.kind = ParameterValues::Kind::Switch;
    return values;
}

/// What a parameter is to the plug-in itself.
enum class ParameterRole { None, Bypass, ReceiveMidi };

/// Where lists of parameters show it.
enum class ParameterGroup { Limiting, ChannelLinking, Output, Monitoring, Loudness, Interface };

inline constexpr auto kParameterGroupNames = std::to_array<std::string_view>(
    {"Limiting", "Channel Linking", "Output", "Monitoring", "Loudness", "Interface"});

/// Everything about a parameter except what it does.
struct ParameterRow {
    std::string_view name;
    ParameterGroup group;
    ParameterValues values;
    std::string_view
        summary;  ///< a few words for lists, options and generic host displays, without the range
    /// Offered to the host for automation; not if it resets the signal path or does not affect the sound.
    bool automatable = true;
    bool keptByLockOutput = false;  ///< stays as it is when a preset is loaded while Lock Output is on
    bool followsInterface = false;  ///< a taste in the interface, not part of what a preset is about
    ParameterRole role = ParameterRole::None;
    int sincePreset = 1;  ///< the version of preset files that brought it
};

}  // namespace vanta
