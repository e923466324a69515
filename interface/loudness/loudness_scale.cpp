#include "interface/loudness/loudness_scale.hpp"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cmath>

namespace vanta::interface {
namespace {

constexpr std::array<TargetPreset, 4> kPresets{{{-9.0f, "CD", "CD"},
                                                {-14.0f, "Streaming", "Strm"},
                                                {-23.0f, "EBU R128", "EBU"},
                                                {-24.0f, "ATSC A/85, TR-B32", "ATSC"}}};
constexpr const char* kReaches[] = {"+9", "+18"};

std::string targetText(const VantaParameters& parameters) {
    return parameters.loudnessMeterTarget.text(parameters.loudnessMeterTarget.value());
}

}  // namespace

std::span<const TargetPreset> targetPresets() {
    return kPresets;
}

const TargetPreset* presetOf(float target) {
    const auto found = std::ranges::find(kPresets, target, &TargetPreset::target);
    return found == kPresets.end() ? nullptr : &*found;
}

LoudnessScale LoudnessScale::of(const VantaParameters& parameters) {
    return {.target = parameters.loudnessMeterTarget.value(),
            .reach = parameters.loudnessMeterScale.currentIndex() == 0 ? 9.0f : 18.0f,
            .isRelative = parameters.loudnessMeterOrigin.currentIndex() != 0};
}

std::string LoudnessScale::numberFormat() const {
    const bool isWhole = isRelative || target == std::round(target);
    return isWhole ? "%+.0f" : "%+.1f";
}

std::string scaleEntry(const VantaParameters& parameters, int index) {
    const TargetPreset* preset = presetOf(parameters.loudnessMeterTarget.value());
    if (!preset) return parameters.loudnessMeterScale.text(static_cast<float>(index));
    return fmt::format("{} {}", preset->shortName, kReaches[index]);
}

std::string scaleCaption(const VantaParameters& parameters) {
    const int index = parameters.loudnessMeterScale.currentIndex();
    if (presetOf(parameters.loudnessMeterTarget.value())) return scaleEntry(parameters, index);
    return fmt::format("({}) {}", targetText(parameters), kReaches[index]);
}

std::string compactCaption(const VantaParameters& parameters) {
    const int index = parameters.loudnessMeterScale.currentIndex();
    if (presetOf(parameters.loudnessMeterTarget.value())) return scaleEntry(parameters, index);
    return fmt::format("{} {}", targetText(parameters), kReaches[index]);
}

std::string targetCaption(const VantaParameters& parameters) {
    const TargetPreset* preset = presetOf(parameters.loudnessMeterTarget.value());
    const bool isRelative = LoudnessScale::of(parameters).isRelative;
    const std::string number = isRelative ? "0" : targetText(parameters);
    if (preset) return fmt::format("{} ({})", number, preset->shortName);
    return isRelative ? fmt::format("{} ({})", number, targetText(parameters)) : number;
}

}  // namespace vanta::interface
