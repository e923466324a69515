#pragma once

#include <string>

#include "mastering/batch.hpp"

namespace vanta {

/// What `vanta render` prints of a file: one line that says what was done, and what was measured below it.
std::string renderText(const MasteringJob& job, const RenderOutcome& outcome);

}  // namespace vanta
