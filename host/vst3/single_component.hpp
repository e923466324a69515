#pragma once

#include "host/vst3/audio_processor.hpp"
#include "host/vst3/component.hpp"
#include "host/vst3/edit_controller.hpp"
#include "host/vst3/units.hpp"

namespace vanta::vst3 {

/// One instance as hosts see it: processor and controller in one object, which so share the model and need no
/// messages between them.
class SingleComponent final : public ComObject {
public:
    /// `factoryContext` is what the host gave to the factory, or null.
    SingleComponent(EmbeddedViewFactory views, v3_funknown** factoryContext);

protected:
    ComInterface* interfaceOf(const std::uint8_t* id) noexcept override;

private:
    Instance instance_;
    Component component_{*this, instance_};
    AudioProcessor processor_{*this, instance_};
    ContextRequirements requirements_{*this};
    EditController controller_{*this, instance_, component_};
    UnitInformation units_{*this, instance_};
    MidiMapping midiMapping_{*this};
};

}  // namespace vanta::vst3
