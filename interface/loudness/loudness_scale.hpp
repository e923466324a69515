#pragma once

#include <optional>
#include <span>
#include <string>
#include <vector>

#include "limiter/parameters/vanta_parameters.hpp"

namespace vanta::interface {

/// A loudness that a medium asks for.
struct TargetPreset {
    float target;  ///< LUFS
    const char* name;
    const char* shortName;
};

std::span<const TargetPreset> targetPresets();
/// The one with exactly this target, or null.
const TargetPreset* presetOf(float target);

/// What the loudness meter shows, and how its settings read.
struct LoudnessScale {
    float target;     ///< LUFS
    float reach;      ///< LU above the target; below it lies twice as much
    bool isRelative;  ///< numbers count from the target, in LU

    static LoudnessScale of(const VantaParameters& parameters);

    float top() const { return target + reach; }
    float bottom() const { return target - 2.0f * reach; }
    /// Of a level in its number.
    float numberShift() const { return isRelative ? -target : 0.0f; }
    const char* unit() const { return isRelative ? "LU" : "LUFS"; }
    /// Of the numbers beside the meter: with a decimal only where steps from the target have one.
    std::string numberFormat() const;
    bool operator==(const LoudnessScale&) const = default;
};

/// Of the button that opens the menu of scale and origin: "EBU +9", or "(-20.5) +9" without a preset.
std::string scaleCaption(const VantaParameters& parameters);
/// The same in a few characters: "EBU +9", or "-20.5 +9".
std::string compactCaption(const VantaParameters& parameters);
/// Of an entry of that menu: "EBU +9", or the parameter's own text.
std::string scaleEntry(const VantaParameters& parameters, int index);
/// Of the button that opens the targets: "-23 (EBU)", "-20.5", and relative "0 (EBU)", "0 (-20.5)".
std::string targetCaption(const VantaParameters& parameters);

}  // namespace vanta::interface
