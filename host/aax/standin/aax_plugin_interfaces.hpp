#pragma once

#include "aax_host_interfaces.hpp"

// What a plug-in offers to a host. The host deletes what the factories of the description have made.

/// The values, texts and sessions of an instance. Any thread of the host but the audio thread, unless stated
/// otherwise; the host holds no lock of its own that it also takes in what it offers.
class AAX_IEffectParameters {
public:
    virtual ~AAX_IEffectParameters() = default;

    /// Before anything else, once.
    virtual AAX_Result Initialize(AAX_IEffectHost* host) = 0;

    virtual AAX_Result GetNumberOfParameters(std::int32_t* count) const = 0;
    virtual AAX_Result GetParameterIDFromIndex(std::int32_t index, AAX_CParamID* id) const = 0;
    virtual AAX_Result GetParameterName(AAX_CParamID id, char* name, std::int32_t capacity) const = 0;
    virtual AAX_Result GetParameterNumberOfSteps(AAX_CParamID id, std::int32_t* steps) const = 0;
    virtual AAX_Result GetParameterIsAutomatable(AAX_CParamID id, bool* automatable) const = 0;
    virtual AAX_Result GetParameterIsContinuous(AAX_CParamID id, bool* continuous) const = 0;
    virtual AAX_Result GetParameterDefaultNormalizedValue(AAX_CParamID id, double* value) const = 0;
    virtual AAX_Result GetParameterNormalizedValue(AAX_CParamID id, double* value) const = 0;
    virtual AAX_Result GetParameterValueFromString(AAX_CParamID id, const char* text,
                                                   double* value) const = 0;
    /// At most `maxLength` characters and a final zero; 0 for no limit but that of `capacity`.
    virtual AAX_Result GetParameterStringFromValue(AAX_CParamID id, double value, char* text,
                                                   std::int32_t capacity, std::int32_t maxLength) const = 0;
    /// Asks the host to set a value.
    virtual AAX_Result SetParameterNormalizedValue(AAX_CParamID id, double value) = 0;
    virtual AAX_Result TouchParameter(AAX_CParamID id) = 0;
    virtual AAX_Result ReleaseParameter(AAX_CParamID id) = 0;
    /// The host sets a value, whoever wanted it. `source` is the host's.
    virtual AAX_Result UpdateParameterNormalizedValue(AAX_CParamID id, double value, std::int32_t source) = 0;
    /// How often a value has really changed.
    virtual AAX_Result GetNumberOfChanges(std::int32_t* changes) const = 0;
    /// Posts what has changed to the algorithm. The host calls it again and again, before renders too.
    virtual AAX_Result GenerateCoefficients() = 0;

    virtual AAX_Result GetNumberOfChunks(std::int32_t* count) const = 0;
    virtual AAX_Result GetChunkIDFromIndex(std::int32_t index, AAX_CTypeID* id) const = 0;
    /// Bytes, those of the header included.
    virtual AAX_Result GetChunkSize(AAX_CTypeID id, std::uint32_t* size) = 0;
    /// Into room for as many bytes as GetChunkSize said.
    virtual AAX_Result GetChunk(AAX_CTypeID id, AAX_SPlugInChunk* chunk) = 0;
    virtual AAX_Result SetChunk(AAX_CTypeID id, const AAX_SPlugInChunk* chunk) = 0;
    virtual AAX_Result CompareActiveChunk(const AAX_SPlugInChunk* chunk, bool* equal) = 0;

    /// Fills a field of private data anew: at the start, and where the audio jumps. Between renders.
    virtual AAX_Result ResetFieldData(AAX_CFieldIndex field, void* data, std::uint32_t size) const = 0;

    virtual AAX_Result GetCurveData(AAX_CTypeID type, const float* values, std::uint32_t count,
                                    float* out) const = 0;
    virtual AAX_Result GetCurveDataDisplayRange(AAX_CTypeID type, float* xMin, float* xMax, float* yMin,
                                                float* yMax) const = 0;
    /// Whatever editor and parameters of one plug-in agree on.
    virtual AAX_Result GetCustomData(AAX_CTypeID block, std::uint32_t size, void* data,
                                     std::uint32_t* written) const = 0;
};

/// The editor of an instance. The host's main thread.
class AAX_IEffectGUI {
public:
    virtual ~AAX_IEffectGUI() = default;
    virtual AAX_Result Initialize(AAX_IEffectParameters* parameters) = 0;
    /// A window is there; null: it goes.
    virtual AAX_Result SetViewContainer(AAX_IViewContainer* container) = 0;
    /// Pixels.
    virtual AAX_Result GetViewSize(AAX_Point* size) const = 0;
    /// The editor's turn, 30 times a second or more often while a window is there.
    virtual AAX_Result TimerWakeup() = 0;
};

/// Renders a selection, window by window. The thread of the render.
class AAX_IHostProcessor {
public:
    virtual ~AAX_IHostProcessor() = default;
    virtual AAX_Result Initialize(AAX_IEffectParameters* parameters,
                                  AAX_IHostProcessorDelegate* delegate) = 0;
    /// Where the next window lies, in samples from the start of the selection.
    virtual AAX_Result SetLocation(std::int64_t location) = 0;
    virtual AAX_Result PreRender(std::int32_t inputs, std::int32_t outputs, std::int32_t windowSize) = 0;
    virtual AAX_Result RenderAudio(float* const* inputs, std::int32_t inputCount, float* const* outputs,
                                   std::int32_t outputCount, const std::int32_t* windowSize) = 0;
    virtual AAX_Result PreAnalyze(std::int32_t inputs, std::int32_t windowSize) = 0;
    virtual AAX_Result AnalyzeAudio(float* const* inputs, std::int32_t inputCount,
                                    const std::int32_t* windowSize) = 0;
};

/// Renders one block of several instances. A context is an array of pointers, one for each field. The audio
/// thread.
using AAX_CProcessProc = void (*)(void* const* const* contexts, std::int32_t count);
