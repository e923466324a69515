#pragma once

#include <optional>
#include <span>
#include <string>
#include <vector>

#include "app/render_file.hpp"
#include "app/render_goals.hpp"

namespace vanta {

/// One input of a render, whatever became of it.
struct RenderOutcome {
    FileReport report;
    std::string error;  ///< why nothing was written; empty if all is well
    RenderGoals goals;
    std::optional<double> replacedGainDb;  ///< of a preset or state, if a loudness decides now
    bool album = false;
    GoalsReached reached;
};

/// Lines for people: loudness, range and true peak before and after, gain reduction, and what became of the
/// loudness and the true peak that were asked for. Empty if nothing was measured.
std::string renderFigures(const RenderOutcome& outcome);
/// An object with all files, and all outputs as one programme.
std::string renderReportJson(std::span<const RenderOutcome> outcomes);

}  // namespace vanta
