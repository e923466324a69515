#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace vanta::gui {

/// A kind of files, by shell patterns that heed case.
struct FileFilter {
    std::string name;
    std::vector<std::string> patterns;
};

/// What a dialog is to ask for. Paths are the file system's own bytes, UTF-8 as a rule but not for certain.
struct FileQuestion {
    enum class Kind { Open, Save, Folder };

    Kind kind = Kind::Open;
    std::string title;
    std::string path;  ///< where to start; need not exist
    std::vector<FileFilter> filters;
    unsigned long window = 0;  ///< of X, that the dialog belongs to; 0 for none
};

/// From names and patterns in turn, joined by "|"; more than one pattern by ";". "*.*" means all files, and
/// letters are found in either case.
std::vector<FileFilter> parseFilters(std::string_view joined);

/// Where a dialog can start, of a path that need not exist.
struct StartingPlace {
    std::string folder;  ///< the innermost that exists, absolute; empty for none
    std::string name;    ///< of the file that was meant; empty if the path is a folder
};
StartingPlace startingPlace(const std::string& path);

/// With ".extension" at its end if the name has no extension; `extension` may begin with its dot.
std::string withExtension(const std::string& path, std::string_view extension);

}  // namespace vanta::gui
