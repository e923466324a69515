#include "app/window/app_arguments.hpp"

#include <fmt/format.h>

#include <array>

#include "app/window/texts.hpp"
#include "cli/exit_code.hpp"
#include "cli/option_declarer.hpp"
#include "foundation/ascii.hpp"
#include "plugin/parameters/number_text.hpp"

namespace vanta {
namespace {

constexpr double kLongestFile = 7.0 * 24.0 * 3600.0;  // seconds
constexpr std::array kSizeNames{"compact", "small", "medium", "large"};
constexpr InterfaceSize kLeast{800, 480};
constexpr InterfaceSize kMost{2560, 1440};

std::optional<InterfaceSize> readSize(const std::string& text) {
    const auto x = std::min(text.find('x'), text.size());
    const auto width = readNumber(text.substr(0, x));
    const auto height = readNumber(x < text.size() ? text.substr(x + 1) : "");
    if (!width || !height || width->length != x || height->length != text.size() - x - 1) return {};
    const InterfaceSize size{static_cast<int>(width->value), static_cast<int>(height->value)};
    const bool fits = size.width >= kLeast.width && size.height >= kLeast.height &&
                      size.width <= kMost.width && size.height <= kMost.height;
    return fits ? std::optional(size) : std::nullopt;
}

}  // namespace

void AppArguments::declareTo(CLI::App& app) {
    settings.declareTo(app);
    app.add_option("file", files)->type_name("[FILE]");
    OptionDeclarer add(app, text::kAppOptions);
    add.option("--size", size);
    add.option("--scale", scale);
    add.flag("--software", software);
    add.flag("--opengl", openGl);
    add.flag("--no-jack", noJack);
    add.flag("--paused", startsPaused);
    add.option("--layout", layout);
    add.option("--screenshot", screenshot);
    add.option("--at", atSeconds)->check(within(0.0, kLongestFile));
    add.flag("--force", replace);
}

std::optional<AppArguments::Size> AppArguments::chosenSize() const {
    if (size.empty()) return {};
    for (std::size_t row = 0; row < kSizeNames.size(); ++row) {
        if (equalsIgnoringCase(size, kSizeNames[row]) || size == std::to_string(row))
            return Size{.row = static_cast<int>(row), .free = {}};
    }
    if (const auto wanted = readSize(size)) return Size{.row = PluginSettings::kFreeSize, .free = *wanted};
    throw UsageError(fmt::format(
        "--size cannot be '{}': use compact, small, medium, large or a size from 800x480 to 2560x1440",
        size));
}

float AppArguments::chosenScale(float usual) const {
    if (scale.empty()) return usual;
    for (const auto& [name, factor] : {std::pair{"1", 1.0f}, {"1.5", 1.5f}, {"2", 2.0f}}) {
        if (scale == name) return factor;
    }
    throw UsageError(fmt::format("--scale cannot be '{}': use 1, 1.5 or 2", scale));
}

}  // namespace vanta
