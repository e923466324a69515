#pragma once

#include <string>

#include "foundation/property.hpp"

namespace vanta::gui {

/// Asks for the file to open, or to save to.
class OpenSaveDialog {
public:
    virtual ~OpenSaveDialog() = default;
    /// True if the user has chosen a file; `path` is then what was chosen.
    virtual bool show() = 0;

    /// UTF-8. Where the dialog starts.
    Property<std::string> path{nullptr, std::string{}};
    /// Names and patterns in turn, joined by "|".
    Property<std::string> filter{nullptr, std::string{}};
    Property<std::string> title{nullptr, std::string{}};
    Property<std::string> defaultExtension{nullptr, std::string{}};
};

/// Asks for a folder.
class SelectFolderDialog {
public:
    virtual ~SelectFolderDialog() = default;
    /// True if the user has chosen a folder; `path` is then what was chosen.
    virtual bool show() = 0;

    /// UTF-8. Where the dialog starts.
    Property<std::string> path{nullptr, std::string{}};
    Property<std::string> title{nullptr, std::string{}};
};

}  // namespace vanta::gui
