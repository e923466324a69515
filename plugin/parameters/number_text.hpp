#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "foundation/ascii.hpp"

namespace vanta {

/// Numbers as text. Nothing here depends on the locale: the decimal point is always a point.

struct NumberText {
    double value;
    std::size_t length;  ///< characters read
};

/// The decimal number, "INF" or "-INF" at the start of `text`. Hexadecimal numbers, "infinity" and "nan" are
/// not numbers here. A number that no double can hold becomes an infinity or 0.
std::optional<NumberText> readNumber(std::string_view text);

/// Prints with a printf format for one double, or with "*Nf" or "*+Nf": N decimals below 10 and one less for
/// each further power of ten. Infinities print as "INF" and "-INF", and a rounded zero has no sign.
std::string formatNumber(const std::string& format, double value);

/// "+3.00", and "-INF" for what a user would call silence. `db` is in dB.
std::string decibelText(float db);
/// The lower the frequency, the more decimals. `hertz` is in Hz.
std::string frequencyText(float hertz);
/// A whole number without decimals, anything else with one.
std::string wholeOrTenthsText(float value);

std::string_view skipBlanks(std::string_view text);

}  // namespace vanta
