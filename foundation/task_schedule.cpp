#include "foundation/task_schedule.hpp"

#include <algorithm>

namespace vanta {

void TaskSchedule::append(std::unique_ptr<GranularTask> task) {
    const bool atEnd = finished();
    tasks.push_back({std::move(task), false});
    if (atEnd) current = tasks.size();
}

void TaskSchedule::restart() {
    duration = nextDuration;
    totalCost = 0;
    for (Entry& entry : tasks) {
        GranularTask& task = *entry.task;
        entry.inPass = task.enabled;
        if (!entry.inPass) continue;
        task.prepare();
        totalCost += static_cast<std::int64_t>(task.grainCost) * task.grainCount;
    }
    progress = 0;
    done = 0;
    current = 0;
    grain = 0;
    skipToRunnable();
}

/// Leaves `current` where it stands if that task can run, else moves it to the next one that can.
void TaskSchedule::skipToRunnable() {
    while (current < tasks.size()) {
        const Entry& entry = tasks[current];
        if (entry.inPass && entry.task->enabled && grain < entry.task->grainCount) return;
        ++current;
        grain = 0;
    }
}

bool TaskSchedule::advance(int samples) {
    // Compared by what is left, so that no length of block overflows.
    progress += std::min(samples, duration - progress);
    const std::int64_t target = progress * totalCost / duration;
    std::int64_t budget = target - done;
    done = target;
    if (budget < 1) return false;
    if (finished()) return false;
    skipToRunnable();
    while (budget > 0 && !finished()) {
        if (runOne(budget)) continue;
        done -= budget;  // too little for a grain: the rest is carried into the next call
        return false;
    }
    return finished();
}

/// Runs what the budget pays of the current task. False if that is nothing.
bool TaskSchedule::runOne(std::int64_t& budget) {
    GranularTask& task = *tasks[current].task;
    const auto left = static_cast<std::int64_t>(task.grainCount - grain);
    const auto grains = static_cast<int>(std::min(budget / task.grainCost, left));
    if (grains == 0) return false;
    if (grain == 0) task.begin();
    task.run(grain, grains);
    budget -= static_cast<std::int64_t>(task.grainCost) * grains;
    grain += grains;
    if (grain >= task.grainCount) {
        task.finish();
        skipToRunnable();
    }
    return true;
}

}  // namespace vanta
