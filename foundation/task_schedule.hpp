#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <utility>
#include <vector>

#include "foundation/granular_task.hpp"

namespace vanta {

/// Runs an ordered list of tasks once, at an even rate over a length of time that is counted in samples.
/// No call pays more than its share of the work, give or take one grain.
class TaskSchedule {
public:
    /// Appends a task and returns it. Allocates; a pass that runs goes on without the new task.
    template <typename Task>
    Task& add(std::unique_ptr<Task> task) {
        Task& added = *task;
        append(std::move(task));
        return added;
    }

    /// The length of a pass in samples, at least 1. It counts from the next restart on.
    VANTA_REALTIME void setDuration(int samples) { nextDuration_ = samples > 1 ? samples : 1; }

    /// Prepares every enabled task and points at the first. What an unfinished pass has left is dropped.
    /// A task that is enabled later takes no part in this pass; one that is disabled later is skipped from
    /// where it stands.
    VANTA_REALTIME void restart();

    /// Does the work that is due after `samples` more samples. True on the call in which the pass ends
    /// and on no other; a pass that has no work to begin with ends silently in `restart`.
    VANTA_REALTIME bool advance(int samples);

    /// Whether no task is left to run: after the pass, or before the first.
    VANTA_REALTIME bool finished() const { return current_ == tasks_.size(); }

private:
    struct Entry {
        std::unique_ptr<GranularTask> task;
        bool inPass;  ///< prepared by the last restart
    };

    void append(std::unique_ptr<GranularTask> task);
    void skipToRunnable();
    bool runOne(std::int64_t& budget);

    std::size_t current_ = 0;
    int progress_ = 0;       ///< samples since the restart, up to `duration`
    int grain_ = 0;          ///< the next grain of the current task
    std::int64_t done_ = 0;  ///< cost paid
    int duration_ = 1;
    int nextDuration_ = 1;
    std::int64_t totalCost_ = 0;
    std::vector<Entry> tasks_;
};

}  // namespace vanta
