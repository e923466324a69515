#pragma once

#include <memory>
#include <vector>

#include "wave/float_parameter.hpp"
#include "wave/producer.hpp"

namespace vanta {

/// Selects one of several signals with a crossfade. Outside of a fade it publishes the selected block and
/// pulls nothing else.
class Router final : public wave::Source, public PropertyOwner {
public:
    Router(wave::Environment& owner, int inputCount);

    /// Wires an input; its gain stands at once as the selection wants it.
    void setInput(int index, wave::Producer& input);
    int inputCount() const { return static_cast<int>(inputs_.size()); }

    Property<int> selected;
    Property<float> fadeTime;  ///< ms

protected:
    void produce(wave::BasicBlock<float>* block, int samples, int flags) override;
    void propertyChanged(AbstractProperty& property) override;

private:
    struct Input {
        explicit Input(wave::Environment& owner) : gain(owner, 1.0f) {}
        FloatParameter gain;
        wave::Producer* source = nullptr;
    };

    std::vector<std::unique_ptr<Input>> inputs_;
};

}  // namespace vanta
