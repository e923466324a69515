#include "cli/picture_size.hpp"

#include <fmt/format.h>

#include <algorithm>
#include <utility>

#include "cli/exit_code.hpp"
#include "plugin/parameters/number_text.hpp"

namespace vanta {

std::optional<PictureSize> readPictureSize(const std::string& text) {
    const auto x = std::min(text.find('x'), text.size());
    const auto width = readNumber(text.substr(0, x));
    const auto height = readNumber(x < text.size() ? text.substr(x + 1) : "");
    if (!width || !height || width->length != x || height->length != text.size() - x - 1) return {};
    return PictureSize{width->value, height->value};
}

float readPictureScale(const std::string& text, float usual) {
    if (text.empty()) return usual;
    for (const auto& [name, factor] : {std::pair{"1", 1.0f}, {"1.5", 1.5f}, {"2", 2.0f}}) {
        if (text == name) return factor;
    }
    throw UsageError(fmt::format("--scale cannot be '{}': use 1, 1.5 or 2", text));
}

}  // namespace vanta
