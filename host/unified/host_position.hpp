#pragma once

#include "plugin/parameters/abstract_plugin_parameter.hpp"

namespace vanta {

/// Where a value lies between 0 and 1, as hosts keep it: in double precision, so that neighbouring values
/// of a parameter stay apart.
double hostPosition(const AbstractPluginParameter& parameter, float value);

/// The value at a position; the index nearest to it for a stepped parameter.
float valueAt(const AbstractPluginParameter& parameter, double position);

/// A host's value in the parameter's own numbers: stepped parameters take the nearest index, where a host may
/// hand over anything between.
float fromHostValue(const AbstractPluginParameter& parameter, double value);

}  // namespace vanta
