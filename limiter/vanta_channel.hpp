#pragma once

#include "dsp/db_converter.hpp"
#include "dsp/dither_filter.hpp"
#include "dsp/filter/eq_filter.hpp"
#include "dsp/mixer.hpp"
#include "dsp/sr/converter_filter.hpp"
#include "dsp/sr/true_peak_exposer.hpp"
#include "dsp/static_mixer.hpp"
#include "limiter/engine/dynamics_processor.hpp"
#include "limiter/overshoot_limiter.hpp"
#include "limiter/signal_path_delays.hpp"
#include "limiter/vanta_parameters.hpp"
#include "plugin/processor/generic_plugin_processor.hpp"
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
    wave::Producer& makeup;   ///< the makeup gain, as late as the engine's output
    wave::Producer& ceiling;  ///< Output Level as a factor, as late as that
    VantaParameters& parameters;
};

/// The signal path of one channel: DC filter and upsampling in front of the engine, downsampling and the
/// overshoot stage behind it, and a dry path beside it for side-chain operation and for the audition of what
/// is removed. The members stand in the order of the signal.
class VantaChannel final : public GenericPluginProcessor::Channel {
public:
    VantaChannel(GenericPluginProcessor& owner, const VantaChannelShared& sharedParts);

    /// Pairs the engines of a left and a right channel.
    void linkTo(VantaChannel& partner) { processor_.linkTo(partner.processor_); }

    void setDelayLimits(const SignalPathLimits& limits);
    void setDelays(const SignalPathDelays& delays, VantaParameters::LimitingStyle style);
    /// dB; `targetDb` is the highest level that leaves the channel.
    void setLevels(float outputLevelDb, float targetDb);
    /// Takes up a style: what the Convolvers hand on.
    void setStyle(VantaParameters::LimitingStyle style);
    void setOvershootMode(OvershootLimiter::LimitingMode mode) { overshootLimiter.mode = mode; }
    /// After the overshoot style was made anew.
    void replaceOvershootKernel(OvershootLimiter::Style& style) { overshootLimiter.setStyle(style); }
    void setDitherBits(int bits) { dither.bits = bits; }

    DynamicsEngine::Processor& processor() { return processor_; }
    /// All gain reduction of this channel as a factor, aligned with the output.
    wave::Producer& totalGain() { return totalGain_; }
    /// The unlimited signal, aligned with the output.
    wave::Producer& drySignal() { return dryOutDelay; }
    /// What is about to be quantised: the output, or the audition of what is removed.
    wave::Producer& signalBeforeDither() { return auditionRouter; }
    /// The limited signal in front of the Unity Gain trim.
    wave::Producer& limitedSignal() { return limitedVolume; }
    /// Its inter-sample envelope, or itself with True Peak Metering off.
    wave::Producer& outputEnvelope() { return outputPeaks; }

private:
    void wireDetection(const VantaChannelShared& shared);
    void wireOutput(const VantaChannelShared& shared);
    void wireDryPath(const VantaChannelShared& shared);
    void bind(VantaParameters& parameters);
    void prepareSwitch(const SignalPathDelays& delays);
    void routeGain(VantaParameters::LimitingStyle style);
    int audioDelayOf(int vca, VantaParameters::LimitingStyle style) const;

    DynamicsEngine& engine;
    const wave::SubEnvironment& oversampled;
    EQFilter dcFilters[2];  ///< [0] main, [1] side chain, here and below
    sr::InterpolatorFilter upsamplers[2];
    Router detectionRouter;
    wave::DelayFilter dryDelay;
    VolumeFilter sideChainVolume;
    sr::TruePeakExposer detectionPeaks;
    wave::DelayFilter detectionDelay;
    DynamicsEngine::Processor processor_;
    VolumeFilter makeupVolumes[2];
    wave::DelayFilter padDelays[2];
    wave::DelayFilter dryPadDelay;
    sr::DecimatorFilter downsamplers[2];
    Router outputRouter;
    sr::TruePeakExposer overshootPeaks;
    OvershootLimiter overshootLimiter;
    wave::DelayFilter overshootDelay;
    VolumeFilter limitedVolume;
    sr::TruePeakExposer outputPeaks;
    VolumeFilter outputVolume;
    sr::SkipDecimatorFilter dryDecimator;
    sr::SkipDecimatorFilter gainDecimator;
    wave::DelayFilter stageDelay;
    Mixer gainMixer;
    wave::DelayFilter gainDelay;
    Mixer totalGain_;
    wave::DelayFilter dryOutDelay;
    FloatParameterSource unityLevel;
    StaticMixer residualGain;
    VolumeFilter auditionVolume;
    Router auditionRouter;
    DitherFilter dither;
};

}  // namespace vanta
