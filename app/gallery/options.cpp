#include "app/gallery/options.hpp"

#include <stdexcept>
#include <string_view>

#include <fmt/format.h>

namespace vanta::gallery {
namespace {

float scaleOf(std::string_view text) {
    if (text == "1") return 1.0f;
    if (text == "1.5") return 1.5f;
    if (text == "2") return 2.0f;
    throw std::invalid_argument(fmt::format("unknown scale '{}': use 1, 1.5 or 2", text));
}

}  // namespace

const char* const kUsage =
    "vanta-gallery: shows all controls of the interface in a window.\n"
    "\n"
    "  --software             draws without OpenGL, as is done unless told\n"
    "  --opengl               draws by OpenGL where there is any\n"
    "  --scale 1|1.5|2        pixels per unit of the page; as the desktop wants unless told\n"
    "  --screenshot FILE.png  writes a picture of the page and ends; needs no display\n"
    "  --help                 this text\n";

Options parseOptions(std::span<char* const> arguments) {
    Options options;
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        const std::string_view name = arguments[i];
        const auto value = [&]() -> std::string_view {
            if (i + 1 < arguments.size()) return arguments[++i];
            throw std::invalid_argument(fmt::format("{} needs a value; see --help", name));
        };
        if (name == "--help") {
            options.help = true;
        } else if (name == "--scale") {
            options.scale = scaleOf(value());
        } else if (name == "--screenshot") {
            options.screenshot = value();
        } else if (name == "--opengl" || name == "--software") {
            options.openGl = name == "--opengl";
        } else {
            throw std::invalid_argument(fmt::format("unknown option '{}'; see --help", name));
        }
    }
    return options;
}

}  // namespace vanta::gallery
