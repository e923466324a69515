#pragma once

#include <memory>
#include <string>
#include <vector>

namespace vanta {

/// Files and folders as they go into a setup archive, in this order.
struct ArchiveNode {
    std::string name;
    bool isFolder = false;
    std::string content;             ///< of a file
    std::vector<ArchiveNode> nodes;  ///< of a folder

    /// The file or folder of this name below a folder, made at the end if need be.
    ArchiveNode& child(const std::string& childName, bool folder);
};

/// The whole archive of what is below `root`; see plugin/presets/setup_archive.hpp. Throws
/// std::runtime_error for a name that does not fit into a record.
std::string writeSetupArchive(const ArchiveNode& root);

}  // namespace vanta
