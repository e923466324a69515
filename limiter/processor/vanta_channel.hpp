#pragma once

#include "dsp/detector/db_converter.hpp"
#include "dsp/dither/dither_filter.hpp"
#include "dsp/filter/eq_filter.hpp"
#include "dsp/mixer/mixer.hpp"
#include "dsp/mixer/static_mixer.hpp"
#include "dsp/sr/converter_filter.hpp"
#include "dsp/sr/true_peak_exposer.hpp"
#include "limiter/clippers/overshoot_limiter.hpp"
#include "limiter/engine/dynamics_processor.hpp"
#include "limiter/latency/signal_path_delays.hpp"
#include "limiter/parameters/vanta_parameters.hpp"
#include "limiter/processor/level_signals.hpp"
#include "limiter/processor/style_routing.hpp"
#include "plugin/processor/processor_channel.hpp"
#include "wave/delay.hpp"
#include "wave/router.hpp"
#include "wave/volume_filter.hpp"

namespace vanta {

/// What the channels of one limiter share.
struct VantaChannelShared {
    wave::SubEnvironment& oversampled;
    sr::ConverterStyle& oversampling;
    sr::TruePeakExposer::Style& baseExposer;
    sr::TruePeakExposer::Style& oversampledExposer;
    DynamicsEngine& engine;
    OvershootLimiter::Style& overshoot;
    LevelSignals& levels;
    VantaParameters& parameters;
};

/// The signal path of one channel; its members are in the order of the signal. Before the engine, from
/// the upsamplers on at the engine's rate:
///
///     main -- dcFilter -- upsampler --+                      +-- detectionDelay -- audio ----+
///                                     +-- detectionRouter ---+                               +-- processor
///     side -- dcFilter -- upsampler --+                      +-- detectionPeaks -- trigger --+
///
/// After it, from the downsampler on at the base rate:
///
///     processor -- makeupVolume -- padDelay -- downsampler --+-- outputRouter -- overshootDelay --+
///                                                            |                                    x
///                                                            limitedVolume
///                                                            +-- overshootPeaks -- overshootLimiter
///
///     limitedVolume --+-- outputVolume -- auditionRouter -- dither -- output
///                     +-- outputPeaks -- meters
///
/// Beside it, the main signal with the gain that a side chain makes, for outputRouter, and what is removed,
/// for auditionRouter:
///
///     upsampler -- dryDelay --+-- sideChainVolume (x gain) -- makeupVolume -- padDelay -- downsampler
///                             +-- dryPadDelay -- dryDecimator -- dryOutDelay -- auditionVolume
///                                                                               (x 1 - totalGain)
///     gain -- gainPadDelay -- gainDecimator -- gainDelay -- totalGain (x overshootLimiter)
///
/// `gain` is that of the style's VCA, or of two in a row: the first one's through stageDelay, times the
/// second one's.
class VantaChannel final : public GenericPluginProcessor::Channel {
public:
    VantaChannel(GenericPluginProcessor& owner, const VantaChannelShared& shared);

    /// Pairs the engines of two channels, which only saves time.
    void linkTo(VantaChannel& partner) { processor_.linkTo(partner.processor_); }

    /// For another rate. Allocates.
    void setDelayLimits(const SignalPathLimits& limits);

    // Audio thread, without allocation.

    /// `style` is the engine's index of the style in use.
    void setDelays(const SignalPathDelays& delays, const StyleRouting& routing, int style);
    /// dB; `targetDb` is the highest level that leaves the channel.
    void setLevels(float outputLevelDb, float targetDb);
    /// Lets Convolver `index` hand on its input late but unsmoothed; -1 lets none.
    void setTap(int index) { processor_.setTap(index); }
    void setOvershootMode(OvershootLimiter::LimitingMode mode) { overshootLimiter_.mode = mode; }
    void setDitherBits(int bits) { dither_.bits = bits; }

    /// After the overshoot style was made anew for another rate. Allocates.
    void replaceOvershootKernel(OvershootLimiter::Style& style) { overshootLimiter_.setStyle(style); }

    /// All gain reduction of this channel as a factor, aligned with the output.
    wave::Producer& totalGain() { return totalGain_; }
    /// The unlimited signal, aligned with the output.
    wave::Producer& drySignal() { return dryOutDelay_; }
    /// What is about to be quantised: the output, or the audition of what is removed.
    wave::Producer& signalBeforeDither() { return auditionRouter_; }
    /// The limited signal in front of the Unity Gain trim.
    wave::Producer& limitedSignal() { return limitedVolume_; }
    /// The highest of its inter-sample envelope, or itself with True Peak Metering off.
    wave::Producer& outputEnvelope() { return outputPeaks_; }

private:
    void wireInputs();
    void wireOutput(const VantaChannelShared& shared);
    void wireOvershootStage(const VantaChannelShared& shared);
    void wireGain();
    void wireAudition();
    void bind(VantaParameters& parameters);
    void prepareSwitch(const SignalPathDelays& delays);
    void routeGain(const StyleRouting& routing, int style);
    int audioDelayOf(int vca, int style) const;

    DynamicsEngine& engine_;
    const wave::SubEnvironment& oversampled_;
    EQFilter dcFilters_[2];  ///< [0] main, [1] side chain, here and below
    sr::InterpolatorFilter upsamplers_[2];
    wave::Router detectionRouter_;
    wave::DelayFilter dryDelay_;
    wave::VolumeFilter sideChainVolume_;
    sr::TruePeakExposer detectionPeaks_;
    wave::DelayFilter detectionDelay_;
    DynamicsEngine::Processor processor_;
    wave::VolumeFilter makeupVolumes_[2];
    wave::DelayFilter padDelays_[2];
    wave::DelayFilter dryPadDelay_;
    wave::DelayFilter gainPadDelay_;
    sr::DecimatorFilter downsamplers_[2];
    wave::Router outputRouter_;
    sr::TruePeakExposer overshootPeaks_;
    OvershootLimiter overshootLimiter_;
    wave::DelayFilter overshootDelay_;
    wave::VolumeFilter limitedVolume_;
    sr::TruePeakExposer outputPeaks_;
    wave::VolumeFilter outputVolume_;
    sr::SkipDecimatorFilter dryDecimator_;
    sr::SkipDecimatorFilter gainDecimator_;
    wave::DelayFilter stageDelay_;
    Mixer gainMixer_;
    wave::DelayFilter gainDelay_;
    Mixer totalGain_;
    wave::DelayFilter dryOutDelay_;
    wave::FloatParameterSource unityLevel_;
    StaticMixer residualGain_;
    wave::VolumeFilter auditionVolume_;
    wave::Router auditionRouter_;
    DitherFilter dither_;
};

}  // namespace vanta
