#pragma once

#include <limits>
#include <string>

namespace vanta::interface {

/// Whether more is a higher level, or a deeper reduction, which is a negative one.
enum class LevelInterpretation { Level, Reduction };
enum class FloatPrecision {
    Most,  ///< one decimal less for each digit more: two or three digits in all
    Fixed
};

struct LevelFormat {
    int decimals = 1;
    FloatPrecision precision = FloatPrecision::Most;
    /// Numbers are rounded to what is more: a level is never shown as less than it is.
    LevelInterpretation interpretation = LevelInterpretation::Level;
    float limit = std::numeric_limits<float>::infinity();
};

struct LevelText {
    std::string text;  ///< with its sign; "-INF" for silence
    float rounded;     ///< the number that the text tells
    bool isOver;       ///< a level that lies above the limit
};

/// The text of a level in dB.
LevelText formatLevel(float level, const LevelFormat& format);

/// Prints with a printf format for one double. What rounds to zero is positive: "+0.0", never "-0.0".
std::string signedNumber(const std::string& format, float value);

}  // namespace vanta::interface
