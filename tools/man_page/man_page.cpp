// Prints a manual page of a program of ours: PROGRAM NAME SUMMARY SOURCE DATE SEE-ALSO...

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <cstdio>
#include <memory>
#include <span>
#include <sstream>
#include <stdexcept>

#include "foundation/ascii.hpp"
#include "tools/man_page/help_page.hpp"

namespace vanta {
namespace {

constexpr std::string_view kCommands = "Commands";

/// What `program ARGUMENTS --help` prints.
std::string helpOf(const std::string& program, const std::string& arguments) {
    const std::string command = fmt::format("'{}' {} --help", program, arguments);
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> pipe(::popen(command.c_str(), "r"), ::pclose);
    if (!pipe) throw std::runtime_error("cannot run " + command);
    std::string text;
    std::array<char, 4096> part;
    while (const std::size_t count = std::fread(part.data(), 1, part.size(), pipe.get()))
        text.append(part.data(), count);
    return text;
}

/// As roff takes it: dashes that can be copied, and no line that looks like a request.
std::string roff(std::string_view text) {
    std::string result;
    for (const char c : text) {
        if (c == '\\') {
            result += "\\e";
        } else if (c == '-') {
            result += "\\-";
        } else {
            result += c;
        }
    }
    return result.starts_with('.') || result.starts_with('\'') ? "\\&" + result : result;
}

void printDescription(const std::string& description) {
    std::istringstream lines(description);
    bool isExample = false;
    bool isFirst = true;
    bool isBroken = false;
    for (std::string line; std::getline(lines, line);) {
        if (line.empty()) {
            isBroken = true;
            continue;
        }
        if (isExample && !line.starts_with(' ')) fmt::print(".EE\n.RE\n");
        const bool begins = !isExample && line.starts_with(' ');
        isExample = line.starts_with(' ');
        if (isBroken && !isFirst) fmt::print(".PP\n");
        if (begins) fmt::print(".RS\n.EX\n");
        fmt::print("{}\n", roff(trimmed(line)));
        isFirst = isBroken = false;
    }
    if (isExample) fmt::print(".EE\n.RE\n");
}

void printExamples(const HelpPage& page) {
    if (page.examples.empty()) return;
    fmt::print(".RS\n.EX\n");
    for (const std::string& line : page.examples) fmt::print("{}\n", roff(line));
    fmt::print(".EE\n.RE\n");
    for (const std::string& paragraph : page.notes) fmt::print(".PP\n{}\n", roff(paragraph));
}

void printOption(const HelpPage::Entry& entry) {
    const std::size_t blank = std::min(entry.name.find(' '), entry.name.size());
    const std::string value = entry.name.substr(blank);
    fmt::print(".TP\n\\fB{}\\fR{}\n{}\n", roff(entry.name.substr(0, blank)),
               value.empty() ? "" : " \\fI" + roff(value.substr(1)) + "\\fR", roff(entry.text));
}

/// The options of a command in their groups, but for the one that every command has.
void printOptions(const HelpPage& page) {
    for (HelpPage::Group group : page.groups) {
        std::erase_if(group.entries, [](const HelpPage::Entry& entry) { return entry.name == "--help"; });
        if (group.title == kCommands || group.entries.empty()) continue;
        fmt::print(".PP\n{}:\n", roff(group.title));
        for (const HelpPage::Entry& entry : group.entries) printOption(entry);
    }
}

/// All options of the program itself. One group needs no heading.
void printOwnOptions(const HelpPage& page) {
    const auto isCommands = [](const HelpPage::Group& group) { return group.title == kCommands; };
    const bool isOne =
        page.groups.size() - static_cast<std::size_t>(std::ranges::count_if(page.groups, isCommands)) == 1;
    for (const HelpPage::Group& group : page.groups) {
        if (isCommands(group)) continue;
        if (!isOne) fmt::print(".SS {}\n", roff(group.title));
        for (const HelpPage::Entry& entry : group.entries) printOption(entry);
    }
}

void printCommands(const std::string& program, const std::string& path, const HelpPage& page) {
    for (const HelpPage::Group& group : page.groups) {
        if (group.title != kCommands) continue;
        for (const HelpPage::Entry& entry : group.entries) {
            const std::string name = path.empty() ? entry.name : path + " " + entry.name;
            const HelpPage command = readHelpPage(helpOf(program, name));
            // What only holds other commands is told by these.
            if (!command.usage.ends_with(" COMMAND")) {
                fmt::print(".SS {}\n", roff(command.usage));
                printDescription(command.description);
                printOptions(command);
                if (!command.examples.empty()) fmt::print(".PP\nExamples:\n.PP\n");
                printExamples(command);
                if (!command.exitStatus.empty())
                    fmt::print(".PP\nExit status: {}\n", roff(command.exitStatus));
            }
            printCommands(program, name, command);
        }
    }
}

void printPage(const std::string& program, const std::string& name, const std::string& summary,
               const std::string& source, const std::string& date, std::span<const char* const> seeAlso) {
    const HelpPage page = readHelpPage(helpOf(program, {}));
    const bool hasCommands = page.usage.ends_with(" COMMAND");
    std::string title = name;
    std::ranges::transform(title, title.begin(),
                           [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
    fmt::print(".TH {} 1 {} \"{}\" \"User Commands\"\n", roff(title), date, roff(source));
    fmt::print(".SH NAME\n{} \\- {}\n", roff(name), roff(summary));
    const std::string arguments = page.usage.substr(page.usage.find(' ') + 1);
    fmt::print(".SH SYNOPSIS\n\\fB{}\\fR {}\n", roff(name), roff(arguments));
    fmt::print(".SH DESCRIPTION\n");
    printDescription(page.description);
    fmt::print(".SH OPTIONS\n");
    printOwnOptions(page);
    if (hasCommands) fmt::print(".SH COMMANDS\n");
    printCommands(program, {}, page);
    if (!page.examples.empty()) fmt::print(".SH EXAMPLES\n");
    printExamples(page);
    if (!page.exitStatus.empty()) fmt::print(".SH \"EXIT STATUS\"\n{}\n", roff(page.exitStatus));
    fmt::print(".SH \"SEE ALSO\"\n");
    for (std::size_t i = 0; i < seeAlso.size(); ++i)
        fmt::print(".BR {} (1){}\n", roff(seeAlso[i]), i + 1 < seeAlso.size() ? "," : "");
}

}  // namespace
}  // namespace vanta

int main(int argc, char** argv) {
    try {
        if (argc < 7) throw std::runtime_error("use: man_page PROGRAM NAME SUMMARY SOURCE DATE SEE-ALSO...");
        vanta::printPage(argv[1], argv[2], argv[3], argv[4], argv[5], {argv + 6, argv + argc});
        return 0;
    } catch (const std::exception& error) {
        fmt::print(stderr, "man_page: {}\n", error.what());
        return 1;
    }
}
