#pragma once

#include <cstdint>
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
    /// For how long an input is pulled before the fade to it begins: what filters on the way to it, which
    /// rest while they are not heard, need to fill with signal.
    Property<int> warmUpSamples;

protected:
    void produce(wave::BasicBlock<float>* block, int samples, int flags) override;
    void propertyChanged(AbstractProperty& property) override;

private:
    struct Input {
        explicit Input(wave::Environment& owner) : gain(owner, 1.0f) {}
        FloatParameter gain;
        wave::Producer* source = nullptr;
    };

    void startFade();
    bool runs() const;
    VANTA_REALTIME void warmUp(int samples);

    std::vector<std::unique_ptr<Input>> inputs_;
    bool warmingUp_ = false;
    int warmUpLeft_ = 0;
    std::int64_t expectedPosition_ = 0;
};

}  // namespace vanta
