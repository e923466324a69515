#include "host/vst3/parameter_list.hpp"

#include <algorithm>
#include <charconv>
#include <cmath>

#include <fmt/format.h>

#include "host/vst3/utf16.hpp"

namespace vanta::vst3 {
namespace {

constexpr double kLargestControllerValue = 127.0;

double clamped(double position) {
    return position >= 0.0 ? std::min(position, 1.0) : 0.0;
}

}  // namespace

ParameterList::ParameterList(const HostedPlugin& plugin, const Programs& programs)
    : plugin_(plugin), programs_(programs), parameters_(describeParameters(plugin.model())) {
    for (const HostParameter& parameter : parameters_) {
        ranges_.push_back({parameter.minimum, parameter.maximum});
        if (std::ranges::find(groups_, parameter.group) == groups_.end()) groups_.push_back(parameter.group);
    }
}

int ParameterList::count() const {
    return ownCount() + (programs_.count() > 0 ? 1 : 0) + kControllers;
}

bool ParameterList::describe(int position, v3_param_info& info) const {
    if (position < 0 || position >= count()) return false;
    const int controller = position - (count() - kControllers);
    info = {};
    if (position < ownCount()) {
        describeOwn(parameters_[static_cast<std::size_t>(position)], info);
    } else if (controller < 0) {
        describeProgram(info);
    } else {
        describeController(controller, info);
    }
    return true;
}

void ParameterList::describeOwn(const HostParameter& parameter, v3_param_info& info) const {
    info.param_id = static_cast<v3_param_id>(parameter.index);
    writeUtf16(parameter.name, info.title);
    writeUtf16(parameter.name, info.short_title);
    writeUtf16(parameter.unit, info.units);
    info.step_count = parameter.stepCount();
    info.default_normalised_value = range(parameter.index).positionOf(parameter.initial);
    info.unit_id = unitOf(parameter.group);
    info.flags = (parameter.isAutomatable ? V3_PARAM_CAN_AUTOMATE : 0) |
                 (parameter.stepCount() > 1 ? V3_PARAM_IS_LIST : 0) |
                 (parameter.isBypass ? V3_PARAM_IS_BYPASS : 0);
}

void ParameterList::describeProgram(v3_param_info& info) const {
    info.param_id = kProgram;
    writeUtf16("Program", info.title);
    writeUtf16("Program", info.short_title);
    info.step_count = programs_.count() - 1;
    info.default_normalised_value = programs_.position();
    info.unit_id = kRootUnit;
    // Not automatable: a preset is loaded on the main thread, at no sample that anybody could name.
    info.flags = V3_PARAM_IS_LIST | V3_PARAM_PROGRAM_CHANGE;
}

void ParameterList::describeController(int controller, v3_param_info& info) const {
    info.param_id = kFirstController + static_cast<v3_param_id>(controller);
    writeUtf16(fmt::format("MIDI Controller {}", controller), info.title);
    writeUtf16(fmt::format("CC {}", controller), info.short_title);
    info.unit_id = kRootUnit;
    info.flags = V3_PARAM_IS_HIDDEN;
}

std::string ParameterList::text(v3_param_id id, double position) const {
    if (isProgram(id)) return programs_.name(programs_.at(position));
    if (isController(id)) return fmt::format("{:.0f}", plain(id, position));
    const HostParameter& parameter = parameters_[id];
    std::string text = plugin_.text(parameter.index, plain(id, position));
    if (!parameter.unit.empty() && text.ends_with(parameter.unit)) {
        text.resize(text.size() - parameter.unit.size());
        while (text.ends_with(' ')) text.pop_back();
    }
    return text;
}

std::optional<double> ParameterList::parse(v3_param_id id, const std::string& text) const {
    if (isProgram(id)) {
        for (int i = 0; i < programs_.count(); ++i) {
            if (programs_.name(i) == text) return programs_.positionOf(i);
        }
        return {};
    }
    if (isController(id)) {
        int value = 0;
        const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
        if (error != std::errc()) return {};
        return position(id, value);
    }
    const std::optional<double> value = plugin_.parse(static_cast<int>(id), text);
    if (!value) return {};
    return position(id, *value);
}

double ParameterList::plain(v3_param_id id, double position) const {
    position = clamped(position);
    if (isProgram(id)) return programs_.at(position);
    if (isController(id)) return position * kLargestControllerValue;
    const HostParameter& parameter = parameters_[id];
    const double value = ranges_[id].valueAt(position);
    return parameter.isStepped() ? std::round(value) : value;
}

double ParameterList::position(v3_param_id id, double plain) const {
    if (isProgram(id)) return programs_.count() > 1 ? clamped(plain / (programs_.count() - 1)) : 0.0;
    if (isController(id)) return clamped(plain / kLargestControllerValue);
    return clamped(ranges_[id].positionOf(plain));
}

int ParameterList::unitOf(const std::string& group) const {
    return 1 + static_cast<int>(std::ranges::find(groups_, group) - groups_.begin());
}

bool ParameterList::describeUnit(int position, v3_unit_info& info) const {
    if (position < 0 || position >= unitCount()) return false;
    const bool isRoot = position == kRootUnit;
    info = {};
    info.id = position;
    info.parent_unit_id = isRoot ? -1 : kRootUnit;
    info.program_list_id = isRoot && programs_.count() > 0 ? kProgramList : -1;
    writeUtf16(isRoot ? "Root" : groups_[static_cast<std::size_t>(position - 1)], info.name);
    return true;
}

}  // namespace vanta::vst3
