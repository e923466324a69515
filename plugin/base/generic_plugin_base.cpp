#include "plugin/base/generic_plugin_base.hpp"

namespace vanta {

AbstractPluginParameter* GenericPluginBase::parameterAt(int index) const {
    return parameters[static_cast<std::size_t>(index)];
}

int GenericPluginBase::addParameter(AbstractPluginParameter& parameter) {
    parameters.push_back(&parameter);
    return static_cast<int>(parameters.size()) - 1;
}

int GenericPluginBase::addGroupName(const std::string& name) {
    groupNames.push_back(name);
    return static_cast<int>(groupNames.size()) - 1;
}

}  // namespace vanta
