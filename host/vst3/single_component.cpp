#include "host/vst3/single_component.hpp"

#include <utility>

namespace vanta::vst3 {

SingleComponent::SingleComponent(EmbeddedViewFactory views, v3_funknown** factoryContext)
    : instance_(std::move(views), *this) {
    instance_.timer.look(RunLoopTimer::Source::Factory, factoryContext);
}

ComInterface* SingleComponent::interfaceOf(const std::uint8_t* id) noexcept {
    const struct {
        const std::uint8_t* id;
        ComInterface& role;
    } roles[] = {
        {v3_funknown_iid, component_},
        {v3_plugin_base_iid, component_},
        {v3_component_iid, component_},
        {v3_audio_processor_iid, processor_},
        {v3_process_context_requirements_iid, requirements_},
        {v3_edit_controller_iid, controller_},
        {v3_unit_information_iid, units_},
        {v3_midi_mapping_iid, midiMapping_},
    };
    for (const auto& known : roles) {
        if (v3_tuid_match(id, known.id)) return &known.role;
    }
    return nullptr;
}

}  // namespace vanta::vst3
