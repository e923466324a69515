#pragma once

#include <array>
#include <string_view>

#include "dsp/dither_filter.hpp"
#include "limiter/parameters/channel_link_parameter.hpp"
#include "limiter/parameters/gain_forward_parameter.hpp"
#include "limiter/parameters/transient_time_forward_parameter.hpp"
#include "plugin/generic_plugin_base.hpp"
#include "plugin/parameters/forward_plugin_parameter.hpp"
#include "plugin/parameters/prop_plugin_parameter.hpp"

namespace vanta {

/// The parameters that a user, a host, MIDI and a preset file see, in host order. The model and the audio
/// side of an instance have a table each and exchange pairs of index and value.
class VantaParameters {
public:
    enum class LimitingStyle { Transparent, Punchy, Dynamic, Allround, Aggressive, Modern, Bus, Safe };
    enum class OversamplingMode { Off, X2, X4, X8, X16, X32 };
    enum class Dithering { Off, Bits16, Bits18, Bits20, Bits22, Bits24 };
    enum class DisplayMode { SlowDown, Fast, Slow, Infinite, Off };
    enum class MeterScale { Db16, Db32, Db48, K12, K14, K20, Loudness };
    enum class LoudnessTimeScale { Momentary, ShortTerm, Integrated };
    enum class LoudnessMeterScale { Plus9, Plus18 };
    enum class LoudnessMeterOrigin { Absolute, Relative };
    enum class IntegratedPeakTimeScale { MaxMomentary, MaxShortTerm };

    static constexpr int kParameterCount = 31;

    /// Enters all parameters in `plugin` and describes there what this plug-in offers.
    explicit VantaParameters(GenericPluginBase& plugin);

    /// What Lock Output keeps as it is when a preset is loaded.
    std::array<AbstractPluginParameter*, 8> lockedParameters();

    GenericPluginBase& owner() const { return owner_; }

    // Their order here is their index.
    GainForwardParameter gain;  ///< dB
    IndexedPluginParameter<LimitingStyle> style;
    TransientTimeForwardParameter lookahead;                    ///< ms
    ForwardPluginParameter<FloatParamPluginParameter> attack;   ///< engine value in seconds
    ForwardPluginParameter<FloatParamPluginParameter> release;  ///< engine value in seconds
    ChannelLinkParameter channelLinkTransients;
    ChannelLinkParameter channelLinkRelease;
    PropPluginParameter<bool> channelLinkCenter;
    PropPluginParameter<bool> channelLinkLfe;
    IndexedPluginParameter<OversamplingMode> oversampling;
    PropPluginParameter<bool> truePeakLimiting;
    IndexedPluginParameter<Dithering> dithering;
    PropPluginParameter<DitherFilter::NoiseShaping> noiseShaping;
    PropPluginParameter<bool> filterDcOffset;
    PropPluginParameter<bool> sideChainTriggering;
    PropPluginParameter<bool> unityGain;
    PropPluginParameter<bool> auditionLimiting;
    PropPluginParameter<bool> bypass;
    /// dB. Shown in dBTP while True Peak Limiting is on; typed it may be in either.
    FloatPluginParameter outputLevel;
    PropPluginParameter<bool> lockOutput;
    IndexedPluginParameter<GenericPluginBase::MidiState> receiveMidi;
    PropPluginParameter<bool> showAdvanced;
    PropPluginParameter<bool> truePeakMetering;
    IndexedPluginParameter<DisplayMode> displayMode;
    IndexedPluginParameter<MeterScale> meterScale;
    IndexedPluginParameter<LoudnessTimeScale> loudnessTimeScale;
    IndexedPluginParameter<LoudnessMeterScale> loudnessMeterScale;
    IndexedPluginParameter<LoudnessMeterOrigin> loudnessMeterOrigin;
    FloatPluginParameter loudnessMeterTarget;  ///< LUFS
    IndexedPluginParameter<IntegratedPeakTimeScale> integratedPeakTimeScale;
    PropPluginParameter<bool> loudnessRecording;

private:
    void setUpLevels();
    void setUpTimes();
    void setUpChannelLinks();
    void setUpChoices();
    void setUpSwitches();
    void describePlugin();

    GenericPluginBase& owner_;
};

/// What the parameter of this index does, in a few sentences for an engineer.
std::string_view vantaParameterHelp(int index);

}  // namespace vanta
