#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <span>

#include "foundation/failure.hpp"
#include "mastering/file_render.hpp"

namespace vanta {

/// How near a written file comes to the loudness that was asked for, in LU.
inline constexpr double kLoudnessToleranceLu = 0.1;

/// How goals were reached.
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

/// Renders the files until what they wrote has the loudness of the job, with one Gain for all, and keeps to
/// its true peak, with an Output Level for each. Without goals that is one render. Nothing is put in place.
/// FileFailure if one file stands in the way of all, Failure if the goals cannot be reached, which says what
/// could.
GoalsReached reachGoals(std::span<const std::unique_ptr<FileRender>> files, const MasteringJob& job);

}  // namespace vanta
