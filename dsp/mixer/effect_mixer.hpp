#pragma once

#include "wave/float_parameter_source.hpp"

namespace vanta {

/// Mixes two sources by a position that may move. At either end the other source is not pulled.
class EffectMixer final : public wave::Source {
public:
    enum PanningLaw : int {
        BothFull,      ///< both at full level in the middle
        Linear,        ///< a linear crossfade
        ConstantPower  ///< the sum of the powers stays
    };

    EffectMixer(wave::Environment& owner, wave::Producer& a, wave::Producer& b)
        : Source(owner), mix(owner, 0.0f, -1.0f, 1.0f), panningLaw(nullptr, BothFull), a_(a), b_(b) {}

    wave::FloatParameterBus mix;  ///< -1, only A, to 1, only B
    Property<int> panningLaw;     ///< a PanningLaw

protected:
    bool settled() const override { return true; }
    void produce(wave::BasicBlock<float>* block, int samples, int flags) override;

private:
    wave::Producer& a_;
    wave::Producer& b_;
};

}  // namespace vanta
