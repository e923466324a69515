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
    "vanta-gallery: shows all controls of the interface.\n"
    "\n"
    "  --screenshot FILE.png  writes a picture of the page; needs no display\n"
    "  --scale 1|1.5|2        pixels per unit of the page\n"
    "  --software             draws without OpenGL, as screenshots always do\n"
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
        } else if (name != "--software") {
            throw std::invalid_argument(fmt::format("unknown option '{}'; see --help", name));
        }
    }
    if (!options.help && options.screenshot.empty()) {
        throw std::invalid_argument("nothing to do: use --screenshot FILE.png");
    }
    return options;
}

}  // namespace vanta::gallery
