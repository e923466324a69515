#include "foundation/task_schedule.hpp"

#include <gtest/gtest.h>

#include "tests/support/signals.hpp"

namespace vanta::test {
namespace {

/// Writes down what it is asked to do.
class RecordingTask final : public GranularTask {
public:
    RecordingTask(int grains, int cost, std::int64_t& costMeter) : work(grains), meter(costMeter) {
        grainCost = cost;
    }
    void prepare() override {
        grainCount = work;
        begun = finished = next = 0;
        ordered = true;
    }
    void begin() override {
        ordered = ordered && next == 0;
        ++begun;
    }
    void run(int firstGrain, int count) override {
        ordered = ordered && begun == 1 && finished == 0 && firstGrain == next && count > 0;
        next = firstGrain + count;
        meter += static_cast<std::int64_t>(count) * grainCost;
    }
    void finish() override {
        ordered = ordered && next == grainCount;
        ++finished;
    }
    bool isDoneOnce() const { return ordered && begun == 1 && finished == 1; }
    bool isUntouched() const { return begun == 0 && next == 0 && finished == 0; }

    int work;
    std::int64_t& meter;
    int begun = 0, finished = 0, next = 0;
    bool ordered = true;
};

struct Rig {
    RecordingTask& add(int grains, int cost = 1) {
        tasks.push_back(&schedule.add(std::make_unique<RecordingTask>(grains, cost, meter)));
        return *tasks.back();
    }
    std::int64_t meter = 0;  ///< cost of all that ran
    TaskSchedule schedule;
    std::vector<RecordingTask*> tasks;
};

TEST(TaskSchedule, DoesAllWorkOnceAndEvenlyForAnyTasksAndBlocks) {
    for (std::uint64_t seed = 1; seed <= 300; ++seed) {
        SCOPED_TRACE(seed);
        Random random(seed);
        Rig rig;
        std::int64_t total = 0;
        int dearest = 1;
        for (int i = random.between(1, 12); i > 0; --i) {
            const int grains = random.between(0, 5) ? random.between(1, 400) : 0;
            RecordingTask& task = rig.add(grains, random.between(1, 40));
            task.enabled = random.between(0, 4) != 0;
            if (!task.enabled) continue;
            total += static_cast<std::int64_t>(grains) * task.grainCost;
            if (grains) dearest = std::max(dearest, task.grainCost);
        }
        const int duration = random.between(1, 3000);
        rig.schedule.setDuration(duration);
        rig.schedule.restart();
        EXPECT_EQ(rig.schedule.finished(), total == 0);

        int ends = 0;
        for (int progress = 0; progress < duration;) {
            const int block = random.between(1, 256);
            const std::int64_t before = rig.meter;
            ends += rig.schedule.advance(block);
            const int worth = std::min(block, duration - progress);
            progress += worth;
            const std::int64_t share = worth * total / duration + 1;
            EXPECT_LE(rig.meter - before, share + dearest);
            const std::int64_t due = progress * total / duration;
            EXPECT_LE(rig.meter, due);
            EXPECT_GT(rig.meter + dearest, due);
            EXPECT_EQ(ends, rig.schedule.finished() && total ? 1 : 0);
        }
        EXPECT_EQ(rig.meter, total);
        EXPECT_FALSE(rig.schedule.advance(10000));
        EXPECT_EQ(rig.meter, total);
        for (const RecordingTask* task : rig.tasks) {
            EXPECT_TRUE(task->enabled && task->work ? task->isDoneOnce() : task->isUntouched());
        }
    }
}

TEST(TaskSchedule, SwitchingATaskInThePassNeverBreaksIt) {
    Rig rig;
    const RecordingTask& first = rig.add(10);
    RecordingTask& dropped = rig.add(10);
    RecordingTask& late = rig.add(10);
    late.enabled = false;
    rig.schedule.setDuration(20);
    rig.schedule.restart();
    EXPECT_FALSE(rig.schedule.advance(12));
    EXPECT_TRUE(first.isDoneOnce());
    EXPECT_EQ(dropped.next, 2);
    late.enabled = true;
    dropped.enabled = false;
    EXPECT_TRUE(rig.schedule.advance(4));
    EXPECT_EQ(dropped.next, 2);
    EXPECT_TRUE(late.isUntouched());
    rig.schedule.restart();
    EXPECT_TRUE(rig.schedule.advance(20));
    EXPECT_TRUE(late.isDoneOnce());
}

TEST(TaskSchedule, ANewDurationCountsFromTheNextRestart) {
    Rig rig;
    const RecordingTask& task = rig.add(1000000, 1000);
    rig.schedule.setDuration(1 << 30);  // progress times cost passes 32 bits by far
    rig.schedule.restart();
    rig.schedule.setDuration(0);
    EXPECT_FALSE(rig.schedule.advance(1 << 29));
    EXPECT_EQ(task.next, 500000);
    rig.schedule.restart();
    EXPECT_TRUE(rig.schedule.advance(1));
    EXPECT_TRUE(task.isDoneOnce());
}

}  // namespace
}  // namespace vanta::test
