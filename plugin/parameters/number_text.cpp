#include "plugin/parameters/number_text.hpp"

#include <fmt/printf.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>

namespace vanta {
namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();

bool isLetter(char c) {
    return lowerCase(c) >= 'a' && lowerCase(c) <= 'z';
}

/// What stands for a decimal number that no double can hold: an infinity or 0.
double beyondRange(std::string_view number) {
    const std::size_t exponent = number.find_first_of("eE");
    if (exponent != std::string_view::npos) return number[exponent + 1] == '-' ? 0.0 : kInfinity;
    const std::size_t significant = number.find_first_of("123456789");
    return significant < number.find('.') ? kInfinity : 0.0;
}

bool startsWithInf(std::string_view text) {
    return equalsIgnoringCase(text.substr(0, 3), "INF") && (text.size() == 3 || !isLetter(text[3]));
}

/// The printf form of "*Nf" and "*+Nf" for this value.
std::string significantFormat(const std::string& format, double value) {
    const bool plus = format.size() > 1 && format[1] == '+';
    const char* begin = format.data() + (plus ? 2 : 1);
    const char* end = format.data() + format.size();
    int decimals = 0;
    const char* rest = std::from_chars(begin, end, decimals).ptr;
    // A value that rounds up to the next power of ten gives up the decimal that this power costs.
    const double limit = 10.0 - 0.5 / std::pow(10.0, decimals);
    for (double a = std::abs(value); decimals > 0 && a >= limit; a /= 10.0) --decimals;
    return std::string(plus ? "%+." : "%.") + std::to_string(decimals) + std::string(rest, end);
}

}  // namespace

std::optional<NumberText> readNumber(std::string_view text) {
    const std::size_t sign = !text.empty() && (text[0] == '+' || text[0] == '-') ? 1 : 0;
    const double factor = sign && text[0] == '-' ? -1.0 : 1.0;
    const std::string_view number = text.substr(sign);
    if (startsWithInf(number)) return NumberText{factor * kInfinity, sign + 3};
    if (number.empty() || (!isDigit(number[0]) && number[0] != '.')) return {};
    double value = 0.0;
    const char* begin = number.data();
    const auto [end, error] = std::from_chars(begin, begin + number.size(), value);
    if (error == std::errc::invalid_argument) return {};
    const auto length = static_cast<std::size_t>(end - begin);
    if (error == std::errc::result_out_of_range) value = beyondRange(number.substr(0, length));
    return NumberText{factor * value, sign + length};
}

std::string formatNumber(const std::string& format, double value) {
    if (value >= kInfinity) return "INF";
    if (value <= -kInfinity) return "-INF";
    const bool significant = !format.empty() && format[0] == '*';
    std::string text = fmt::sprintf(significant ? significantFormat(format, value) : format, value);
    if (text.find_first_of("123456789") != std::string::npos) return text;
    if (!text.empty() && (text[0] == '-' || text[0] == '+')) text.erase(0, 1);
    return text;
}

std::string decibelText(float db) {
    return db >= -179.9f ? formatNumber("%+.2f", db) : "-INF";
}

std::string frequencyText(float hertz) {
    const char* format = hertz > 9999.95f   ? "%.0f"
                         : hertz > 999.995f ? "%.1f"
                         : hertz > 99.9995f ? "%.2f"
                                            : "%.3f";
    return formatNumber(format, hertz);
}

std::string wholeOrTenthsText(float value) {
    const bool whole = std::abs(value - std::round(value)) <= 0.01f;
    return formatNumber(whole ? "%.0f" : "%.1f", value);
}

std::string_view skipBlanks(std::string_view text) {
    return text.substr(std::min(text.size(), text.find_first_not_of(" \t")));
}

}  // namespace vanta
