#include "gui/opengl/render_thread.hpp"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <thread>

#include "gui/graphics/device_backing.hpp"
#include "gui/opengl/accelerated_renderer.hpp"
#include "tests/gui/null_gl.hpp"

namespace vanta::gui {
namespace {

constexpr int kPatienceMs = 5000;

double nowMs() {
    return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now().time_since_epoch())
        .count();
}

/// Counts what is asked of it.
struct Target : FrameTarget, LockedObject {
    Target() : LockedObject(std::make_unique<RecursiveCriticalSection>()) {}
    ~Target() override { thread.stop(false); }

    bool makeCurrent() override {
        ++tries;
        return works;
    }
    void release() override { ++releases; }
    bool drawFrame(bool canDraw) override {
        ++draws;
        if (interruptions > 0 && interruptions-- > 0) thread.interrupt();
        return canDraw && hasMore;
    }
    void frameDropped() override { ++drops; }
    void swap() override {
        ++swaps;
        leastDelayMs = std::min(leastDelayMs.load(), nowMs() - blankMs);
    }
    std::optional<Vblank> vblank() override {
        if (!tellsBlanks) return std::nullopt;
        // A new one for each frame, at its very start.
        blankMs = nowMs();
        return Vblank{blankMs, 10.0};
    }
    void deleteTextures() override { ++deletions; }

    /// Waits until the thread has come so far.
    void await(const std::atomic<int>& count, int least) {
        const double end = nowMs() + kPatienceMs;
        while (count < least && nowMs() < end) std::this_thread::sleep_for(std::chrono::milliseconds(1));
        EXPECT_GE(count, least);
    }

