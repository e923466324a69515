#pragma once

#include <memory>
#include <vector>

#include "dsp/averaging_filter.hpp"
#include "dsp/capacitor.hpp"
#include "dsp/convolver/convolver.hpp"
#include "dsp/delay_line.hpp"
#include "dsp/effect_mixer.hpp"
#include "dsp/filter/eq_filter.hpp"
#include "dsp/mixer.hpp"
#include "dsp/peak_hold.hpp"
#include "dsp/transfer_curve_processor.hpp"
#include "limiter/engine/detector_chain.hpp"
#include "limiter/engine/dynamics_engine.hpp"
#include "limiter/engine/vca.hpp"
#include "limiter/modulation/voice_matrix.hpp"

namespace vanta {

/// The dynamics engine of one channel: a pool of elements whose inputs and outputs all stand on the
/// modulation matrix. It fixes no signal path; a style draws one with its slots.
class DynamicsEngine::Processor final : public wave::Filter, public PropertyOwner {
public:
    /// `channelSignal` is the audio input.
    Processor(DynamicsEngine& dynamicsEngine, int channel, wave::Producer& channelSignal);
    ~Processor() override;

    /// What the trigger input reads; the audio input unless set.
    void setTrigger(wave::Producer& trigger) { triggerInput.source = &trigger; }
    /// The gain that VCA `index` applies.
    wave::Producer& vcaGain(int index) { return vcas[static_cast<std::size_t>(index)]->gain(); }
    VCA& vca(int index) { return *vcas[static_cast<std::size_t>(index)]; }
    /// Lets Convolver `index` hand on its input with a Convolver's delay, unsmoothed; -1 ends that.
    void setTap(int index);
    /// Computes the Capacitors of this channel and of its partner side by side.
    void linkTo(Processor& partner);
    /// Around the making of new kernels.
    void dropConvolvers();
    void rebuildConvolvers();

protected:
    void process(const wave::BasicBlock<float>& in, wave::BasicBlock<float>* out, int samples,
                 int flags) override;
    void propertyChanged(AbstractProperty& property) override;

private:
    struct FilterSet {
        explicit FilterSet(wave::Environment& environment) : highPass(environment), lowPass(environment) {}
        EQFilter highPass;
        EQFilter lowPass;
    };

    wave::Producer& input(ElementKind kind, int element, int index);
    void setSource(ElementKind kind, int element, wave::Producer& producer);
    int position(ElementKind kind, int element, int parameter) const;
    int built(ElementKind kind) const;

    void buildFilters();
    void buildDetectors(int channel);
    void buildTimeElements();
    void buildCapacitors();
    void buildMixers();
    void buildDelays();
    void buildVcas();

    DynamicsEngine& engine;
    const EngineLayout& layout;
    wave::InputForwarder audioInput;
    wave::Forwarder triggerInput;
    ModulationMatrix::VoiceMatrix& voice;
    Mixer filterMonitor;
    Router outputRouter;
    wave::DelayFilter tapDelay;
    int tapIndex = -1;

    std::vector<std::unique_ptr<FilterSet>> filters;
    std::vector<std::unique_ptr<Property<bool>>> filterSolo;
    std::vector<std::unique_ptr<DetectorChain>> detectors;
    std::vector<std::unique_ptr<PeakHold>> peakHolds;
    std::vector<std::unique_ptr<AveragingFilter>> averagingFilters;
    std::vector<std::unique_ptr<Convolver>> convolvers;
    Capacitor::Style capacitorStyle;
    std::vector<std::unique_ptr<Capacitor>> capacitors;
    std::vector<std::unique_ptr<TransferCurveProcessor>> transferCurves;
    std::vector<std::unique_ptr<EffectMixer>> mixers;
    std::vector<std::unique_ptr<Mixer>> operators;
    std::vector<std::unique_ptr<DelayLine>> delays;
    std::vector<std::unique_ptr<VCA>> vcas;
};

}  // namespace vanta
