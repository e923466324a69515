#pragma once

#include <string>

#include "app/render_command.hpp"

namespace vanta {

/// What the command line of `vanta preset` says.
struct PresetCommand {
    std::string source;      ///< a preset's name or file
    std::string target;      ///< to be saved: a name in the user's folder, or a file
    RenderCommand settings;  ///< of which only the settings count
    bool replace = false;
};

/// Prints every parameter of a preset.
int runPresetShow(const PresetCommand& command);
/// Saves a preset, given settings or a preset with settings on top.
int runPresetSave(const PresetCommand& command);
/// Writes a preset file of any version in today's format.
int runPresetConvert(const PresetCommand& command);

}  // namespace vanta
