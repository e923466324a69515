#include "plugin/parameters/float_plugin_parameter_unit.hpp"

#include <algorithm>
#include <array>

#include "plugin/parameters/number_text.hpp"
#include "plugin/parameters/parameter_units.hpp"

namespace vanta {

bool FloatPluginParameterUnit::parseSpecial(const std::string& /*text*/, float* /*out*/) const {
    return false;
}

void FloatPluginParameterUnit::configure(FloatDisplay& /*display*/) const {}

const FloatPluginParameterUnit::Token* FloatPluginParameterUnit::find(std::string_view word) const {
    const auto found = std::find_if(tokens_.begin(), tokens_.end(),
                                    [&](const Token& t) { return equalsIgnoringCase(t.token, word); });
    return found == tokens_.end() ? nullptr : &*found;
}

const FloatPluginParameterUnit* FloatPluginParameterUnit::registered(std::string_view text) {
    static const std::array<const FloatPluginParameterUnit*, 7> units{
        &HzParameterUnit::instance(),     &MsParameterUnit::instance(), &SecParameterUnit::instance(),
        &DBParameterUnit::db(),           &DBParameterUnit::dbtp(),     &OctavesParameterUnit::instance(),
        &PercentParameterUnit::instance()};
    const auto found = std::find_if(units.begin(), units.end(),
                                    [&](auto* unit) { return equalsIgnoringCase(unit->text(), text); });
    return found == units.end() ? nullptr : *found;
}

}  // namespace vanta
