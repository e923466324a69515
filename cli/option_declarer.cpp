#include "cli/option_declarer.hpp"

#include <fmt/format.h>

#include <algorithm>
#include <stdexcept>

#include "plugin/parameters/number_text.hpp"

namespace vanta {

std::vector<OptionHelp> readOptionHelp(std::string_view text) {
    std::vector<OptionHelp> rows;
    std::string group;
    while (!text.empty()) {
        const std::string_view line = text.substr(0, text.find('\n'));
        text.remove_prefix(std::min(text.size(), line.size() + 1));
        if (line.starts_with('[')) {
            group = line.substr(1, line.find(']') - 1);
        } else if (line.starts_with("--")) {
            const auto blank = std::min(line.find(' '), line.size());
            const auto value = std::min(blank + 1, line.size());
            rows.push_back({std::string(line.substr(0, blank)), std::string(line.substr(value)), group, {}});
        } else if (!line.empty()) {
            std::string& help = rows.at(rows.size() - 1).text;
            if (!help.empty()) help += ' ';
            help += skipBlanks(line);
        }
    }
    return rows;
}

CLI::Option* OptionDeclarer::described(CLI::Option* option, const std::string& flag) const {
    // The text knows an option by its long name.
    const auto found = std::ranges::find(help_, flag.substr(flag.rfind(',') + 1), &OptionHelp::flag);
    if (found == help_.end()) throw std::logic_error(flag + " has no help");
    if (!found->value.empty()) option->type_name(found->value);
    return option->description(found->text)->group(found->group);
}

CLI::Validator within(double low, double high) {
    const auto check = [=](const std::string& text) -> std::string {
        const auto number = readNumber(text);
        const bool whole = number && number->length == text.size();
        if (whole && number->value >= low && number->value <= high) return {};
        return fmt::format("cannot be '{}': use a number from {} to {}", text, low, high);
    };
    return {check, "NUMBER"};
}

}  // namespace vanta
