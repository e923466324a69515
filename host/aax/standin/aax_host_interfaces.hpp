#pragma once

#include "aax_types.hpp"

// What a host offers to a plug-in. It owns all of these, and they outlive the plug-in's objects.

/// Facts of an instance. Host threads, but not the audio thread.
class AAX_IController {
public:
    virtual ~AAX_IController() = default;
    virtual AAX_Result GetInputStemFormat(AAX_EStemFormat* format) const = 0;
    virtual AAX_Result GetOutputStemFormat(AAX_EStemFormat* format) const = 0;
    virtual AAX_Result GetSampleRate(AAX_CSampleRate* rate) const = 0;
    /// Samples that the output is late. Any thread.
    virtual AAX_Result SetSignalLatency(std::int32_t samples) = 0;
    /// The algorithm finds the bytes in this field from its next call on. Any thread but the audio thread.
    virtual AAX_Result PostPacket(AAX_CFieldIndex field, const void* data, std::uint32_t size) = 0;
};

/// Where values of parameters go before they take effect: the host answers each request by
/// UpdateParameterNormalizedValue, in the call or later, on any thread but the audio thread. Any thread but
/// the audio thread.
class AAX_IAutomationDelegate {
public:
    virtual ~AAX_IAutomationDelegate() = default;
    /// The parameter can be automated.
    virtual AAX_Result RegisterParameter(AAX_CParamID id) = 0;
    virtual AAX_Result UnregisterParameter(AAX_CParamID id) = 0;
    virtual AAX_Result PostSetValueRequest(AAX_CParamID id, double normalized) = 0;
    virtual AAX_Result PostTouchRequest(AAX_CParamID id) = 0;
    virtual AAX_Result PostReleaseRequest(AAX_CParamID id) = 0;
};

/// The host's transport at the block that is rendered. Audio thread, and that of an offline render.
class AAX_ITransport {
public:
    virtual ~AAX_ITransport() = default;
    /// Beats per minute.
    virtual AAX_Result GetCurrentTempo(double* tempo) const = 0;
    /// `numerator` over `denominator`.
    virtual AAX_Result GetCurrentMeter(std::int32_t* numerator, std::int32_t* denominator) const = 0;
    virtual AAX_Result GetCurrentSampleLocation(std::int64_t* location) const = 0;
    /// Bars count from 0, beats of a bar from 1.
    virtual AAX_Result GetBarBeatPosition(std::int32_t* bar, std::int32_t* beat, std::int64_t* ticks,
                                          std::int64_t location) const = 0;
    virtual AAX_Result GetTicksPerQuarter(std::int32_t* ticks) const = 0;
    virtual AAX_Result GetTicksPerBeat(std::int32_t* ticks) const = 0;
};

/// What effect parameters are given at their start. What a host lacks is null.
class AAX_IEffectHost {
public:
    virtual ~AAX_IEffectHost() = default;
    virtual AAX_IController* Controller() = 0;
    virtual AAX_IAutomationDelegate* AutomationDelegate() = 0;
    virtual AAX_ITransport* Transport() = 0;
};

enum class AAX_EMIDINodeType : std::int32_t { LocalInput, Transport };

/// A field of the render context. Audio thread.
class AAX_IMIDINode {
public:
    virtual ~AAX_IMIDINode() = default;
    /// The packets of this block, in the order of time. Null for none.
    virtual const AAX_CMidiStream* GetNodeBuffer() = 0;
    /// Null unless the node is one of a transport.
    virtual AAX_ITransport* GetTransport() = 0;
};

/// Held while the pointer or a key acts; bits that add up.
inline constexpr std::uint32_t AAX_eModifiers_Shift = 1;
inline constexpr std::uint32_t AAX_eModifiers_Control = 2;
inline constexpr std::uint32_t AAX_eModifiers_Option = 4;
inline constexpr std::uint32_t AAX_eModifiers_Command = 8;

/// The window that an editor is shown in. The host's main thread.
class AAX_IViewContainer {
public:
    virtual ~AAX_IViewContainer() = default;
    /// The window of the host's system; null for none.
    virtual void* GetPtr() = 0;
    virtual AAX_Result GetModifiers(std::uint32_t* modifiers) = 0;
    /// Pixels.
    virtual AAX_Result SetViewSize(AAX_Point* size) = 0;
    /// AAX_SUCCESS: the host has taken the press, and the editor is not to.
    virtual AAX_Result HandleParameterMouseDown(AAX_CParamID id, std::uint32_t modifiers) = 0;
};

/// Where an offline render gets its audio. The thread of the render.
class AAX_IHostProcessorDelegate {
public:
    virtual ~AAX_IHostProcessorDelegate() = default;
    /// Fills `buffers` with the selection and what lies around it. `location` counts from the start of the
    /// selection. `samples` says how many are wanted, and afterwards how many came.
    virtual AAX_Result GetAudio(float* const* buffers, std::int32_t channels, std::int64_t location,
                                std::int32_t* samples) = 0;
    /// Null for none.
    virtual AAX_ITransport* GetTransport() = 0;
};
