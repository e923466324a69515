#pragma once

#include <memory>
#include <vector>

#include "dsp/convolver/convolver.hpp"
#include "dsp/mixer/mixer.hpp"
#include "limiter/engine/dynamics_engine.hpp"
#include "limiter/engine/element_pool.hpp"
#include "limiter/engine/signal_limit.hpp"
#include "wave/delay.hpp"
#include "wave/router.hpp"

namespace vanta {

/// The dynamics engine of one channel: a pool of elements whose inputs and outputs all meet at the
/// modulation matrix. It fixes no signal path; a style draws one with its slots.
class DynamicsEngine::Processor final : public wave::Filter, public PropertyOwner {
public:
    /// `channelSignal` is the audio input.
    Processor(DynamicsEngine& engine, int channel, wave::Producer& channelSignal);
    ~Processor() override;

    /// What the trigger input reads; the audio input unless set.
    void setTrigger(wave::Producer& trigger) { triggerInput_.source = &trigger; }
    VCA& vca(int index) { return *elements_.vcas()[static_cast<std::size_t>(index)]; }
    /// The gain that VCA `index` applies.
    wave::Producer& vcaGain(int index) { return vca(index).gain(); }
    /// Lets Convolver `index` hand on its input with a Convolver's delay, unsmoothed; -1 ends that.
    void setTap(int index);
    /// Computes the Capacitors of this channel and of its partner side by side.
    void linkTo(Processor& partner);
    /// Around the making of new kernels. Set-up; `rebuildConvolvers` allocates.
    void dropConvolvers() { convolvers_.clear(); }
    void rebuildConvolvers();
    /// After a change of what look-ahead depends on.
    VANTA_REALTIME void orderLookAhead() { elements_.orderLookAhead(); }

protected:
    bool settled() const override { return true; }
    void process(const wave::BasicBlock<float>& in, wave::BasicBlock<float>* out, int samples,
                 int flags) override;
    void propertyChanged(AbstractProperty& property) override;

private:
    ElementWiring<ElementKind::Convolver> convolverWiring(int index) { return {engine_, voice_, index}; }
    void buildSolo();

    DynamicsEngine& engine_;
    wave::InputForwarder audioInput_;
    wave::Forwarder triggerInput_;
    ModulationMatrix::VoiceMatrix& voice_;
    ElementPool elements_;
    Mixer filterMonitor_;  ///< the filters that are soloed
    std::vector<std::unique_ptr<Property<bool>>> filterSolo_;
    wave::Router outputRouter_;
    std::unique_ptr<SignalLimit> outputLimit_;  ///< null where signals are not limited
    wave::Producer* output_ = &outputRouter_;
    wave::DelayFilter tapDelay_;
    int tapIndex_ = -1;
    std::vector<std::unique_ptr<Convolver>> convolvers_;
};

}  // namespace vanta
