#pragma once

#include <array>
#include <atomic>
#include <optional>
#include <vector>

#include "host/aax/guarded.hpp"
#include "host/aax/render_context.hpp"
#include "host/common/model_viewer.hpp"
#include "host/unified/event_pump.hpp"
#include "host/unified/unified_plugin_adapter.hpp"

namespace vanta {

/// An instance as an AAX host sees it. Host parameters stand for those of the plug-in: the host carries every
/// value to the processor, whoever set it.
///
/// Its owner thread is whichever host thread calls GenerateCoefficients; between these calls a thread of our
/// own is.
class AaxPluginAdapter final : public AAX_CEffectParameters, public UnifiedPluginAdapter {
public:
    /// Chunks of a session: all values, and the name of the preset.
    static constexpr AAX_CTypeID kValuesChunk = AAX_FourChars("elck");
    static constexpr AAX_CTypeID kNameChunk = AAX_FourChars("QMPr");
    static constexpr AAX_CTypeID kGainMeter = AAX_FourChars("mtGC");
    /// Block 0 of GetCustomData is a pointer to the model.
    static constexpr AAX_CTypeID kModelBlock = 0;
    /// Another one to a std::vector<ModelViewer*>: those who show it, on the host's main thread.
    static constexpr AAX_CTypeID kViewersBlock = AAX_FourChars("view");

    AaxPluginAdapter() : UnifiedPluginAdapter(RoundTrip::ByHost) {}
    ~AaxPluginAdapter() override;

    // AAX_IEffectParameters

    AAX_Result UpdateParameterNormalizedValue(AAX_CParamID id, double value, std::int32_t source) override;
    AAX_Result GenerateCoefficients() override;
    AAX_Result GetNumberOfChunks(std::int32_t* count) const override;
    AAX_Result GetChunkIDFromIndex(std::int32_t index, AAX_CTypeID* id) const override;
    AAX_Result GetChunkSize(AAX_CTypeID id, std::uint32_t* size) override;
    AAX_Result GetChunk(AAX_CTypeID id, AAX_SPlugInChunk* chunk) override;
    AAX_Result SetChunk(AAX_CTypeID id, const AAX_SPlugInChunk* chunk) override;
    AAX_Result CompareActiveChunk(const AAX_SPlugInChunk* chunk, bool* equal) override;
    AAX_Result ResetFieldData(AAX_CFieldIndex field, void* data, std::uint32_t size) const override;
    AAX_Result GetCurveData(AAX_CTypeID type, const float* values, std::uint32_t count,
                            float* out) const override;
    AAX_Result GetCurveDataDisplayRange(AAX_CTypeID type, float* xMin, float* xMax, float* yMin,
                                        float* yMax) const override;
    AAX_Result GetCustomData(AAX_CTypeID block, std::uint32_t size, void* data,
                             std::uint32_t* written) const override;

    // UnifiedPluginAdapter

    void reportLatency() override;
    void reportParameter(int index, float value) override;

    // Audio thread.

    /// One block.
    VANTA_REALTIME void render(const AaxRenderContext& context);

    // The thread of an offline render, while no block runs.

    /// All that has been set is in effect from the first sample on.
    void prepareOffline();
    /// `inputs` and `outputs` in the host's order. The main signal serves as side chain.
    void processWindow(const float* const* inputs, int inputCount, float* const* outputs, int outputCount,
                       int samples, double tempo);

protected:
    AAX_Result EffectInit() override;
    void transferLevels() override;

private:
    using Inputs = std::array<const float*, 2 * kMaxChannels>;

    /// EffectInit has got to its end: before that nothing below works.
    bool isReady() const { return ready_.load(); }
    VANTA_REALTIME static bool isSupportedRate(float rate);
    void readStemFormats();
    void addMasterBypass();
    void addParameters();

    void takeSampleRate(float rate);
    void takeMidi(AAX_IMIDINode* node);
    void takeTransport(AAX_IMIDINode* node);
    int takeSideChain(const float* const* inputs, int index, Inputs& channels);
    void showGainReduction(float* meter);
    float gainReductionDb();

    double chunkNumber(int index) const;
    AAX_CChunkDataParser valuesForChunk();
    AAX_Result takeValues(const AAX_SPlugInChunk& chunk);
    AAX_Result takeName(const AAX_SPlugInChunk& chunk);
    bool hasValuesOf(const AAX_SPlugInChunk& chunk);

    std::atomic<bool> ready_{false};
    mutable std::vector<ModelViewer*> viewers_;
    bool monoToStereo_ = false;  ///< the host gives one input channel for a stereo output
    ChannelLayout layout_ = kStereoLayout;
    AAX_ITransport* transport_ = nullptr;          ///< of the host; may be null
    std::atomic<std::uint32_t> announcedSize_{0};  ///< of the chunk of values

    /// Who reads the levels: of interface and audio thread, the latter does without where it is taken.
    std::atomic_flag levelsTaken_;
    float shownReduction_ = 0.0f;
    std::optional<EventPump::Registration> pump_;
};

}  // namespace vanta
