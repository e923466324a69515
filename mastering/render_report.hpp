#pragma once

#include <span>
#include <string>

#include "mastering/batch.hpp"

namespace vanta {

/// A JSON object with all files of a batch and with all outputs as one programme: figures before and after,
/// settings, gain reduction, and how each goal was reached. A file that was not written has an "error"
/// instead.
std::string renderReportJson(const MasteringJob& job, std::span<const RenderOutcome> outcomes);

}  // namespace vanta
