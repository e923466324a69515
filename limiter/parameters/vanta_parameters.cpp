#include "limiter/parameters/vanta_parameters.hpp"

#include <stdexcept>
#include <string>

#include "limiter/parameters/meter_order.hpp"
#include "limiter/parameters/parameter_help.hpp"

namespace vanta {
namespace {

void setUpNumber(FloatPluginParameter& parameter, const ParameterValues& values) {
    FloatDisplay& display = parameter.display;
    if (values.unit) display.setUnit(parameterUnit(*values.unit));
    if (!values.format.empty()) display.format = values.format;
    if (values.formatter) display.formatter = values.formatter;
    display.curve = curveFunction(values.curve);
    display.inverseCurve = inverseCurveFunction(values.curve);
    display.curveScale = values.engineScale;
    display.displayScale = values.shownScale;
    parameter.setRange(values.minimum, values.maximum, parameter.fromDisplay(values.initial));
}

void setUpChoice(IndexedParameter& parameter, const ParameterValues& values) {
    parameter.setLabels(values.labels);
    parameter.setRange(static_cast<int>(values.minimum), static_cast<int>(values.maximum),
                       static_cast<int>(values.initial));
}

void setUp(AbstractPluginParameter& parameter, const ParameterRow& row) {
    if (parameter.name() != row.name) {
        throw std::logic_error("the parameter table has " + std::string(row.name) + " where " +
                               parameter.name() + " is built");
    }
    parameter.automatable = row.automatable;
    parameter.helpText = parameterHelp(row.name);
    if (row.values.kind == ParameterValues::Kind::Number) {
        setUpNumber(dynamic_cast<FloatPluginParameter&>(parameter), row.values);
    } else {
        setUpChoice(dynamic_cast<IndexedParameter&>(parameter), row.values);
    }
}

}  // namespace

VantaParameters::VantaParameters(GenericPluginBase& plugin) : owner_(plugin) {
    setUpParameters();
    for (ChannelLinkParameter* link : {&channelLinkTransients, &channelLinkRelease}) {
        link->setSwitches(channelLinkCenter, channelLinkLfe);
    }
    outputLevel.display.unitChoice = [this]() -> const FloatPluginParameterUnit& {
        return DBParameterUnit::outputLevel(truePeakLimiting.mapped());
    };
    describePlugin();
}

void VantaParameters::setUpParameters() {
    int index = gain.index();
    const int members = owner_.parameterCount() - index;
    if (members != kParameterCount) {
        throw std::logic_error("the parameter table has " + std::to_string(kParameterCount) +
                               " rows, but VantaParameters has " + std::to_string(members) + " members");
    }
    for (const ParameterRow& row : kParameterTable) {
        AbstractPluginParameter& parameter = *owner_.parameterAt(index++);
        setUp(parameter, row);
        if (row.role == ParameterRole::Bypass) owner_.bypassParameter = &parameter;
        if (row.role == ParameterRole::ReceiveMidi) owner_.receiveMidiParameter = &parameter;
    }
}

void VantaParameters::describePlugin() {
    owner_.hasOfflineProcessor = true;
    owner_.supportsMono = true;
    owner_.supportsSurround = true;
    owner_.sideChainAvailable = true;
    owner_.gainReductionSource = levelPosition(0, ChannelLevel::Gain);
    owner_.audioSourceCount = kCountOf<RecordedAudio>;
    owner_.levelSourcesPerChannel = kCountOf<ChannelLevel>;
    owner_.globalLevelSources = kCountOf<ProgrammeLevel>;
}

std::vector<AbstractPluginParameter*> VantaParameters::parametersWith(bool ParameterRow::*property) const {
    std::vector<AbstractPluginParameter*> found;
    int index = gain.index();
    for (const ParameterRow& row : kParameterTable) {
        if (row.*property) found.push_back(owner_.parameterAt(index));
        ++index;
    }
    return found;
}

}  // namespace vanta
