#include "foundation/setting_serializer.hpp"

#include <charconv>
#include <optional>
#include <string_view>

#include <fmt/format.h>

#include "foundation/hex_text.hpp"

namespace vanta {
namespace {

/// What may stand before a number in hand-edited text and std::from_chars refuses.
std::string_view withoutLead(std::string_view text) {
    const std::size_t start = text.find_first_not_of(" \t\r\n\v\f");
    text.remove_prefix(start == std::string_view::npos ? text.size() : start);
    const bool isSigned = text.size() > 1 && text[0] == '+' && text[1] != '-';
    return isSigned ? text.substr(1) : text;
}

/// The number that the text begins with; what follows it is ignored.
template <typename Number>
std::optional<Number> parseNumber(std::string_view text) {
    text = withoutLead(text);
    Number number{};
    const auto result = std::from_chars(text.data(), text.data() + text.size(), number);
    if (result.ec != std::errc{}) return std::nullopt;
    return number;
}

}  // namespace

void SettingSerializer::binary(const std::string& key, std::vector<std::uint8_t>& bytes) {
    if (isWriter()) {
        text(key, toHex(bytes), {});
    } else {
        bytes = fromHex(text(key, {}, {})).value_or(std::vector<std::uint8_t>());
    }
}

bool SettingSerializer::boolean(const std::string& key, bool value, bool defaultValue) {
    return integer(key, value ? 1 : 0, defaultValue ? 1 : 0) != 0;
}

double SettingSerializer::real(const std::string& key, double value, double defaultValue) {
    const std::string found = text(key, fmt::format("{:.15g}", value), {});
    // The text may round; a writer returns exactly what it was given.
    return isWriter() ? value : parseNumber<double>(found).value_or(defaultValue);
}

int SettingSerializer::integer(const std::string& key, int value, int defaultValue) {
    const std::string found = text(key, fmt::format("{}", value), {});
    return isWriter() ? value : parseNumber<int>(found).value_or(defaultValue);
}

}  // namespace vanta
