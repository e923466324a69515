#include "app/window/app_arguments.hpp"

#include <fmt/format.h>

#include <array>

#include "app/window/texts.hpp"
#include "cli/exit_code.hpp"
#include "cli/option_declarer.hpp"
#include "cli/picture_size.hpp"
#include "foundation/ascii.hpp"

namespace vanta {
namespace {

constexpr std::array kSizeNames{"compact", "small", "medium", "large"};
constexpr PictureSize kLeast{800, 480};
constexpr PictureSize kMost{2560, 1440};

std::optional<InterfaceSize> readSize(const std::string& text) {
    const auto size = readPictureSize(text);
    if (!size || !size->isWithin(kLeast, kMost)) return {};
    return InterfaceSize{static_cast<int>(size->width), static_cast<int>(size->height)};
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
    add.option("--open", open);
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

}  // namespace vanta
