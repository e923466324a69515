#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <limits>
#include <locale>
#include <random>
#include <string>
#include <tuple>

#include "plugin/parameters/label_text.hpp"
#include "plugin/parameters/number_text.hpp"

namespace vanta::test {
namespace {

constexpr double kInf = std::numeric_limits<double>::infinity();

TEST(NumberText, PrintsAsAskedAndNeverASignedZero) {
    const std::tuple<const char*, double, const char*> cases[] = {
        {"%.3f", -0.0004, "0.000"}, {"%+.2f", 0.0, "0.00"},        {"%+.2f", 3.0, "+3.00"},
        {"%.1f", -0.05001, "-0.1"}, {"*3f", 9.9994, "9.999"},      {"*3f", 9.9996, "10.00"},
        {"*3f", 99.994, "99.99"},   {"*3f", 99.996, "100.0"},      {"*3f", 999.6, "999.6"},
        {"*3f", 999.96, "1000"},    {"*3f", -123456.0, "-123456"}, {"*+2f", 5.0, "+5.00"},
        {"*+2f", -50.0, "-50.0"},   {"*3f", 0.0, "0.000"},         {"%.0f", kInf, "INF"},
        {"*3f", -kInf, "-INF"}};
    for (const auto& [format, value, text] : cases) {
        EXPECT_EQ(formatNumber(format, value), text) << format << " of " << value;
    }
}

TEST(NumberText, AgreesWithPrintfWhereNothingIsSpecial) {
    std::mt19937 random(1);
    std::uniform_real_distribution<double> exponent(-4.0, 6.0);
    for (int i = 0; i < 3000; ++i) {
        const double value = std::pow(10.0, exponent(random)) * (i % 2 ? 1 : -1) + 1.0;
        for (const char* format : {"%.0f", "%.1f", "%.2f", "%+.2f", "%.5f"}) {
            char expected[64];
            std::snprintf(expected, sizeof expected, format, value);
            if (std::string(expected).find_first_of("123456789") == std::string::npos) continue;
            ASSERT_EQ(formatNumber(format, value), expected);
        }
    }
}

TEST(NumberText, ReadsDecimalNumbersAndNothingElse) {
    const std::tuple<const char*, double, std::size_t> cases[] = {
        {"12", 12, 2},         {"-1.5dB", -1.5, 4},  {"+3", 3, 2},     {".5", 0.5, 2},
        {"2x", 2, 1},          {"0x10", 0, 1},       {"1e3", 1000, 3}, {"5e", 5, 1},
        {"1e999", kInf, 5},    {"-1e999", -kInf, 6}, {"1e-999", 0, 6}, {"INF", kInf, 3},
        {"-INF dB", -kInf, 4}, {"-inf", -kInf, 4}};
    for (const auto& [text, value, length] : cases) {
        const auto number = readNumber(text);
        ASSERT_TRUE(number) << text;
        EXPECT_EQ(number->value, value) << text;
        EXPECT_EQ(number->length, length) << text;
    }
    for (const char* text : {"", "-", "+", "x", "nan", "-nan", "infinity", "+-1", "--1", "e5", "."}) {
        EXPECT_FALSE(readNumber(text)) << text;
    }
    const std::string longNumber(400, '9');
    EXPECT_EQ(readNumber(longNumber)->value, kInf);
    EXPECT_EQ(readNumber("0." + std::string(400, '0') + "1")->value, 0.0);
}

/// Writes numbers as half of the world does.
struct CommaNumbers final : std::numpunct<char> {
    char do_decimal_point() const override { return ','; }
    char do_thousands_sep() const override { return '.'; }
    std::string do_grouping() const override { return "\3"; }
};

TEST(NumberText, DoesNotDependOnTheLocale) {
    const std::locale before = std::locale::global(std::locale(std::locale(), new CommaNumbers));
    const std::string text = formatNumber("%.2f", 12345.5);
    const auto number = readNumber("1.5");
    std::locale::global(before);
    EXPECT_EQ(text, "12345.50");
    ASSERT_TRUE(number);
    EXPECT_EQ(number->value, 1.5);
}

TEST(LabelText, IsAbbreviatedStepByStep) {
    const std::tuple<const char*, int, const char*> cases[] = {
        {"High Pass Frequency", 0, "High Pass Frequency"},
        {"High Pass Frequency", 17, "HiPass Frequency"},
        {"High Pass Frequency", 12, "HP Frequency"},
        {"High Pass Frequency", 8, "HP Freq"},
        {"High Pass Frequency", 6, "HPFreq"},
        {"High Pass Frequency", 5, "HPFrq"},
        {"Low Shelf High Cut", 8, "LS HC"},
        {"Attack Release", 7, "Att Rel"},
        {"Attack Release", 3, "ARl"},
        {"Not Bypassed", 9, "NBypassed"},
        {"Not Bypassed", 4, "NBps"},
        {"Band 2 Gain", 6, "B2Gain"},
        {"Band 2 Gain", 5, "2Gain"},
        {"Band 2 Gain", 4, "2Gn"},
        {"Filter12 Set3 Gain", 7, "FSGain"},
        {"F12 Set3 Gain", 8, "F12SGain"},
        {"Aggressive", 4, "Aggr"}};
    for (const auto& [text, length, expected] : cases) {
        EXPECT_EQ(abbreviate(text, length), expected) << text << " to " << length;
    }
    for (const char* text : {"", " ", "a", "  High  ", "Noise Shaping (Weighted)", "A1", "-"}) {
        for (int length = 1; length < 30; ++length) {
            EXPECT_LE(abbreviate(text, length).size(), static_cast<std::size_t>(length));
        }
    }
}

}  // namespace
}  // namespace vanta::test
