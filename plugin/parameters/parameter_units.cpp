#include "plugin/parameters/parameter_units.hpp"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>

#include "foundation/numbers.hpp"
#include "plugin/parameters/note_name.hpp"
#include "plugin/parameters/number_text.hpp"

namespace vanta {
namespace {

using Unit = FloatPluginParameterUnit;
using Token = Unit::Token;

float exp2Of(float octaves) {
    return std::exp2(octaves);
}
float log2Of(float hertz) {
    return std::log2(hertz);
}
float twelfth(float semitones) {
    return semitones / 12.0f;
}
float twelvefold(float octaves) {
    return octaves * 12.0f;
}

float dbFromFactor(float factor) {
    // No level shows a negative gain.
    return factor > kSilence ? static_cast<float>(dbFromGain(factor)) : kSilenceDb;
}

/// What the units of frequency share.
struct FreqParameterUnit {
    static constexpr Token kTokens[] = {{"Hz"}, {"kHz", 1000.0f}, {"k", 1000.0f}};
};

/// What the units of decibels share: a gain factor in place of a level.
struct DBParameterUnitBase {
    static constexpr Token kFactor{"x", 1.0f, dbFromFactor};
    static constexpr Token kTimes{"*", 1.0f, dbFromFactor};
    static constexpr Token kDb[] = {{"dB"}, kFactor, kTimes};
    static constexpr Token kDbtp[] = {{"dBTP"}, kFactor, kTimes};
    static constexpr Token kDbOrDbtp[] = {{"dB"}, kFactor, kTimes, {"dBTP"}};
    static constexpr Token kDbtpOrDb[] = {{"dBTP"}, kFactor, kTimes, {"dB"}};
};

constexpr Token kMs[] = {{"ms"}, {"sec", 1000.0f}, {"s", 1000.0f}};
constexpr Token kSec[] = {{"sec"}, {"s"}, {"ms", 0.001f}};
constexpr Token kSemitones[] = {{"semitones"},     {"semitone"},     {"octaves", 12.0f},
                                {"octave", 12.0f}, {"oct", 12.0f},   {"notes"},
                                {"note"},          {"cents", 0.01f}, {"cent", 0.01f}};
constexpr Token kPercent[] = {{"%"}};
constexpr Token kRatio[] = {{":1"}};
constexpr Token kSlope[] = {{"dB/oct"}};

constexpr auto kUnits = std::to_array<Unit>({
    {.id = ParameterUnit::Hz,
     .tokens = FreqParameterUnit::kTokens,
     .registered = true,
     .formatter = frequencyText,
     .special = hertzOfNote},
    {.id = ParameterUnit::ExpFreq,
     .tokens = FreqParameterUnit::kTokens,
     .formatter = frequencyText,
     .displayCurve = exp2Of,
     .inverseDisplayCurve = log2Of,
     .special = hertzOfNote},
    {.id = ParameterUnit::Ms, .tokens = kMs, .registered = true},
    {.id = ParameterUnit::Sec, .tokens = kSec, .registered = true},
    {.id = ParameterUnit::Db,
     .tokens = DBParameterUnitBase::kDb,
     .registered = true,
     .formatter = decibelText},
    {.id = ParameterUnit::Dbtp,
     .tokens = DBParameterUnitBase::kDbtp,
     .registered = true,
     .formatter = decibelText},
    {.id = ParameterUnit::OutputDb, .tokens = DBParameterUnitBase::kDbOrDbtp, .formatter = decibelText},
    {.id = ParameterUnit::OutputDbtp, .tokens = DBParameterUnitBase::kDbtpOrDb, .formatter = decibelText},
    {.id = ParameterUnit::DbRange, .tokens = DBParameterUnitBase::kDb, .format = "%.2f"},
    {.id = ParameterUnit::Octaves,
     .tokens = kSemitones,
     .registered = true,
     .displayCurve = twelvefold,
     .inverseDisplayCurve = twelfth},
    {.id = ParameterUnit::Percent, .tokens = kPercent, .registered = true, .attached = true, .format = "*3f"},
    {.id = ParameterUnit::Ratio, .tokens = kRatio, .attached = true, .format = "%.2f"},
    {.id = ParameterUnit::Slope, .tokens = kSlope, .format = "%.1f"},
});

constexpr bool rowsStandInOrder() {
    for (std::size_t i = 0; i < kUnits.size(); ++i) {
        if (static_cast<std::size_t>(kUnits[i].id) != i) return false;
    }
    return true;
}
static_assert(rowsStandInOrder());

}  // namespace

std::span<const FloatPluginParameterUnit> parameterUnits() {
    return kUnits;
}

const FloatPluginParameterUnit& parameterUnit(ParameterUnit unit) {
    return kUnits[static_cast<std::size_t>(unit)];
}

const FloatPluginParameterUnit* registeredUnit(std::string_view text) {
    const auto found = std::ranges::find_if(
        kUnits, [&](const Unit& unit) { return unit.registered && equalsIgnoringCase(unit.text(), text); });
    return found == kUnits.end() ? nullptr : &*found;
}

}  // namespace vanta
