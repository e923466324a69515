#pragma once

#include <array>
#include <memory>
#include <vector>

#include "dsp/metering/real_time_audio_buffer.hpp"
#include "limiter/channel_meters.hpp"
#include "limiter/engine/stereo_linker.hpp"
#include "limiter/vanta_channel.hpp"
#include "limiter/vanta_parameters.hpp"
#include "plugin/processor/generic_plugin_processor.hpp"

namespace vanta {

/// The limiter. The Gain knob lowers the engine's threshold and a makeup gain behind the engine restores the
/// level, so that the signal is limited at -Gain dBFS and leaves raised by Gain and Output Level.
class VantaProcessor final : public GenericPluginProcessor,
                             public VantaParameters,
                             private DynamicsEngine::StereoLinkerFactory {
public:
    explicit VantaProcessor(ChannelLayout layout);
    ~VantaProcessor() override;

    int tailLength() const override { return 64; }

    DynamicsEngine& engine() { return *dynamicsEngine; }
    VantaChannel& channel(int index) { return *vantaChannels[static_cast<std::size_t>(index)]; }
    LoudnessMeter& loudnessMeter() { return *loudnessMeter_; }
    RealTimeAudioBuffer& audioBuffer() { return *audioBuffer_; }
    /// The delays that the present settings ask for. Any thread.
    SignalPathDelays delays() const;

protected:
    void initShared() override;
    void parameterAboutToChange(int index) override;
    void notePendingChanges() override;
    void applyPendingParameters() override;
    void sampleRateChanged() override;

private:
    std::unique_ptr<DynamicsEngine::AbstractStereoLinker> createStereoLinker() override;

    void buildEngine();
    void buildMakeup();
    void buildChannels();
    void buildMeters();
    void listenToParameters();
    void applyInitialValues();

    // Handlers, on the audio thread at the end of a drain.
    void ditheringChanged(void*);
    void oversamplingChanged(void*);
    void styleChanged(void*);
    void truePeakChanged(void*);
    void sideChainChanged(void*);
    void levelsChanged(void*);
    void meterScaleChanged(void*);
    void oversampledRateChanged(void*);

    void loadStyle();
    void reassertMainControls();
    void assignLinkers(LimitingStyle current);
    void updateLatency();
    void updateDelays();
    void updateOvershootMode();
    void resetMeters();
    StageCounts stageCounts(LimitingStyle of) const;

    std::vector<DefaultStereoLinker*> stereoLinkers;  ///< one per Detector, owned by the engine
    std::unique_ptr<wave::SubEnvironment> oversampledEnvironment;
    std::unique_ptr<sr::ConverterStyle> oversamplingStyle;
    std::unique_ptr<sr::TruePeakExposer::Style> baseExposerStyle;
    std::unique_ptr<sr::TruePeakExposer::Style> oversampledExposerStyle;
    std::unique_ptr<EngineLayout> engineLayout;
    std::unique_ptr<ModulationMatrix> modulationMatrix;
    std::unique_ptr<DynamicsEngine> dynamicsEngine;
    std::unique_ptr<FloatParameterSource> makeupLevel;
    std::unique_ptr<StaticMixer> makeupSum;
    std::unique_ptr<DBConverter> makeupConverter;
    std::unique_ptr<wave::DelayFilter> makeupDelay;
    std::unique_ptr<DBConverter> ceilingConverter;
    std::unique_ptr<wave::DelayFilter> ceilingDelay;
    std::unique_ptr<OvershootLimiter::Style> overshootStyle;
    std::vector<std::unique_ptr<VantaChannel>> vantaChannels;
    std::unique_ptr<LoudnessMeter> loudnessMeter_;
    std::vector<std::unique_ptr<ChannelMeters>> channelMeters;
    std::unique_ptr<RealTimeAudioBuffer> audioBuffer_;
};

}  // namespace vanta
