#pragma once

#include <optional>
#include <string>

#include "plugin/base/generic_plugin_base.hpp"
#include "plugin/parameters/indexed_parameter.hpp"
#include "plugin/parameters/prop_plugin_parameter.hpp"

namespace vanta {

/// How far channels share their gain reduction: up to 0.5 it links left and right of each pair, from there on
/// to 1 all channels. Mono and stereo layouts show the first half alone, as 0 to 100%; larger ones show
/// "100% Stereo, 50% All".
class ChannelLinkParameter final : public FloatParamPluginParameter {
public:
    ChannelLinkParameter(GenericPluginBase& plugin, std::string name);

    /// The switches that add the centre and LFE channels, for the text.
    void setSwitches(const IndexedParameter& centerSwitch, const IndexedParameter& lfeSwitch);

    std::string text(float value) const override;
    /// Drops what is least missed until the text fits.
    std::string text(float value, int maxLength) const override;
    bool parseText(const std::string& text, float* out) const override;
    bool exceedsRange(const std::string& text) const override;

private:
    struct Reading {
        double percent;
        bool ofAll;  ///< a share of linking all channels, not of linking pairs
    };
    static std::optional<Reading> read(const std::string& text);

    const GenericPluginBase& plugin_;
    const IndexedParameter* center_ = nullptr;
    const IndexedParameter* lfe_ = nullptr;
};

}  // namespace vanta
