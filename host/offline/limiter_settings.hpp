#pragma once

#include "limiter/parameters/vanta_parameters.hpp"
#include "plugin/base/generic_plugin_base.hpp"

namespace vanta {

/// A parameter table by itself: settings are read, checked and shown without a processor, and then given to
/// as many as there are files.
class LimiterSettings final : public GenericPluginBase, public VantaParameters {
public:
    LimiterSettings();

    /// Null if there is none. Without regard to case.
    AbstractPluginParameter* find(std::string_view name) const;
    /// Gives every value to a table of the same make.
    void applyTo(GenericParameterOwner& target) const;

    void beginChange() override {}
    void endChange() override {}
    void parameterChanged(int /*index*/, float /*value*/, int /*flags*/) override {}
};

}  // namespace vanta
