#pragma once

#include <memory>
#include <string>
#include <vector>

#include "plugin/base/generic_parameter_owner.hpp"

namespace vanta {

/// A group of parameters: their owner, which passes everything on to its own owner.
class PluginParameterSet : public GenericParameterOwner {
public:
    explicit PluginParameterSet(GenericParameterOwner& parent) : parent_(&parent) {}
    PluginParameterSet(const PluginParameterSet&) = delete;
    PluginParameterSet& operator=(const PluginParameterSet&) = delete;

    void beginChange() override { parent_->beginChange(); }
    void endChange() override { parent_->endChange(); }
    void addManagedObject(std::unique_ptr<ManagedObject> object) override;
    /// Of this set alone, as is `parameterAt`.
    int parameterCount() const override { return static_cast<int>(parameters_.size()); }
    AbstractPluginParameter* parameterAt(int index) const override {
        return parameters_[static_cast<std::size_t>(index)];
    }
    int firstParameterIndex() const override { return firstIndex_; }
    void parameterChanged(int index, float value, int flags) override;
    int addParameter(AbstractPluginParameter& parameter) override;
    int addGroupName(const std::string& name) override { return parent_->addGroupName(name); }

    /// Copies the values of a set of the same type.
    void copyFrom(const PluginParameterSet& other);
    /// Sets every parameter to its default.
    void reset();

private:
    int firstIndex_ = -1;  ///< -1 while the set is empty
    GenericParameterOwner* parent_;
    std::vector<AbstractPluginParameter*> parameters_;
};

}  // namespace vanta
