#pragma once

#include <string>

#include "host/lv2/lv2_layouts.hpp"
#include "plugin/model/generic_plugin.hpp"

namespace vanta {

/// The file of a plug-in's bundle that describes it, below the bundle.
std::string descriptionFile(const Lv2Layout& layout);

/// What that file says. `model` is the plug-in as a new instance: its values are the defaults of the ports.
std::string describePlugin(const Lv2Layout& layout, const GenericPlugin& model);

/// What a host reads when it looks for plug-ins: which there are, and where they are described.
std::string pluginManifest();

}  // namespace vanta
