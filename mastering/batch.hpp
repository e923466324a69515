#pragma once

#include <span>
#include <string>
#include <vector>

#include "foundation/failure.hpp"
#include "mastering/file_render.hpp"
#include "mastering/goal_seeker.hpp"
#include "mastering/mastering_job.hpp"

namespace vanta {

/// What became of one file of a batch.
struct RenderOutcome {
    RenderedFile file;
    std::string error;  ///< why nothing was written; empty if all is well
    GoalsReached reached;
};

/// Told what becomes of a batch while it runs, in the order of its files, one at a time, on any of its
/// threads.
class BatchListener {
public:
    virtual ~BatchListener() = default;

    /// One file, or an album that misses its goals as a whole, is not written. The text names it.
    virtual void failed(const Failure& failure) = 0;
    /// The file is in place.
    virtual void written(const RenderOutcome& outcome) = 0;
};

/// Renders all files: an album at once, other files one after the other. A file that fails is left out and
/// does not keep the others from being written. Stopped if the job's watcher ends it: what is in place by
/// then stays. The result has an outcome for each route, in order.
std::vector<RenderOutcome> renderBatch(const MasteringJob& job, std::span<const Route> routes,
                                       BatchListener& listener);

}  // namespace vanta
