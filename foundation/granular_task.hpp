#pragma once

#include "foundation/property.hpp"
#include "foundation/realtime.hpp"

namespace vanta {

/// A job that is cut into grains, so that a TaskSchedule can spread it over many audio blocks.
/// Everything here runs on the audio thread.
class GranularTask {
public:
    GranularTask() = default;
    GranularTask(const GranularTask&) = delete;
    GranularTask& operator=(const GranularTask&) = delete;

    virtual ~GranularTask() = default;
    /// After the last grain.
    VANTA_REALTIME virtual void finish() {}
    /// Before the first grain.
    VANTA_REALTIME virtual void begin() {}
    /// Works on `[firstGrain, firstGrain + count)`. Calls follow each other without gap or overlap.
    VANTA_REALTIME virtual void run(int firstGrain, int count) = 0;
    /// At the start of a pass, where a task sets its grain count.
    VANTA_REALTIME virtual void prepare() {}

    Property<bool> enabled{nullptr, true};
    int grainCount = 0;  ///< with 0 the task has nothing to do in this pass
    int grainCost = 1;   ///< at least 1, in units that all tasks of a schedule share
};

}  // namespace vanta
