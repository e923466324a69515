#include "host/common/host_parameters.hpp"

#include <cctype>

#include "limiter/parameters/parameter_table.hpp"
#include "plugin/model/generic_plugin.hpp"
#include "plugin/parameters/float_plugin_parameter.hpp"
#include "plugin/parameters/indexed_parameter.hpp"

namespace vanta {
namespace {

std::string symbolOf(const std::string& name) {
    std::string symbol;
    for (const char c : name) {
        const auto byte = static_cast<unsigned char>(c);
        symbol += std::isalnum(byte) ? static_cast<char>(std::tolower(byte)) : '_';
    }
    return symbol;
}

HostParameter describe(const AbstractPluginParameter& parameter, const ParameterRow& row) {
    HostParameter described;
    described.index = parameter.index();
    described.name = parameter.displayName;
    described.symbol = symbolOf(parameter.name());
    described.group = kParameterGroupNames[static_cast<std::size_t>(row.group)];
    described.minimum = static_cast<double>(parameter.minimum());
    described.maximum = static_cast<double>(parameter.maximum());
    described.initial = static_cast<double>(parameter.defaultValue());
    described.isAutomatable = parameter.automatable;
    described.isBypass = row.role == ParameterRole::Bypass;
    described.isInterface = row.followsInterface;
    if (const auto* indexed = dynamic_cast<const IndexedParameter*>(&parameter)) {
        described.labels = indexed->labels();
    } else if (const auto* number = dynamic_cast<const FloatPluginParameter*>(&parameter)) {
        described.unit = number->display.currentUnitText();
    }
    return described;
}

}  // namespace

int hostParameterCount() {
    return static_cast<int>(kParameterTable.size());
}

std::vector<HostParameter> describeParameters(const GenericPlugin& model) {
    std::vector<HostParameter> all;
    for (int i = 0; i < model.parameterCount(); ++i) {
        all.push_back(describe(*model.parameterAt(i), kParameterTable[static_cast<std::size_t>(i)]));
    }
    return all;
}

}  // namespace vanta
