#pragma once

#include "interface/binding/parameter_gestures.hpp"
#include "interface/menus/action_menu.hpp"

namespace vanta::interface {

/// MIDI on or off, and what controllers move.
void fillMidiMenu(MenuBuilder& menu, GenericPlugin& model, ParameterGestures& gestures);

}  // namespace vanta::interface
