#pragma once

#include "limiter/engine/dynamics_engine.hpp"
#include "limiter/engine/engine_parameters.hpp"
#include "limiter/modulation/voice_matrix.hpp"

namespace vanta {

/// Where one element of a channel meets the engine: its inputs are targets of the channel's voice, its output
/// is a source, and its properties follow parameters. Inputs and parameters go by the names of EngineTable,
/// which the compiler looks up. Set-up.
template <ElementKind kind>
class ElementWiring {
public:
    struct InputName {
        consteval InputName(const char* name) : index(inputIndex(kind, name)) {}
        int index;
    };
    struct ParameterName {
        consteval ParameterName(const char* name) : index(parameterIndex(kind, name)) {}
        int index;
    };

    ElementWiring(DynamicsEngine& engine, ModulationMatrix::VoiceMatrix& voice, int element)
        : engine_(engine), voice_(voice), element_(element) {}

    int element() const { return element_; }
    wave::Environment& environment() const { return engine_.environment(); }
    const DynamicsEngineConfiguration& configuration() const { return engine_.layout().configuration(); }

    /// What the slots send to an input.
    wave::Producer& input(InputName name) const { return voice_.controller(target(name)); }
    int target(InputName name) const { return engine_.layout().targetIndex(kind, element_, name.index); }
    /// Lets a parameter set a property.
    template <typename Cell>
    void drive(ParameterName name, Cell& cell) const {
        engine_.parameters().drive(position(name), cell);
    }
    /// Lets the corner frequency of a filter take the filter out of the path.
    void switchOff(ParameterName name, Property<bool>& enabled) const {
        engine_.parameters().switchOff(position(name), enabled);
    }
    /// Makes a producer what slots take from this element; `output` counts those of an element with several.
    void setSource(wave::Producer& producer, int output = 0) const {
        voice_.setSource(engine_.layout().sourceIndex(kind, element_, output), producer);
    }

private:
    int position(ParameterName name) const { return engine_.layout().position(kind, element_, name.index); }

    DynamicsEngine& engine_;
    ModulationMatrix::VoiceMatrix& voice_;
    int element_;
};

}  // namespace vanta
