#pragma once

#include <travesty/edit_controller.h>

#include "host/vst3/instance.hpp"

namespace vanta::vst3 {

class Component;

/// The instance as a host's interface sees it: parameters, texts, and the handler that hears of changes. The
/// host's main thread; values are read and set on any but the audio thread.
class EditController final : public ComInterface {
public:
    EditController(ComObject& object, Instance& instance, Component& component);

    v3_result initialize(v3_funknown** context);
    v3_result terminate();
    v3_result setComponentState(v3_bstream** stream);
    v3_result setState(v3_bstream** stream);
    v3_result getState(v3_bstream** stream);
    std::int32_t parameterCount() noexcept;
    v3_result parameterInfo(std::int32_t position, v3_param_info* info);
    v3_result textOf(v3_param_id id, double position, std::int16_t* text);
    v3_result valueOf(v3_param_id id, std::int16_t* text, double* position);
    double plainOf(v3_param_id id, double position) noexcept;
    double positionOf(v3_param_id id, double plain) noexcept;
    double value(v3_param_id id) noexcept;
    v3_result setValue(v3_param_id id, double position);
    v3_result setHandler(v3_component_handler** handler);
    v3_plugin_view** createView(const char* name) noexcept;

private:
    void setOwn(int index, double position);

    static const v3_edit_controller_cpp kTable;

    Instance& instance_;
    Component& component_;
};

}  // namespace vanta::vst3
