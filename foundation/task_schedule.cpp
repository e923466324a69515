#include "foundation/task_schedule.hpp"

#include <algorithm>

namespace vanta {

void TaskSchedule::append(std::unique_ptr<GranularTask> task) {
    const bool atEnd = finished();
    tasks_.push_back({std::move(task), false});
    if (atEnd) current_ = tasks_.size();
}

void TaskSchedule::restart() {
    duration_ = nextDuration_;
    totalCost_ = 0;
    for (Entry& entry : tasks_) {
        GranularTask& task = *entry.task;
        entry.inPass = task.enabled;
        if (!entry.inPass) continue;
        task.prepare();
        totalCost_ += static_cast<std::int64_t>(task.grainCost) * task.grainCount;
    }
    progress_ = 0;
    done_ = 0;
    current_ = 0;
    grain_ = 0;
    skipToRunnable();
}

/// Leaves `current` where it stands if that task can run, else moves it to the next one that can.
void TaskSchedule::skipToRunnable() {
    while (current_ < tasks_.size()) {
        const Entry& entry = tasks_[current_];
        if (entry.inPass && entry.task->enabled && grain_ < entry.task->grainCount) return;
        ++current_;
        grain_ = 0;
    }
}

bool TaskSchedule::advance(int samples) {
    // Compared by what is left, so that no length of block overflows.
    progress_ += std::min(samples, duration_ - progress_);
    const std::int64_t target = progress_ * totalCost_ / duration_;
    std::int64_t budget = target - done_;
    done_ = target;
    if (budget < 1) return false;
    if (finished()) return false;
    skipToRunnable();
    while (budget > 0 && !finished()) {
        if (runOne(budget)) continue;
        done_ -= budget;  // too little for a grain: the rest is carried into the next call
        return false;
    }
    return finished();
}

/// Runs what the budget pays of the current task. False if that is nothing.
bool TaskSchedule::runOne(std::int64_t& budget) {
    GranularTask& task = *tasks_[current_].task;
    const auto left = static_cast<std::int64_t>(task.grainCount - grain_);
    const auto grains = static_cast<int>(std::min(budget / task.grainCost, left));
    if (grains == 0) return false;
    if (grain_ == 0) task.begin();
    task.run(grain_, grains);
    budget -= static_cast<std::int64_t>(task.grainCost) * grains;
    grain_ += grains;
    if (grain_ >= task.grainCount) {
        task.finish();
        skipToRunnable();
    }
    return true;
}

}  // namespace vanta
