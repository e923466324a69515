#include "tools/man_page/help_page.hpp"

#include <sstream>
#include <stdexcept>

#include "foundation/ascii.hpp"

namespace vanta {
namespace {

constexpr std::string_view kUsage = "Usage: ";
constexpr std::string_view kExamples = "Examples:";
constexpr std::string_view kExitStatus = "Exit status: ";

bool isIndented(std::string_view line) {
    return line.starts_with("  ");
}

void join(std::string& text, std::string_view more) {
    if (!text.empty()) text += ' ';
    text += trimmed(more);
}

/// A name and two blanks or more before its text; or either alone.
void takeEntry(std::vector<HelpPage::Entry>& entries, std::string_view line) {
    const std::string_view content = trimmed(line);
    const bool continues = line.find_first_not_of(' ') > 2;
    if (continues && entries.empty()) throw std::runtime_error("no option above: " + std::string(line));
    if (continues) return join(entries.back().text, content);
    const std::size_t gap = content.find("  ");
    entries.push_back({std::string(content.substr(0, gap)), {}});
    if (gap != std::string_view::npos) join(entries.back().text, content.substr(gap));
}

/// The paragraphs below the options.
void takeFooter(HelpPage& page, std::istream& lines, std::string line) {
    bool isExitStatus = false;
    do {
        if (line.empty() || line == kExamples) continue;
        if (isIndented(line)) {
            page.examples.emplace_back(trimmed(line));
        } else if (line.starts_with(kExitStatus)) {
            isExitStatus = true;
            join(page.exitStatus, line.substr(kExitStatus.size()));
        } else if (isExitStatus) {
            join(page.exitStatus, line);
        } else {
            page.notes.push_back(line);
        }
    } while (std::getline(lines, line));
}

}  // namespace

HelpPage readHelpPage(std::string_view text) {
    std::istringstream lines{std::string(text)};
    std::string line;
    HelpPage page;
    if (!std::getline(lines, line) || !line.starts_with(kUsage))
        throw std::runtime_error("no usage in the first line: " + line);
    page.usage = line.substr(kUsage.size());
    while (std::getline(lines, line)) {
        if (line == kExamples) {
            takeFooter(page, lines, line);
        } else if (line.ends_with(':') && !isIndented(line)) {
            page.groups.push_back({line.substr(0, line.size() - 1), {}});
        } else if (page.groups.empty()) {
            page.description += line + "\n";
        } else if (!line.empty()) {
            takeEntry(page.groups.back().entries, line);
        }
    }
    return page;
}

}  // namespace vanta
