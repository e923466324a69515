#pragma once

#include <clap/plugin.h>

namespace vanta {

/// What hosts read before there is an instance.
const clap_plugin_descriptor_t& clapDescriptor();

}  // namespace vanta
