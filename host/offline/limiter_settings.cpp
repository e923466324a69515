#include "host/offline/limiter_settings.hpp"

#include "foundation/channel_layout.hpp"
#include "plugin/parameters/number_text.hpp"

namespace vanta {

LimiterSettings::LimiterSettings()
    : GenericPluginBase(kStereoLayout), VantaParameters(static_cast<GenericPluginBase&>(*this)) {}

AbstractPluginParameter* LimiterSettings::find(std::string_view name) const {
    for (AbstractPluginParameter* parameter : parameters) {
        if (equalsIgnoringCase(parameter->name(), name)) return parameter;
    }
    return nullptr;
}

void LimiterSettings::applyTo(GenericParameterOwner& target) const {
    const ChangeBlock block(target);
    for (const AbstractPluginParameter* parameter : parameters) {
        target.parameterAt(parameter->index())->setValue(parameter->value(), 0);
    }
}

}  // namespace vanta
