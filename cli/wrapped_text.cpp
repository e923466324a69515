#include "cli/wrapped_text.hpp"

#include <fmt/format.h>

#include <algorithm>

namespace vanta {

std::string wrapped(std::string_view text, std::size_t indent) {
    std::string result;
    while (!text.empty()) {
        std::size_t length = text.size();
        if (length > kLineWidth - indent) {
            const auto blank = text.rfind(' ', kLineWidth - indent);
            length = blank == std::string_view::npos ? text.size() : blank;
        }
        result += fmt::format("{:{}}{}\n", "", indent, text.substr(0, length));
        text.remove_prefix(std::min(text.size(), length + 1));
    }
    return result;
}

}  // namespace vanta
