#include "plugin/model/interface_defaults.hpp"

#include <algorithm>
#include <system_error>
#include <utility>

namespace vanta {

InterfaceDefaults::InterfaceDefaults(ParameterFileList list, std::filesystem::path file, int version)
    : list_(std::move(list)), file_(std::move(file)), version_(version) {}

void InterfaceDefaults::load() {
    if (list_.size() > 0 && !file_.empty()) loadCollection(list_, file_, version_);
}

void InterfaceDefaults::store(const AbstractPluginParameter& parameter) const {
    const auto& all = list_.parameters();
    const auto found = std::find(all.begin(), all.end(), &parameter);
    if (found == all.end() || file_.empty()) return;
    std::error_code error;
    std::filesystem::create_directories(file_.parent_path(), error);
    // A failure is not reported: the value is in force, only the next instance starts with another one.
    writeFile(list_, file_, version_, static_cast<int>(found - all.begin()), 1);
}

}  // namespace vanta
