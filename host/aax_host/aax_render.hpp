#pragma once

#include "host/aax_host/aax_module.hpp"
#include "host/offline/render.hpp"

namespace vanta {

/// Renders a stream as `render` does, by the module: its component for the layout, its parameters, and either
/// render calls, in which case this host makes up for the latency, or its offline processor, which does so
/// itself. The side chain has one channel, and there is none offline. Of the gain reduction the meter tells,
/// read once a block; mean and share stay 0. Failure if the module lacks what it takes or answers with an
/// error.
RenderResult renderByAax(const AaxModule& module, const RenderJob& job, bool offline);

}  // namespace vanta
