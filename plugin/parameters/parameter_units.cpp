#include "plugin/parameters/parameter_units.hpp"

#include <charconv>
#include <cmath>
#include <optional>
#include <string_view>

#include "foundation/numbers.hpp"
#include "plugin/parameters/float_display.hpp"
#include "plugin/parameters/number_text.hpp"

namespace vanta {
namespace {

using Token = FloatPluginParameterUnit::Token;

float dbFromFactor(float factor) {
    // A negative factor is no gain that a level could show.
    return factor > kSilence ? static_cast<float>(dbFromGain(factor)) : kSilenceDb;
}

std::vector<Token> decibelTokens(const std::string& text, const std::string& alias) {
    std::vector<Token> tokens{{text}, {"x", 1.0f, dbFromFactor}, {"*", 1.0f, dbFromFactor}};
    if (!alias.empty()) tokens.push_back({alias});
    return tokens;
}

std::optional<int> semitoneOf(char letter) {
    switch (letter) {
        case 'C':
        case 'c':
            return 0;
        case 'D':
        case 'd':
            return 2;
        case 'E':
        case 'e':
            return 4;
        case 'F':
        case 'f':
            return 5;
        case 'G':
        case 'g':
            return 7;
        case 'A':
        case 'a':
            return 9;
        case 'B':
        case 'b':
            return 11;
        default:
            return {};
    }
}

/// Takes "#" or "b" off the front. Result: by how many semitones it moves the note.
int takeAccidental(std::string_view& text) {
    if (text.empty()) return 0;
    const int semitones = text[0] == '#' ? 1 : text[0] == 'b' || text[0] == 'B' ? -1 : 0;
    if (semitones) text.remove_prefix(1);
    return semitones;
}

/// Takes a whole number off the front; nothing there is octave 4.
std::optional<int> takeOctave(std::string_view& text) {
    int octave = 4;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), octave);
    if (error == std::errc::result_out_of_range) return {};
    text.remove_prefix(static_cast<std::size_t>(end - text.data()));
    return octave;
}

/// log2 of the frequency in Hz of a note name.
std::optional<double> octavesOfNote(std::string_view text) {
    text = skipBlanks(text);
    const auto letter = text.empty() ? std::nullopt : semitoneOf(text[0]);
    if (!letter) return {};
    text.remove_prefix(1);
    const int semitone = *letter + takeAccidental(text);
    const auto octave = takeOctave(text);
    if (!octave) return {};
    text = skipBlanks(text);
    double cents = 0.0;
    if (const auto number = readNumber(text)) {
        cents = number->value;
        text = skipBlanks(text.substr(number->length));
    }
    if (!text.empty()) return {};
    return std::log2(440.0) + ((*octave + 1.0) * 12.0 + semitone + cents / 100.0 - 69.0) / 12.0;
}

}  // namespace

FreqParameterUnit::FreqParameterUnit()
    : FloatPluginParameterUnit({{"Hz"}, {"kHz", 1000.0f}, {"k", 1000.0f}}) {}

bool FreqParameterUnit::parseSpecial(const std::string& text, float* out) const {
    const auto octaves = octavesOfNote(text);
    if (octaves) *out = static_cast<float>(std::exp2(*octaves));
    return octaves.has_value();
}

void FreqParameterUnit::configure(FloatDisplay& display) const {
    display.formatter = frequencyText;
}

void ExpFreqParameterUnit::configure(FloatDisplay& display) const {
    FreqParameterUnit::configure(display);
    display.displayCurve = [](float octaves) { return std::exp2(octaves); };
    display.inverseDisplayCurve = [](float hertz) { return std::log2(hertz); };
}

MsParameterUnit::MsParameterUnit() : FloatPluginParameterUnit({{"ms"}, {"sec", 1000.0f}, {"s", 1000.0f}}) {}

SecParameterUnit::SecParameterUnit() : FloatPluginParameterUnit({{"sec"}, {"s"}, {"ms", 0.001f}}) {}

DBParameterUnitBase::DBParameterUnitBase(const std::string& text, const std::string& alias)
    : FloatPluginParameterUnit(decibelTokens(text, alias)) {}

void DBParameterUnit::configure(FloatDisplay& display) const {
    display.formatter = decibelText;
}

void DBRangeParameterUnit::configure(FloatDisplay& display) const {
    display.format = "%.2f";
}

OctavesParameterUnit::OctavesParameterUnit()
    : FloatPluginParameterUnit({{"semitones"},
                                {"semitone"},
                                {"octaves", 12.0f},
                                {"octave", 12.0f},
                                {"oct", 12.0f},
                                {"notes"},
                                {"note"},
                                {"cents", 0.01f},
                                {"cent", 0.01f}}) {}

void OctavesParameterUnit::configure(FloatDisplay& display) const {
    display.displayCurve = [](float octaves) { return octaves * 12.0f; };
    display.inverseDisplayCurve = [](float semitones) { return semitones / 12.0f; };
}

PercentParameterUnit::PercentParameterUnit() : FloatPluginParameterUnit({{"%"}}) {}

void PercentParameterUnit::configure(FloatDisplay& display) const {
    display.format = "*3f";
    display.separator = "";
}

RatioParameterUnit::RatioParameterUnit() : FloatPluginParameterUnit({{":1"}}) {}

void RatioParameterUnit::configure(FloatDisplay& display) const {
    display.format = "%.2f";
    display.separator = "";
}

SlopeParameterUnit::SlopeParameterUnit() : FloatPluginParameterUnit({{"dB/oct"}}) {}

void SlopeParameterUnit::configure(FloatDisplay& display) const {
    display.format = "%.1f";
}

const HzParameterUnit& HzParameterUnit::instance() {
    static const HzParameterUnit unit;
    return unit;
}
const ExpFreqParameterUnit& ExpFreqParameterUnit::instance() {
    static const ExpFreqParameterUnit unit;
    return unit;
}
const MsParameterUnit& MsParameterUnit::instance() {
    static const MsParameterUnit unit;
    return unit;
}
const SecParameterUnit& SecParameterUnit::instance() {
    static const SecParameterUnit unit;
    return unit;
}
const DBParameterUnit& DBParameterUnit::db() {
    static const DBParameterUnit unit("dB");
    return unit;
}
const DBParameterUnit& DBParameterUnit::dbtp() {
    static const DBParameterUnit unit("dBTP");
    return unit;
}
const DBParameterUnit& DBParameterUnit::outputLevel(bool truePeak) {
    static const DBParameterUnit samplePeakUnit("dB", "dBTP");
    static const DBParameterUnit truePeakUnit("dBTP", "dB");
    return truePeak ? truePeakUnit : samplePeakUnit;
}
const DBRangeParameterUnit& DBRangeParameterUnit::instance() {
    static const DBRangeParameterUnit unit("dB");
    return unit;
}
const OctavesParameterUnit& OctavesParameterUnit::instance() {
    static const OctavesParameterUnit unit;
    return unit;
}
const PercentParameterUnit& PercentParameterUnit::instance() {
    static const PercentParameterUnit unit;
    return unit;
}
const RatioParameterUnit& RatioParameterUnit::instance() {
    static const RatioParameterUnit unit;
    return unit;
}
const SlopeParameterUnit& SlopeParameterUnit::instance() {
    static const SlopeParameterUnit unit;
    return unit;
}

}  // namespace vanta
