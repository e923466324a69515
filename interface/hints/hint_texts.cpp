#include "interface/hints/hint_texts.hpp"

#include <algorithm>

#include "hint_texts_source.hpp"

namespace vanta::interface {

std::string hintText(std::string_view name) {
    // Each section begins with "# " and its name.
    std::string_view rest = kHintTexts;
    while (rest.starts_with("# ")) {
        const std::size_t headingEnd = rest.find('\n');
        const std::size_t end = std::min(rest.find("\n# ", headingEnd), rest.size() - 1);
        if (rest.substr(2, headingEnd - 2) == name) {
            std::string text(rest.substr(headingEnd + 1, end - headingEnd));
            text.erase(text.find_last_not_of('\n') + 1);
            std::ranges::replace(text, '\n', ' ');
            return text;
        }
        rest.remove_prefix(end + 1);
    }
    return {};
}

}  // namespace vanta::interface
