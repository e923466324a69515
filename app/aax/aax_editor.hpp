#pragma once

#include "host/aax/editor_interface.hpp"

namespace vanta {

/// The interface in the windows that AAX hosts have for it.
EditorPlatform aaxEditorPlatform();

}  // namespace vanta
