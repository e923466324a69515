#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace vanta {

/// What a program prints for --help, taken apart as cli/help_format.hpp lays it out.
struct HelpPage {
    struct Entry {
        std::string name;  ///< "--gain DB", or a command
        std::string text;
    };
    struct Group {
        std::string title;
        std::vector<Entry> entries;
    };

    std::string usage;
    std::string description;  ///< its lines; indented ones stay as they are
    std::vector<Group> groups;
    std::vector<std::string> examples;
    std::vector<std::string> notes;  ///< paragraphs below the examples
    std::string exitStatus;
};

/// std::runtime_error for a text of another form.
HelpPage readHelpPage(std::string_view text);

}  // namespace vanta
