#include "interface/meters/level_text.hpp"

#include <fmt/printf.h>

#include <cmath>

#include "interface/meters/level_reading.hpp"

namespace vanta::interface {
namespace {

/// What a level may lie beside a decimal without being rounded away from it, in units of that decimal.
constexpr float kSlack = 0.0005f;

/// A decimal goes for each power of ten that the number has reached.
int spareDecimals(float rounded) {
    int spare = 0;
    for (float power = 10.0f; std::abs(rounded) >= power - kSlack; power *= 10.0f) ++spare;
    return spare;
}

float roundedTo(int decimals, float level, LevelInterpretation interpretation) {
    const float unit = std::pow(10.0f, static_cast<float>(decimals));
    return interpretation == LevelInterpretation::Reduction ? std::floor(unit * level + kSlack) / unit
                                                            : std::ceil(unit * level - kSlack) / unit;
}

}  // namespace

LevelText formatLevel(float level, const LevelFormat& format) {
    if (isSilence(level)) return {"-INF", kSilence, false};
    int decimals = std::max(format.decimals, 0);
    float rounded = roundedTo(decimals, level, format.interpretation);
    while (format.precision == FloatPrecision::Most && decimals > 0 &&
           format.decimals - decimals < spareDecimals(rounded)) {
        rounded = roundedTo(--decimals, rounded, format.interpretation);
    }
    // At the limit is within it, even where the limit has more decimals than the number.
    const bool isOver = format.interpretation == LevelInterpretation::Level && rounded > format.limit &&
                        level > format.limit + kSlack / 10.0f;
    return {signedNumber(fmt::format("%+.{}f", decimals), rounded), rounded, isOver};
}

std::string signedNumber(const std::string& format, float value) {
    std::string text = fmt::sprintf(format, static_cast<double>(value));
    const bool isZero = text.find_first_of("123456789") == std::string::npos;
    return isZero && text.starts_with('-') ? fmt::sprintf(format, 0.0) : text;
}

}  // namespace vanta::interface
