#include "plugin/parameters/plugin_parameter_set.hpp"

#include <utility>

#include "plugin/parameters/abstract_plugin_parameter.hpp"

namespace vanta {

void PluginParameterSet::addManagedObject(std::unique_ptr<ManagedObject> object) {
    parent_->addManagedObject(std::move(object));
}

void PluginParameterSet::parameterChanged(int index, float value, int flags) {
    parent_->parameterChanged(index, value, flags);
}

int PluginParameterSet::addParameter(AbstractPluginParameter& parameter) {
    const int index = parent_->addParameter(parameter);
    if (parameters_.empty()) firstIndex_ = index;
    parameters_.push_back(&parameter);
    return index;
}

void PluginParameterSet::copyFrom(const PluginParameterSet& other) {
    for (int i = 0; i < parameterCount(); ++i) parameterAt(i)->setValue(other.parameterAt(i)->value(), 0);
}

void PluginParameterSet::reset() {
    for (AbstractPluginParameter* parameter : parameters_) parameter->setValue(parameter->defaultValue(), 0);
}

}  // namespace vanta
