#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <span>

#include "app/failure.hpp"
#include "app/render_file.hpp"

namespace vanta {

/// What is promised of a loudness that was asked for, in LU.
inline constexpr double kLoudnessToleranceLu = 0.1;

/// What renders are to reach.
struct RenderGoals {
    std::optional<double> loudnessLufs;   ///< integrated, of all files together
    std::optional<double> maxTruePeakDb;  ///< of each file, in dBTP
    double gainDb = 0.0;                  ///< where no loudness is asked for
    double outputLevelDb = 0.0;           ///< the highest that is allowed
};

/// How they were reached.
struct GoalsReached {
    int passes = 0;              ///< renders of all files
    std::size_t files = 0;       ///< that share the Gain
    std::optional<double> lufs;  ///< of all written files together
};

/// One of several files cannot be rendered.
class FileFailure : public Failure {
public:
    FileFailure(std::size_t fileIndex, const char* text) : Failure(text), index(fileIndex) {}
    std::size_t index;
};

/// Renders the files until what they wrote has the loudness, with one Gain for all, and keeps to the true
/// peak, with an Output Level for each. Nothing is put in place. FileFailure if a file keeps all from it,
/// Failure if the goals cannot be reached, which says what could.
GoalsReached reachGoals(std::span<const std::unique_ptr<FileRender>> files, const RenderGoals& goals,
                        bool measure);

}  // namespace vanta
