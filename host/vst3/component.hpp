#pragma once

#include <travesty/component.h>

#include "host/vst3/instance.hpp"

namespace vanta::vst3 {

/// The instance as a component: its life, buses and state. The host's main thread.
class Component final : public ComInterface {
public:
    Component(ComObject& object, Instance& instance);

    v3_result initialize(v3_funknown** context);
    v3_result terminate();
    v3_result controllerClass(std::uint8_t* id) noexcept;
    v3_result setIoMode(std::int32_t mode) noexcept;
    std::int32_t busCount(std::int32_t mediaType, std::int32_t direction) noexcept;
    v3_result busInfo(std::int32_t mediaType, std::int32_t direction, std::int32_t index, v3_bus_info* info);
    v3_result routing(v3_routing_info* input, v3_routing_info* output) noexcept;
    v3_result activateBus(std::int32_t mediaType, std::int32_t direction, std::int32_t index, v3_bool active);
    v3_result setActive(v3_bool active);
    v3_result setState(v3_bstream** stream);
    v3_result getState(v3_bstream** stream);

private:
    static const v3_component_cpp kTable;

    Instance& instance_;
    bool initialized_ = false;
};

}  // namespace vanta::vst3
