#pragma once

#include <CLI/CLI.hpp>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "cli/parameter_options.hpp"
#include "cli/session_file.hpp"
#include "host/offline/limiter_settings.hpp"

namespace vanta {

/// The settings that a command line asks for, before they are understood.
struct SettingsArguments {
    /// Adds --state, --preset, --set and an option for each parameter that has one of its own.
    void declareTo(CLI::App& app);

    /// Sets what state, preset, options and assignments say, in this order: the more particular has the last
    /// word. `sideChain`: Side Chain Triggering comes on unless they say otherwise. UsageError and Failure
    /// for what cannot be set. The result is the name of the preset, empty without one.
    std::string applyTo(LimiterSettings& settings, bool sideChain = false) const;
    /// The same for an instance. What they do not touch, such as its compare slots, stays as in the state
    /// that they name, or else as it is.
    void applyTo(SessionInstance& instance, bool sideChain = false) const;

    /// What sets this parameter by itself, "--gain" or "--set Gain"; empty if nothing does.
    std::string setterOf(std::string_view parameter) const;
    /// Whether anything but a state or a preset sets a parameter.
    bool changesPreset() const { return !parameters.empty() || !assignments.empty(); }
    /// The files of state and preset, as far as they are named.
    std::vector<std::string> files() const;

    std::string state;
    std::string preset;
    std::vector<std::pair<const ParameterOption*, std::string>> parameters;
    std::vector<std::string> assignments;  ///< "Name=text"
};

}  // namespace vanta
