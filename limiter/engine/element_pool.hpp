#pragma once

#include <memory>
#include <span>
#include <vector>

#include "dsp/delay/averaging_filter.hpp"
#include "dsp/delay/delay_line.hpp"
#include "dsp/detector/db_converter.hpp"
#include "dsp/detector/peak_hold.hpp"
#include "dsp/detector/transfer_curve_processor.hpp"
#include "dsp/envelope/capacitor.hpp"
#include "dsp/filter/eq_filter.hpp"
#include "dsp/mixer/effect_mixer.hpp"
#include "dsp/mixer/mixer.hpp"
#include "dsp/saturator/saturator.hpp"
#include "limiter/engine/band_splitter.hpp"
#include "limiter/engine/detector_chain.hpp"
#include "limiter/engine/element_wiring.hpp"
#include "limiter/engine/staged_control.hpp"
#include "limiter/engine/vca.hpp"

namespace vanta {

/// A high-pass followed by a low-pass.
struct FilterSet {
    explicit FilterSet(wave::Environment& environment) : highPass(environment), lowPass(environment) {}
    EQFilter highPass;
    EQFilter lowPass;
};

/// All elements of one channel, each with its inputs and its output on the modulation matrix, and each kind
/// under the count of how many are active. Convolvers are not among them: they depend on kernels that a
/// change of rate replaces, see DynamicsEngine::Processor.
class ElementPool {
public:
    template <typename Element>
    using List = std::vector<std::unique_ptr<Element>>;

    ElementPool(DynamicsEngine& engine, ModulationMatrix::VoiceMatrix& voice, int channel);

    /// Puts what look-ahead depends on in its place of the engine's course.
    VANTA_REALTIME void orderLookAhead();

    std::span<const std::unique_ptr<FilterSet>> filters() const { return filters_; }
    std::span<const std::unique_ptr<Capacitor>> capacitors() const { return capacitors_; }
    std::span<const std::unique_ptr<DynamicsEngine::VCA>> vcas() const { return vcas_; }

private:
    /// What of an element runs only while it is active.
    using Nodes = NumActiveParameter::Slot;

    template <ElementKind kind>
    void build(DynamicsEngine& engine, ModulationMatrix::VoiceMatrix& voice);

    // One for each kind: makes an element and wires it.
    Nodes make(const ElementWiring<ElementKind::Filter>& wiring);
    Nodes make(const ElementWiring<ElementKind::Saturator>& wiring);
    Nodes make(const ElementWiring<ElementKind::Crossover>& wiring);
    Nodes make(const ElementWiring<ElementKind::Detector>& wiring);
    Nodes make(const ElementWiring<ElementKind::Converter>& wiring);
    Nodes make(const ElementWiring<ElementKind::PeakHold>& wiring);
    Nodes make(const ElementWiring<ElementKind::AveragingFilter>& wiring);
    Nodes make(const ElementWiring<ElementKind::Capacitor>& wiring);
    Nodes make(const ElementWiring<ElementKind::TransferCurve>& wiring);
    Nodes make(const ElementWiring<ElementKind::Mixer>& wiring);
    Nodes make(const ElementWiring<ElementKind::Operator>& wiring);
    Nodes make(const ElementWiring<ElementKind::Delay>& wiring);
    Nodes make(const ElementWiring<ElementKind::Constant>& wiring);
    Nodes make(const ElementWiring<ElementKind::Vca>& wiring);

    template <ElementKind kind>
    StagedControl& stage(List<StagedControl>& list, const ElementWiring<kind>& wiring,
                         StagedControl::Role role, typename ElementWiring<kind>::InputName input);

    DynamicsEngine& engine_;
    int channel_;
    List<FilterSet> filters_;
    List<Saturator> saturators_;
    List<DynamicsEngine::BandSplitter> crossovers_;
    List<DetectorChain> detectors_;
    List<DBConverter> converters_;
    List<PeakHold> peakHolds_;
    List<StagedControl> averages_;
    List<StagedControl> holds_;
    List<AveragingFilter> averagingFilters_;
    Capacitor::Style capacitorStyle_;
    List<Capacitor> capacitors_;
    List<TransferCurveProcessor> transferCurves_;
    List<EffectMixer> mixers_;
    List<Mixer> operators_;
    List<DelayLine> delays_;
    List<StagedControl> delayControls_;
    List<DynamicsEngine::VCA> vcas_;
    List<StagedControl> leads_;
};

}  // namespace vanta
