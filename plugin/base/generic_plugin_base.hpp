#pragma once

#include <vector>

#include "foundation/channel_layout.hpp"
#include "plugin/base/generic_parameter_owner.hpp"

namespace vanta {

/// What a plug-in offers. The parameter table fills it in, in the model and in the processor alike.
class GenericPluginBase : public GenericParameterResponder {
public:
    enum class MidiState { Enabled, Disabled };

    /// In place of an index.
    static constexpr int kAllParameters = -1;

    /// Throws std::invalid_argument for a layout that does not exist.
    explicit GenericPluginBase(ChannelLayout layout) : channelLayout(checkedLayout(layout)) {}

    int parameterCount() const override { return static_cast<int>(parameters.size()); }
    AbstractPluginParameter* parameterAt(int index) const override;
    int firstParameterIndex() const override { return 0; }
    int addParameter(AbstractPluginParameter& parameter) override;
    int addGroupName(const std::string& name) override;

    bool hasOfflineProcessor = false;
    bool supportsMono = false;
    bool supportsSurround = false;
    ChannelLayout channelLayout;
    int gainReductionSource = -1;  ///< level source behind the host's meter, -1 for none
    AbstractPluginParameter* receiveMidiParameter = nullptr;
    AbstractPluginParameter* bypassParameter = nullptr;
    bool sideChainAvailable = false;
    bool sideChainWanted = true;
    std::vector<ValueAssignable<float>*> extraTargets;  ///< further MIDI targets, not owned
    bool monoToStereo = false;
    int audioSourceCount = 0;
    int levelSourcesPerChannel = 0;
    int globalLevelSources = 0;
    int spectrumSourceCount = 0;
    int processingMode = 1;  ///< 1 with audio input, 0 without
    bool hasNoteQueue = false;

protected:
    std::vector<AbstractPluginParameter*> parameters;
    std::vector<std::string> groupNames;
};

}  // namespace vanta
