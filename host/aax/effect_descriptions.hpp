#pragma once

#include "host/aax/editor_interface.hpp"
#include "host/aax/standin/aax.hpp"

namespace vanta {

/// Tells a host that scans the module what is in it: the effect, and a component for each way to run it. The
/// user's settings say whether all components share one description, and whether the modifier keys follow the
/// host's habits. AAX_ERROR_NULL_OBJECT if the host makes no descriptor or property map; the first error of
/// the host's ends the scan.
AAX_Result describeEffects(AAX_ICollection* collection);

/// The interface that editors open from now on, if any.
void setEditorPlatform(EditorPlatform platform);

}  // namespace vanta
