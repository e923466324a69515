#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "wave/float_parameter.hpp"
#include "wave/producer.hpp"

namespace vanta::wave {

/// Selects one of several signals with a crossfade. Outside of a fade it publishes the selected block and
/// pulls nothing else. Switched back within a fade, it turns round at once where it stands.
class Router final : public Source, public PropertyOwner {
public:
    Router(Environment& owner, int inputCount);

    /// Wires an input; its gain takes the selection's value at once, without a fade.
    void setInput(int index, Producer& input);
    int inputCount() const { return static_cast<int>(inputs_.size()); }

    Property<int> selected;
    Property<float> fadeTime;  ///< ms
    /// For how long an input is pulled before the fade to it begins: what filters on the way to it, which
    /// rest while they are not heard, need to fill with signal.
    Property<int> warmUpSamples;

protected:
    bool settled() const override { return true; }
    void produce(BasicBlock<float>* block, int samples, int flags) override;
    void propertyChanged(AbstractProperty& property) override;

private:
    struct Input {
        explicit Input(Environment& owner) : gain(owner, 1.0f) {}
        FloatParameter gain;
        Producer* source = nullptr;
    };

    bool runs() const;

    std::vector<std::unique_ptr<Input>> inputs_;
    std::int64_t expectedPosition_ = 0;
    Producer* only_ = nullptr;     ///< what alone is heard until something changes
    std::uint32_t onlyEpoch_ = 0;  ///< for as long as this counts
};

}  // namespace vanta::wave
