#include "plugin/settings/product.hpp"

#include "plugin/settings/user_folders.hpp"

namespace vanta {
namespace {

constexpr const char* kMaker = "Quillmark";

}  // namespace

std::string Product::rootKey() {
    return std::string("Software\\") + kMaker;
}

std::string Product::key(int major) const {
    return rootKey() + "\\" + name + "\\" + std::to_string(major ? major : majorVersion) + ".0";
}

std::string Product::folderName() const {
    return majorVersion > firstMajorVersion ? name + " " + std::to_string(majorVersion) : name;
}

std::filesystem::path Product::applicationDataFolder() const {
    return dataFolder() / kMaker / folderName();
}

std::filesystem::path Product::defaultPresetFolder() const {
    return documentsFolder() / kMaker / folderName();
}

}  // namespace vanta
