#pragma once

#include <clap/host.h>

namespace vanta {

/// What the host offers under an id; null if nothing.
template <typename Extension>
const Extension* hostExtension(const clap_host_t& host, const char* id) {
    return host.get_extension ? static_cast<const Extension*>(host.get_extension(&host, id)) : nullptr;
}

}  // namespace vanta
