#pragma once

#include <memory>
#include <string>

#include "host/aax/standin/aax.hpp"
#include "plugin/parameters/abstract_plugin_parameter.hpp"

namespace vanta {

/// The host's number of a parameter: its index, in decimal.
std::string aaxParameterId(int index);
/// The index that a host's number says; -1 if it is none.
int aaxParameterIndex(AAX_CParamID id);

/// What the host knows of a parameter of the model, which outlives it: a float with its own numbers, or an
/// index that counts from 0 on.
std::unique_ptr<AAX_IParameter> makeHostParameter(const AbstractPluginParameter& parameter);

/// The own number that a host's 0 to 1, or a host parameter's real value, stands for, and the other way.
/// Nothing is lost on the way.
double hostNumber(const AbstractPluginParameter& parameter, float value);
float ownNumber(const AbstractPluginParameter& parameter, double hostNumber);

}  // namespace vanta
