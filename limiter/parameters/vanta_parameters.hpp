#pragma once

#include <vector>

#include "dsp/dither/dither_filter.hpp"
#include "limiter/parameters/channel_link_parameter.hpp"
#include "limiter/parameters/gain_forward_parameter.hpp"
#include "limiter/parameters/parameter_table.hpp"
#include "limiter/parameters/transient_time_forward_parameter.hpp"
#include "plugin/base/generic_plugin_base.hpp"
#include "plugin/parameters/forward_plugin_parameter.hpp"
#include "plugin/parameters/prop_plugin_parameter.hpp"

namespace vanta {

/// The parameters that a user, a host, MIDI and a preset file see, in host order. The model and the audio
/// side of an instance have a table each and exchange pairs of index and value.
class VantaParameters {
public:
    enum class OversamplingMode { Off, X2, X4, X8, X16, X32 };
    enum class Dithering { Off, Bits16, Bits18, Bits20, Bits22, Bits24 };
    enum class DisplayMode { SlowDown, Fast, Slow, Infinite, Off };
    enum class MeterScale { Db16, Db32, Db48, K12, K14, K20, Loudness };
    enum class LoudnessTimeScale { Momentary, ShortTerm, Integrated };
    enum class LoudnessMeterScale { Plus9, Plus18 };
    enum class LoudnessMeterOrigin { Absolute, Relative };
    enum class IntegratedPeakTimeScale { MaxMomentary, MaxShortTerm };

    static constexpr int kParameterCount = static_cast<int>(kParameterTable.size());

    /// Adds all parameters to `plugin` and fills in what this plug-in offers. std::logic_error if
    /// the members below are not in the order of the table.
    explicit VantaParameters(GenericPluginBase& plugin);

    /// The parameters whose row has a property, such as `&ParameterRow::keptByLockOutput`, in the order of
    /// the table.
    std::vector<AbstractPluginParameter*> parametersWith(bool ParameterRow::*property) const;

    /// The word length that a position of Dithering stands for, in bits; 0 for Off.
    static constexpr int ditherBits(int index) { return index == 0 ? 0 : 14 + 2 * index; }

    GenericPluginBase& owner() const { return owner_; }

private:
    GenericPluginBase& owner_;

public:
    GainForwardParameter gain{owner_, rowName("Gain")};  ///< dB
    IndexedPluginParameter<LimitingStyle> style{owner_, rowName("Style")};
    TransientTimeForwardParameter lookahead{owner_, rowName("Lookahead")};  ///< ms
    /// Engine values of both are in seconds.
    ForwardPluginParameter<FloatParamPluginParameter> attack{owner_, rowName("Attack")};
    ForwardPluginParameter<FloatParamPluginParameter> release{owner_, rowName("Release")};
    ChannelLinkParameter channelLinkTransients{owner_, rowName("Channel Link Transients")};
    ChannelLinkParameter channelLinkRelease{owner_, rowName("Channel Link Release")};
    PropPluginParameter<bool> channelLinkCenter{owner_, rowName("Channel Link Center")};
    PropPluginParameter<bool> channelLinkLfe{owner_, rowName("Channel Link LFE")};
    IndexedPluginParameter<OversamplingMode> oversampling{owner_, rowName("Oversampling")};
    PropPluginParameter<bool> truePeakLimiting{owner_, rowName("True Peak Limiting")};
    IndexedPluginParameter<Dithering> dithering{owner_, rowName("Dithering")};
    PropPluginParameter<DitherFilter::NoiseShaping> noiseShaping{owner_, rowName("Noise Shaping")};
    PropPluginParameter<bool> filterDcOffset{owner_, rowName("Filter DC Offset")};
    PropPluginParameter<bool> sideChainTriggering{owner_, rowName("Side Chain Triggering")};
    PropPluginParameter<bool> unityGain{owner_, rowName("Unity Gain")};
    PropPluginParameter<bool> auditionLimiting{owner_, rowName("Audition Limiting")};
    PropPluginParameter<bool> bypass{owner_, rowName("Bypass")};
    /// dB. Shown in dBTP while True Peak Limiting is on; typed it may be in either.
    FloatPluginParameter outputLevel{owner_, rowName("Output Level")};
    PropPluginParameter<bool> lockOutput{owner_, rowName("Lock Output")};
    IndexedPluginParameter<GenericPluginBase::MidiState> receiveMidi{owner_, rowName("Receive Midi")};
    PropPluginParameter<bool> showAdvanced{owner_, rowName("Show Advanced")};
    PropPluginParameter<bool> truePeakMetering{owner_, rowName("True Peak Metering")};
    IndexedPluginParameter<DisplayMode> displayMode{owner_, rowName("Display Mode")};
    IndexedPluginParameter<MeterScale> meterScale{owner_, rowName("Meter Scale")};
    IndexedPluginParameter<LoudnessTimeScale> loudnessTimeScale{owner_, rowName("Loudness Time Scale")};
    IndexedPluginParameter<LoudnessMeterScale> loudnessMeterScale{owner_, rowName("Loudness Meter Scale")};
    IndexedPluginParameter<LoudnessMeterOrigin> loudnessMeterOrigin{owner_, rowName("Loudness Meter Origin")};
    FloatPluginParameter loudnessMeterTarget{owner_, rowName("Loudness Meter Target")};  ///< LUFS
    IndexedPluginParameter<IntegratedPeakTimeScale> integratedPeakTimeScale{
        owner_, rowName("Loudness Integrated Peak Time Scale")};
    PropPluginParameter<bool> loudnessRecording{owner_, rowName("Loudness Recording")};

private:
    void setUpParameters();
    void describePlugin();
};

}  // namespace vanta
