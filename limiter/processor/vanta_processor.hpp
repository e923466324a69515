#pragma once

#include <memory>
#include <vector>

#include "limiter/engine/stereo_linker.hpp"
#include "limiter/parameters/vanta_parameters.hpp"
#include "limiter/processor/level_signals.hpp"
#include "limiter/processor/style_routing.hpp"
#include "limiter/processor/vanta_channel.hpp"
#include "limiter/processor/vanta_meters.hpp"
#include "limiter/styles/style_patch.hpp"
#include "plugin/processor/generic_plugin_processor.hpp"

namespace vanta {

/// The limiter. The Gain knob lowers the engine's threshold and a makeup gain after the engine restores the
/// level, so that the signal is limited at -Gain dBFS and leaves raised by Gain and Output Level.
class VantaProcessor final : public GenericPluginProcessor,
                             public VantaParameters,
                             private DynamicsEngine::StereoLinkerFactory {
public:
    /// A patch, which outlives the processor, takes the place of whatever style is selected.
    explicit VantaProcessor(ChannelLayout layout, const StylePatch* patch = nullptr);
    ~VantaProcessor() override;

    int tailLength() const override { return 64; }
    /// Starts the loudness measurement over as well.
    void reset() override;

    VantaChannel& channel(int index) { return *vantaChannels_[static_cast<std::size_t>(index)]; }

protected:
    void initShared() override;
    int largestLatency(float sampleRate) const override {
        return vanta::largestLatency(sampleRate, mostStages(configuration()));
    }
    void parameterAboutToChange(int index) override;
    void applyPendingParameters() override;
    void sampleRateChanged() override;
    void largestBlockAnnounced(int samples) override { meters_->setLargestHostBlock(samples); }

private:
    std::unique_ptr<DynamicsEngine::AbstractStereoLinker> createStereoLinker() override;

    DynamicsEngineConfiguration configuration() const;
    StageCounts stagesOfStyle(LimitingStyle selected) const;
    /// Of the style in use.
    int styleIndex() const;
    StyleRouting routing() const;

    void buildEngine();
    void buildChannels();
    void buildMeters();
    void listenToParameters();
    void applyInitialValues();

    // On the audio thread, where style and knobs take effect one after the other.
    void loadStyle();
    void reassertMainControls();

    // Handlers, on the audio thread at the end of a drain. None allocates, but `oversamplingChanged`: another
    // factor is another size of every block and every delay of the engine.
    void ditheringChanged(void*);
    void oversamplingChanged(void*);
    void styleChanged(void*);
    void truePeakChanged(void*);
    void sideChainChanged(void*);
    void levelsChanged(void*);
    void meterScaleChanged(void*);
    /// Of the engine, by another factor or another rate of the host. Allocates.
    void oversampledRateChanged(void*);

    void updateLatency();
    void assignLinkers(const StyleRouting& routing);
    void updateDelays();
    void updateOvershootMode();
    void restart();

    const StylePatch* patch_;  ///< null: the styles that the program carries
    int patchIndex_ = 0;       ///< of the patch among the engine's styles
    StyleRouting patchRouting_;
    std::vector<DefaultStereoLinker*> stereoLinkers_;  ///< one per Detector, owned by the engine
    std::unique_ptr<wave::SubEnvironment> oversampledEnvironment_;
    std::unique_ptr<sr::ConverterStyle> oversamplingStyle_;
    std::unique_ptr<sr::TruePeakExposer::Style> baseExposerStyle_;
    std::unique_ptr<sr::TruePeakExposer::Style> oversampledExposerStyle_;
    std::unique_ptr<EngineLayout> engineLayout_;
    std::unique_ptr<ModulationMatrix> modulationMatrix_;
    std::unique_ptr<DynamicsEngine> dynamicsEngine_;
    std::unique_ptr<LevelSignals> levels_;
    std::unique_ptr<OvershootLimiter::Style> overshootStyle_;
    std::vector<std::unique_ptr<VantaChannel>> vantaChannels_;
    std::unique_ptr<VantaMeters> meters_;
};

}  // namespace vanta
