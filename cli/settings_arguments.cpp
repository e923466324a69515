#include "cli/settings_arguments.hpp"

#include "cli/option_declarer.hpp"
#include "cli/parameter_text.hpp"
#include "cli/preset_library.hpp"
#include "cli/texts.hpp"
#include "foundation/ascii.hpp"

namespace vanta {

void SettingsArguments::declareTo(CLI::App& app) {
    OptionDeclarer add(app, text::kSettingsOptions);
    for (const ParameterOption& option : parameterOptions()) {
        const auto store = [this, &option](const std::string& text) {
            parameters.emplace_back(&option, text);
        };
        CLI::Option* const declared = add.storing(std::string(option.flag), store);
        declared->description(optionHelp(option, declared->get_description()));
    }
    add.option("--state", state);
    add.option("--preset", preset);
    add.option("--set", assignments)
        ->allow_extra_args(false)
        ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
}

std::string SettingsArguments::applyTo(LimiterSettings& settings, bool sideChain) const {
    if (!state.empty()) recallState(settings, state);
    std::string presetName;
    if (!preset.empty()) presetName = loadNamedPreset(settings, preset);
    if (sideChain) settings.sideChainTriggering.setMapped(true);
    for (const auto& [option, text] : parameters) setByOption(settings, *option, text);
    for (const std::string& assignment : assignments) setByAssignment(settings, assignment);
    return presetName;
}

void SettingsArguments::applyTo(SessionInstance& instance, bool sideChain) const {
    if (!state.empty()) instance.recall(state);
    LimiterSettings settings;
    instance.giveTo(settings);
    const std::string presetName = applyTo(settings, sideChain);
    instance.take(settings);
    // Taking the values over has marked whatever preset was there before as modified.
    if (!presetName.empty()) instance.presetState().set({presetName, {}, changesPreset()});
}

std::string SettingsArguments::setterOf(std::string_view parameter) const {
    for (const auto& [option, text] : parameters) {
        if (option->parameter == parameter) return std::string(option->flag);
    }
    for (const std::string& assignment : assignments) {
        if (equalsIgnoringCase(assignedName(assignment), parameter)) return "--set " + std::string(parameter);
    }
    return {};
}

std::vector<std::string> SettingsArguments::files() const {
    std::vector<std::string> named;
    for (const std::string& file : {preset, state}) {
        if (!file.empty()) named.push_back(file);
    }
    return named;
}

}  // namespace vanta
