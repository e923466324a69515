#include "host/vst3/edit_controller.hpp"

#include <algorithm>
#include <cmath>
#include <cstring>

#include "host/vst3/component.hpp"
#include "host/vst3/plug_view.hpp"
#include "host/vst3/streams.hpp"
#include "host/vst3/utf16.hpp"

namespace vanta::vst3 {
namespace {

constexpr std::size_t kTextSize = sizeof(v3_str_128) / sizeof(std::int16_t);
/// Seconds by which a host's controls may be late to show what it plays.
constexpr double kLongestLag = 0.5;
/// The only kind of view that hosts ask for.
constexpr const char* kEditor = "editor";

}  // namespace

const v3_edit_controller_cpp EditController::kTable{
    kUnknown,
    {
        .initialize = entry<&EditController::initialize>,
        .terminate = entry<&EditController::terminate>,
    },
    {
        .set_component_state = entry<&EditController::setComponentState>,
        .set_state = entry<&EditController::setState>,
        .get_state = entry<&EditController::getState>,
        .get_parameter_count = entry<&EditController::parameterCount>,
        .get_parameter_info = entry<&EditController::parameterInfo>,
        .get_parameter_string_for_value = entry<&EditController::textOf>,
        .get_parameter_value_for_string = entry<&EditController::valueOf>,
        .normalised_parameter_to_plain = entry<&EditController::plainOf>,
        .plain_parameter_to_normalised = entry<&EditController::positionOf>,
        .get_parameter_normalised = entry<&EditController::value>,
        .set_parameter_normalised = entry<&EditController::setValue>,
        .set_component_handler = entry<&EditController::setHandler>,
        .create_view = entry<&EditController::createView>,
    },
};

EditController::EditController(ComObject& object, Instance& instance, Component& component)
    : ComInterface(kTable, object), instance_(instance), component_(component) {}

v3_result EditController::initialize(v3_funknown** context) {
    return component_.initialize(context);
}

v3_result EditController::terminate() {
    return component_.terminate();
}

/// The component has taken it already, and is this very object.
v3_result EditController::setComponentState(v3_bstream** stream) {
    return stream && readAll(stream) ? V3_OK : V3_INVALID_ARG;
}

/// All there is to store is the component's.
v3_result EditController::setState(v3_bstream** stream) {
    return stream ? V3_OK : V3_INVALID_ARG;
}

v3_result EditController::getState(v3_bstream** stream) {
    return stream ? V3_OK : V3_INVALID_ARG;
}

std::int32_t EditController::parameterCount() noexcept {
    return instance_.parameters.count();
}

v3_result EditController::parameterInfo(std::int32_t position, v3_param_info* info) {
    return info && instance_.parameters.describe(position, *info) ? V3_OK : V3_INVALID_ARG;
}

v3_result EditController::textOf(v3_param_id id, double position, std::int16_t* text) {
    if (!text || !instance_.parameters.has(id)) return V3_INVALID_ARG;
    writeUtf16(instance_.parameters.text(id, position), text, kTextSize);
    return V3_OK;
}

v3_result EditController::valueOf(v3_param_id id, std::int16_t* text, double* position) {
    if (!text || !position || !instance_.parameters.has(id)) return V3_INVALID_ARG;
    const auto parsed = instance_.parameters.parse(id, readUtf16(text, kTextSize));
    if (!parsed) return V3_FALSE;
    *position = *parsed;
    return V3_OK;
}

double EditController::plainOf(v3_param_id id, double position) noexcept {
    return instance_.parameters.has(id) ? instance_.parameters.plain(id, position) : 0.0;
}

double EditController::positionOf(v3_param_id id, double plain) noexcept {
    return instance_.parameters.has(id) ? instance_.parameters.position(id, plain) : 0.0;
}

double EditController::value(v3_param_id id) noexcept {
    const ParameterList& parameters = instance_.parameters;
    if (parameters.isOwn(id)) return instance_.plugin.position(static_cast<int>(id));
    if (parameters.isProgram(id)) return instance_.programs.position();
    if (ParameterList::isController(id))
        return instance_.controllers[id - ParameterList::kFirstController].load();
    return 0.0;
}

v3_result EditController::setValue(v3_param_id id, double position) {
    const ParameterList& parameters = instance_.parameters;
    if (!parameters.has(id) || std::isnan(position)) return V3_INVALID_ARG;
    position = std::clamp(position, 0.0, 1.0);
    if (parameters.isOwn(id)) {
        setOwn(static_cast<int>(id), position);
    } else if (ParameterList::isController(id)) {
        // Kept for the host to read. What the controller moves has heard of it with a block.
        instance_.controllers[id - ParameterList::kFirstController].store(position);
    } else if (instance_.programs.request(instance_.programs.at(position)) &&
               instance_.reports.isMainThread()) {
        // At once, as the host may read the values next; it hears of them later.
        instance_.programs.loadRequested(instance_.plugin.model());
    }
    return V3_OK;
}

void EditController::setOwn(int index, double position) {
    if (instance_.automation.moves(index, kLongestLag * instance_.plugin.sampleRate())) {
        instance_.plugin.hostPositionShown(index, position);
    } else {
        instance_.plugin.hostPositionChanged(index, position);
    }
}

v3_result EditController::setHandler(v3_component_handler** handler) {
    instance_.reports.setHandler(handler);
    instance_.timer.look(RunLoopTimer::Source::Handler, handler);
    return V3_OK;
}

v3_plugin_view** EditController::createView(const char* name) noexcept {
    if (!instance_.views || !name || std::strcmp(name, kEditor) != 0) return nullptr;
    try {
        return (new PlugView(instance_))->pointer();
    } catch (...) {
        return nullptr;
    }
}

}  // namespace vanta::vst3
