#pragma once

#include "wave/float_parameter_source.hpp"

namespace vanta::wave {

/// Multiplies its source with one or two gains. At unity it hands on the block of its source, at zero the
/// silent block.
class VolumeFilter final : public Filter {
public:
    class MuteTest {
    public:
        virtual ~MuteTest() = default;
        virtual bool muted() = 0;
    };

    explicit VolumeFilter(Environment& owner) : Filter(owner), gain(owner, 1.0f) {}

    FloatParameterBus gain;
    Producer* secondGain = nullptr;
    MuteTest* muteTest = nullptr;  ///< while it says so, the source is not even pulled

protected:
    bool settled() const override { return !muteTest; }
    void produce(BasicBlock<float>* block, int samples, int flags) override;
    void process(const BasicBlock<float>& in, BasicBlock<float>* out, int samples, int flags) override;
};

}  // namespace vanta::wave
