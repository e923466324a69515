#pragma once

#include <string>
#include <vector>

namespace vanta {

class GenericPlugin;

/// What hosts are told of a parameter. Its index is its number in every format, for good.
struct HostParameter {
    int index = 0;
    std::string name;
    std::string symbol;  ///< the name in lower case, with underscores
    std::string group;
    std::string unit;      ///< behind a number; empty if there is none
    double minimum = 0.0;  ///< in own numbers, like all that follow
    double maximum = 1.0;
    double initial = 0.0;
    std::vector<std::string> labels;  ///< of a stepped parameter, from the minimum on; else empty
    bool isAutomatable = true;
    bool isBypass = false;
    bool isInterface = false;  ///< a preference that does not affect the sound

    bool isStepped() const { return !labels.empty(); }
    /// 0 for a continuous parameter.
    int stepCount() const { return isStepped() ? static_cast<int>(labels.size()) - 1 : 0; }
};

/// Of every instance.
int hostParameterCount();

/// In the order of their indexes.
std::vector<HostParameter> describeParameters(const GenericPlugin& model);

}  // namespace vanta
