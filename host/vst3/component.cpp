#include "host/vst3/component.hpp"

#include "host/vst3/streams.hpp"

namespace vanta::vst3 {

const v3_component_cpp Component::kTable{
    kUnknown,
    {
        .initialize = entry<&Component::initialize>,
        .terminate = entry<&Component::terminate>,
    },
    {
        .get_controller_class_id = entry<&Component::controllerClass>,
        .set_io_mode = entry<&Component::setIoMode>,
        .get_bus_count = entry<&Component::busCount>,
        .get_bus_info = entry<&Component::busInfo>,
        .get_routing_info = entry<&Component::routing>,
        .activate_bus = entry<&Component::activateBus>,
        .set_active = entry<&Component::setActive>,
        .set_state = entry<&Component::setState>,
        .get_state = entry<&Component::getState>,
    },
};

Component::Component(ComObject& object, Instance& instance)
    : ComInterface(kTable, object), instance_(instance) {}

v3_result Component::initialize(v3_funknown** context) {
    if (initialized_) return V3_FALSE;
    initialized_ = true;
    instance_.reports.claimMainThread();
    instance_.timer.look(RunLoopTimer::Source::Context, context);
    return V3_OK;
}

v3_result Component::terminate() {
    initialized_ = false;
    instance_.timer.stop();
    instance_.reports.setHandler(nullptr);
    return V3_OK;
}

/// There is none: the object is its own controller, which a host finds by asking for that interface.
v3_result Component::controllerClass(std::uint8_t*) noexcept {
    return V3_NOT_IMPLEMENTED;
}

v3_result Component::setIoMode(std::int32_t) noexcept {
    return V3_NOT_IMPLEMENTED;
}

std::int32_t Component::busCount(std::int32_t mediaType, std::int32_t direction) noexcept {
    return instance_.buses.count(mediaType, direction);
}

v3_result Component::busInfo(std::int32_t mediaType, std::int32_t direction, std::int32_t index,
                             v3_bus_info* info) {
    const bool done = info && instance_.buses.describe(mediaType, direction, index, *info);
    return done ? V3_OK : V3_INVALID_ARG;
}

v3_result Component::routing(v3_routing_info*, v3_routing_info*) noexcept {
    return V3_NOT_IMPLEMENTED;
}

v3_result Component::activateBus(std::int32_t mediaType, std::int32_t direction, std::int32_t index,
                                 v3_bool active) {
    return instance_.buses.activate(mediaType, direction, index, active != 0) ? V3_OK : V3_INVALID_ARG;
}

v3_result Component::setActive(v3_bool active) {
    const bool wanted = active != 0;
    if (wanted == instance_.active.load()) return V3_OK;
    if (wanted) {
        if (!instance_.timer.isRunning()) instance_.plugin.pumpByThread();
        const v3_process_setup& setup = instance_.setup;
        if (!instance_.plugin.activate(setup.sample_rate, setup.max_block_size)) return V3_FALSE;
    }
    instance_.activeLatency.store(instance_.plugin.latency());
    instance_.automation.stopped();
    instance_.active.store(wanted);
    instance_.reports.setActive(wanted);
    return V3_OK;
}

v3_result Component::setState(v3_bstream** stream) {
    if (!stream) return V3_INVALID_ARG;
    const auto bytes = readAll(stream);
    if (!bytes || !instance_.plugin.restoreState(*bytes)) return V3_FALSE;
    instance_.reports.forgetEdits();
    instance_.programs.follow(instance_.plugin.model());
    return V3_OK;
}

v3_result Component::getState(v3_bstream** stream) {
    if (!stream) return V3_INVALID_ARG;
    return writeAll(stream, instance_.plugin.saveState()) ? V3_OK : V3_FALSE;
}

}  // namespace vanta::vst3