    std::atomic<bool> works = true, hasMore = true, tellsBlanks = false;
    std::atomic<int> tries = 0, releases = 0, draws = 0, drops = 0, swaps = 0, deletions = 0;
    std::atomic<int> interruptions = 0;
    std::atomic<double> blankMs = 0.0, leastDelayMs = 1e9;
    RenderThread thread{*this, *this};
};

TEST(RenderThread, AFrameThatIsOutdatedBeforeItIsShownIsDropped) {
    for (const bool tellsBlanks : {false, true}) {
        Target target;
        target.tellsBlanks = tellsBlanks;
        target.interruptions = 2;
        target.thread.start({1.0, 0});
        target.await(target.swaps, 1);
        EXPECT_EQ(target.drops, 2);
    }
}

TEST(RenderThread, SwapsComeWellAfterTheBlank) {
    Target target;
    target.tellsBlanks = true;
    target.thread.start({10.0, 0});
    target.await(target.swaps, 3);
    EXPECT_GE(target.leastDelayMs, 6.0);
}

TEST(RenderThread, WhoeverWantsAFrameWaitsForItEvenIfNothingCanBeDrawn) {
    for (const bool works : {true, false}) {
        Target target;
        target.works = works;
        // Many rounds without a frame, each of them long.
        target.thread.start({100.0, 1000});
        for (int i = 0; i < 5; ++i) {
            target.lockObject();
            target.thread.interrupt();
            const unsigned request = target.thread.requestFrame();
            const int drawn = target.draws;
            target.unlockObject();
            EXPECT_TRUE(target.thread.awaitFrame(request, kPatienceMs));
            EXPECT_GT(target.draws, drawn);
        }
        EXPECT_EQ(target.swaps > 0, works);
    }
}

TEST(RenderThread, ADisplayThatIsNotThereIsTriedAgainInEachRound) {
    Target target;
    target.works = false;
    target.thread.start({1.0, 2});
    target.await(target.tries, 10);
    EXPECT_GT(target.draws, 1);
    EXPECT_LE(target.draws * 3, target.tries + 3) << "every third round draws";
    target.works = true;
    target.await(target.swaps, 1);
    const int tries = target.tries;
    target.await(target.swaps, 3);
    EXPECT_EQ(target.tries, tries);
}

TEST(RenderThread, StopsAndStartsAgainAndDeletesTexturesWhenTold) {
    Target target;
    target.hasMore = false;
    for (const bool deletes : {false, true, false}) {
        target.draws = target.deletions = target.releases = 0;
        target.thread.start({1.0, 0});
        target.await(target.draws, 3);
        target.thread.stop(deletes);
        EXPECT_FALSE(target.thread.isRunning());
        EXPECT_EQ(target.deletions, deletes ? 1 : 0);
        EXPECT_EQ(target.releases, 1);
    }
    EXPECT_EQ(target.swaps, 0) << "nothing was drawn";
}

TEST(FrameRhythm, FramesKeepToWholeRefreshes) {
    const struct {
        int framesPerSecond;
        double hertz;
        int skip;
    } cases[] = {{60, 60, 0},    {30, 60, 1},  {20, 60, 2}, {60, 120, 1},
                 {60, 59.94, 0}, {60, 144, 1}, {20, 24, 0}};
    for (const auto& each : cases) {
        const FrameRhythm rhythm = FrameRhythm::of(each.framesPerSecond, 1000.0 / each.hertz);
        EXPECT_EQ(rhythm.skip, each.skip) << each.framesPerSecond << " at " << each.hertz;
        EXPECT_DOUBLE_EQ(rhythm.periodMs, 1000.0 / each.hertz);
    }
    const FrameRhythm byClock = FrameRhythm::of(AccelerationMode(0x13).framesPerSecond(), 0.0);
    EXPECT_DOUBLE_EQ(byClock.periodMs, 50.0);
    EXPECT_EQ(byClock.waitAfter(20.5), 29);
    EXPECT_EQ(byClock.waitAfter(49.0), 5);
}

/// What a driver tells of itself.
struct Driver {
    const char* version;
    const char* vendor;
    const char* renderer;
    const char* extensions;
};
Driver driver;

TEST(AcceleratedRenderer, TakesOnlyDriversThatCanDoIt) {
    GlFunctions gl = nullGl();
    gl.GetString = [](GLenum name) {
        const char* text = name == GL_VERSION    ? driver.version
                           : name == GL_VENDOR   ? driver.vendor
                           : name == GL_RENDERER ? driver.renderer
                                                 : driver.extensions;
        return reinterpret_cast<const GLubyte*>(text);
    };
    constexpr const char* kList = "GL_ARB_multitexture GL_ARB_texture_non_power_of_two GL_EXT_bgra";
    constexpr const char* kPart = "GL_ARB_texture_non_power_of_two_at_last";
    const struct {
        Driver driver;
        bool byDefault;
        bool forced;
    } cases[] = {
        {{"1.3 Some", "Some", "Card", kList}, true, true},
        {{"4.6 (Compatibility Profile)", "Some", "Card", kList}, true, true},
        {{"1.2.1", "Some", "Card", kList}, false, false},
        {{"OpenGL", "Some", "Card", kList}, false, false},
        {{"0.9", "Some", "Card", kList}, false, false},
        {{nullptr, nullptr, nullptr, nullptr}, false, false},
        {{"2.1", "Some", "Card", kPart}, false, false},
        {{"2.1", "mAtrox Graphics", "Card", kList}, false, true},
        {{"4.5", "Mesa", "llvmpipe (LLVM 15.0.6, 256 bits)", kList}, false, true},
    };
    const DeviceBacking backing;
    for (const auto& each : cases) {
        driver = each.driver;
        const char* told = driver.renderer ? driver.renderer : "silent";
        AcceleratedRenderer renderer(gl, backing);
        EXPECT_EQ(renderer.initialize(AccelerationMode(1)), each.byDefault) << told;
        EXPECT_EQ(renderer.initialize(AccelerationMode(0x11)), each.forced) << told;
    }
    EXPECT_FALSE(GlFunctions::find([](const char*) { return nullptr; }));
}

}  // namespace
}  // namespace vanta::gui
