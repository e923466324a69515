#include "limiter/parameters/parameter_help.hpp"

#include <algorithm>

#include "limiter/parameters/parameter_table.hpp"
#include "parameter_help_text.hpp"

namespace vanta {
namespace {

/// The lines below "# " and the name, up to the next heading. Empty if there is no such heading.
constexpr std::string_view sectionOf(std::string_view name) {
    std::string_view rest = kParameterHelpText;
    while (rest.starts_with("# ")) {
        const std::size_t headingEnd = rest.find('\n');
        const std::size_t end = std::min(rest.find("\n# ", headingEnd), rest.size() - 1);
        if (rest.substr(2, headingEnd - 2) == name) return rest.substr(headingEnd + 1, end - headingEnd);
        rest.remove_prefix(end + 1);
    }
    return {};
}

static_assert(kParameterHelpText.ends_with('\n'));
static_assert(std::ranges::none_of(kParameterTable,
                                   [](const ParameterRow& row) { return sectionOf(row.name).empty(); }),
              "resources/text/parameter_help.txt needs a section for every row of the parameter table");
static_assert(std::ranges::count(kParameterHelpText, '#') == static_cast<int>(kParameterTable.size()),
              "resources/text/parameter_help.txt has a section for a parameter that does not exist");

}  // namespace

std::string parameterHelp(std::string_view name) {
    std::string text(sectionOf(name));
    text.erase(text.find_last_not_of('\n') + 1);
    std::ranges::replace(text, '\n', ' ');
    return text;
}

}  // namespace vanta
