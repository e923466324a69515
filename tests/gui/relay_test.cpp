#include <gmock/gmock.h>

#include <atomic>
#include <thread>

#include "tests/gui/counter.hpp"
#include "tests/gui/test_interface.hpp"

namespace vanta::gui {
namespace {

using ::testing::ElementsAre;
using Log = std::vector<std::string>;

struct Heard : InterfaceListener {
    Heard(std::string listenerName, Log& heard) : name(std::move(listenerName)), log(heard) {}
    void interfaceEvent(int key, int value) override {
        log.push_back(name + std::to_string(key) + "=" + std::to_string(value));
        if (then) then();
    }
    void hintChanged(const std::string&) override {}
    std::string name;
    Log& log;
    std::function<void()> then;
};

struct Deferred : Component {
    Deferred(UserInterface& interface, Log& calls) : Component(interface), log(calls) {}
    void deferredCall(int argument) override {
        log.push_back("call " + std::to_string(argument));
        if (then) then(argument);
    }
    Log& log;
    std::function<void(int)> then;
};

TEST(EventRelay, DeliversEventsAndDeferredCallsInTheirOrder) {
    TestInterface ui;
    Log log;
    Heard first("a", log), last("b", log);
    Deferred target(ui, log);
    ui.addListener(first);
    ui.addListener(last);
    ui.relay()->post(1, -2);
    ui.postDeferred(target, 7);
    ui.relay()->post(-3, 4);
    EXPECT_FALSE(ui.relay()->post(static_cast<int>(EventRelay::kDeferredMark), 0));
    target.then = [&](int argument) {
        if (argument == 7) ui.postDeferred(target, 8);
    };
    EXPECT_THAT(log, ElementsAre());
    ui.drainRelay();
    EXPECT_THAT(log, ElementsAre("b1=-2", "a1=-2", "call 7", "call 8", "b-3=4", "a-3=4"));
}

TEST(EventRelay, EndsWithItsInterface) {
    auto ui = std::make_unique<TestInterface>();
    Log log;
    Heard closer("a", log);
    closer.then = [&] { ui.reset(); };
    ui->addListener(closer);
    const std::shared_ptr<EventRelay> relay = ui->relay();
    for (const int key : {1, 2}) relay->post(key, key);
    ui->drainRelay();
    EXPECT_THAT(log, ElementsAre("a1=1"));
    EXPECT_FALSE(relay->post(3, 3));
    relay->wake();
}

TEST(EventRelay, RunsDeferredCallsOfTheLivingThoughItsQueueIsFull) {
    TestInterface ui;
    Log log;
    Deferred target(ui, log);
    auto gone = std::make_unique<Deferred>(ui, log);
    ui.postDeferred(*gone, 4);
    gone.reset();
    for (std::uint32_t i = 0; i < LockFreeFifo::kMaxNodes + 1; ++i) ui.relay()->post(1, 0);
    ui.postDeferred(target, 5);
    ui.drainRelay();
    EXPECT_THAT(log, ElementsAre("call 5"));
}

TEST(EventRelay, TakesEventsFromManyThreadsUntilTheInterfaceGoes) {
    constexpr int kThreads = 3, kEvents = 3000;
    auto ui = std::make_unique<TestInterface>();
    struct Sum : InterfaceListener {
        void interfaceEvent(int key, int value) override {
            EXPECT_EQ(value, next[key]++) << "the order of thread " << key;
            ++count;
        }
        void hintChanged(const std::string&) override {}
        int next[kThreads] = {};
        int count = 0;
    } sum;
    ui->addListener(sum);
    const std::shared_ptr<EventRelay> relay = ui->relay();
    std::vector<std::thread> posters;
    std::atomic<bool> stop = false;
    for (int thread = 0; thread < kThreads; ++thread) {
        posters.emplace_back([&, thread] {
            for (int i = 0; i < kEvents; ++i) {
                while (!relay->post(thread, i)) std::this_thread::yield();
                if (i % 16 == 0) relay->wake();
            }
            while (!stop) relay->wake();
        });
    }
    while (sum.count < kThreads * kEvents) ui->drainRelay();
    ui.reset();
    stop = true;
    for (std::thread& poster : posters) poster.join();
    EXPECT_FALSE(relay->isOpen());
}

TEST(Timer, StartedOnAnotherThreadTakesEffectWithTheNextDrain) {
    TestInterface ui;
    TestTimer timer(ui);
    std::thread([&] {
        ui.root->lockObject();
        timer.interval = 50;
        timer.running = true;
        ui.root->unlockObject();
    }).join();
    EXPECT_FALSE(timer.isStarted());
    const RootControl::MessageScope message(*ui.root);
    ui.drainRelay();
    EXPECT_TRUE(timer.isStarted());
    timer.interval = 0;
    EXPECT_FALSE(timer.isStarted());
}

TEST(Timer, TicksWithTheFramesWhereThereAreFrames) {
    struct Stopper {
        void hear(void*) {
            for (TestTimer* each : timers) each->running = false;
        }
        std::vector<TestTimer*> timers;
    };
    test::Counter ticks;
    TestInterface ui;
    TestTimer timer(ui), other(ui);
    for (TestTimer* each : {&timer, &other}) {
        each->onTick.setHandler(&ticks, &test::Counter::hear);
        each->frameLocked = true;
        each->running = true;
    }
    EXPECT_TRUE(timer.isStarted());
    ui.tickFrameTimers();
    EXPECT_EQ(ticks.count, 0);
    ui.accelerated = true;
    EXPECT_FALSE(timer.isStarted());
    ui.tickFrameTimers();
    EXPECT_EQ(ticks.count, 2);
    Stopper stopper{ui.timers};
    for (TestTimer* each : ui.timers) each->onTick.addHandler(&stopper, &Stopper::hear);
    ui.tickFrameTimers();
    EXPECT_EQ(ticks.count, 3) << "one that is stopped within a frame does not tick";
    timer.running = true;
    ui.accelerated = false;
    EXPECT_TRUE(timer.isStarted()) << "frames have ended without a word";
}

TEST(RootControl, SharesTheTreeWithARenderThread) {
    TestInterface ui;
    ui.accelerated = true;
    Control moved(ui);
    moved.bounds = Rect{0, 0, 10, 10};
    moved.parent = ui.root;
    struct Frame {
        void hear(void*) { control.setLeft(control.bounds.value().left + 1.0f); }
        Control& control;
    } frame{moved};
    TestTimer timer(ui);
    timer.onTick.setHandler(&frame, &Frame::hear);
    timer.frameLocked = true;
    timer.running = true;
    std::atomic<int> frames = 0;
    std::atomic<bool> stop = false;
    std::thread renderer([&] {
        while (!stop) {
            ui.root->lockObject();
            ui.tickFrameTimers();
            ui.root->takeDirtyRect();
            ui.postDeferred(moved, 0);
            ++frames;
            ui.root->unlockObject();
            std::this_thread::yield();
        }
    });
    for (int i = 0; i < 300; ++i) {
        const RootControl::MessageScope message(*ui.root);
        const RootControl::MessageScope nested(*ui.root);
        moved.setTop(static_cast<float>(i));
        ui.root->platformMouseMove({5, static_cast<float>(i)}, 0);
        ui.drainRelay();
        if (i % 50 != 0) continue;
        const int seen = frames;
        const RootControl::LockGivenAway modal(*ui.root);
        while (frames < seen + 3) std::this_thread::yield();
    }
    stop = true;
    renderer.join();
    EXPECT_FLOAT_EQ(moved.bounds.value().left, static_cast<float>(frames));
}

}  // namespace
}  // namespace vanta::gui
