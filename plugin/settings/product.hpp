#pragma once

#include <filesystem>
#include <string>

namespace vanta {

/// Names a product and the places in which it remembers things outside a session.
struct Product {
    std::string name;  ///< the short name
    int majorVersion = 1;
    int firstMajorVersion = 1;  ///< of the first release that carried this name
    std::string version;        ///< the whole version, as shown

    /// The settings of all our products.
    static std::string rootKey();
    /// The settings of this product. `major` other than 0 asks for those of another version.
    std::string key(int major = 0) const;
    /// The name, followed by the major version from the second version on.
    std::string folderName() const;
    /// Interface defaults and controller map. Not made here.
    std::filesystem::path applicationDataFolder() const;
    /// In the user's documents, or in the home folder where there are none. Not made here.
    std::filesystem::path defaultPresetFolder() const;
};

}  // namespace vanta
