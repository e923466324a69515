#pragma once

#include "interface/menus/action_menu.hpp"
#include "interface/menus/preset_commands.hpp"

namespace vanta::interface {

/// All presets in their folders, the current one checked, and what can be done with them.
void fillPresetsMenu(MenuBuilder& menu, GenericPlugin& model, PresetCommands& commands);

}  // namespace vanta::interface
