#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <thread>

#include "tests/plugin/preset_bytes.hpp"
#include "tests/plugin/test_plugin.hpp"

namespace vanta {
namespace {

using test::RecordingAdapter;
using test::RecordingListener;
using test::ScratchFolder;
using test::TestPlugin;
using Gesture = GenericPlugin::Gesture;
using Updates = std::vector<RecordingAdapter::Update>;

/// A model with an open interface and a host.
class Model : public testing::Test {
protected:
    Model() {
        plugin.setAdapter(&adapter);
        plugin.interfaceOpened();
    }
    ~Model() override { plugin.setListener(nullptr); }

    void drag(AbstractPluginParameter& parameter, std::initializer_list<float> values) {
        plugin.gesture(parameter.index(), Gesture::Begin);
        for (const float value : values) {
            parameter.setValue(value, 0);
            plugin.gesture(parameter.index(), Gesture::Change);
        }
        plugin.gesture(parameter.index(), Gesture::End);
    }

    template <typename Action>
    void onAnotherThread(Action action) {
        std::thread(action).join();
    }

    RecordingAdapter adapter;
    TestPlugin plugin;
};

TEST_F(Model, OneDragIsOneUndoStep) {
    plugin.gesture(0, Gesture::Begin);
    for (int i = 1; i <= 200; ++i) {
        plugin.level.setValue(static_cast<float>(i) * 0.05f, 0);
        plugin.gesture(0, Gesture::Change);
    }
    plugin.gesture(0, Gesture::End);
    EXPECT_EQ(plugin.undoHistory().undoCount(), 1);
    EXPECT_TRUE(plugin.presetState().modified());

    drag(plugin.level, {3.0f, 10.0f});
    EXPECT_EQ(plugin.undoHistory().undoCount(), 1) << "released where it began";
    plugin.undoHistory().undo();
    EXPECT_EQ(plugin.level.value(), 1.0f);
    EXPECT_FALSE(plugin.presetState().modified());
    plugin.undoHistory().redo();
    EXPECT_EQ(plugin.level.value(), 10.0f);
}

TEST_F(Model, AHundredStepsReachBackNoFurther) {
    for (int i = 1; i <= 101; ++i) drag(plugin.level, {static_cast<float>(i) * 0.05f});
    int steps = 0;
    for (; plugin.undoHistory().canUndo(); ++steps) plugin.undoHistory().undo();
    EXPECT_EQ(steps, 100);
    EXPECT_FLOAT_EQ(plugin.level.value(), 0.05f) << "the state before the oldest step is still there";
    for (steps = 0; plugin.undoHistory().canRedo(); ++steps) plugin.undoHistory().redo();
    EXPECT_EQ(steps, 100);
    EXPECT_FLOAT_EQ(plugin.level.value(), 5.05f);
}

TEST_F(Model, ANewChangeEndsRedoing) {
    drag(plugin.level, {2.0f});
    drag(plugin.level, {3.0f});
    plugin.undoHistory().undo();
    drag(plugin.balance, {0.5f});
    EXPECT_FALSE(plugin.undoHistory().canRedo());
    plugin.undoHistory().undo();
    EXPECT_EQ(plugin.level.value(), 2.0f);
    EXPECT_EQ(plugin.balance.value(), 0.0f);
}

TEST_F(Model, ComparingTwiceReturnsInTwoSteps) {
    drag(plugin.level, {7.0f});
    plugin.toggleCompare();
    EXPECT_EQ(plugin.compareStates().current(), 1);
    EXPECT_EQ(plugin.level.value(), 1.0f);
    drag(plugin.balance, {0.25f});
    plugin.toggleCompare();
    EXPECT_EQ(plugin.level.value(), 7.0f);
    EXPECT_EQ(plugin.balance.value(), 0.0f);
    EXPECT_EQ(plugin.undoHistory().undoCount(), 4);

    // Back over the switch: the slot follows the values.
    plugin.undoHistory().undo();
    EXPECT_EQ(plugin.compareStates().current(), 1);
    EXPECT_EQ(plugin.balance.value(), 0.25f);
    plugin.undoHistory().undo();
    plugin.undoHistory().undo();
    EXPECT_EQ(plugin.compareStates().current(), 0);
    EXPECT_EQ(plugin.level.value(), 7.0f);
    EXPECT_TRUE(plugin.compareStates().modified());
    plugin.compareStates().copyToOther();
    EXPECT_FALSE(plugin.compareStates().modified());
    plugin.toggleCompare();
    EXPECT_EQ(plugin.level.value(), 7.0f);
}

TEST_F(Model, ABlockOfChangesIsOneUpdate) {
    RecordingListener listener;
    plugin.setListener(&listener);
    {
        const ChangeBlock outer(plugin);
        plugin.level.setValue(2.0f, 0);
        {
            const ChangeBlock inner(plugin);
            plugin.balance.setValue(0.5f, 0);
        }
        plugin.mode.setValue(4.0f, 0);
        EXPECT_TRUE(adapter.updates.empty());
    }
    EXPECT_EQ(adapter.updates, (Updates{{-1, false}}));
    EXPECT_EQ(listener.count(GenericPlugin::ParameterChanged), 1);
    { const ChangeBlock nothing(plugin); }
    EXPECT_EQ(adapter.updates.size(), 1u);
    plugin.level.setValue(3.0f, 0);
    EXPECT_EQ(adapter.updates.back(), (RecordingAdapter::Update{0, false}));
}

TEST_F(Model, AHostsChangeIsNoStepAndNotToldBack) {
    plugin.level.setValue(4.0f, kFromHost);
    EXPECT_TRUE(adapter.updates.empty());
    EXPECT_EQ(plugin.undoHistory().undoCount(), 0);
    EXPECT_TRUE(plugin.presetState().modified());
}

TEST_F(Model, WhatOtherThreadsChangeReachesTheHostFromTheOwner) {
    onAnotherThread([this] {
        plugin.level.setValue(2.0f, 0);
        plugin.level.setValue(3.0f, 0);
        plugin.mode.setValue(3.0f, 0);
        plugin.mode.setValue(5.0f, 0);
        EXPECT_EQ(plugin.pumpEvents(), 0) << "not the owner";
    });
    EXPECT_TRUE(adapter.updates.empty());
    EXPECT_EQ(plugin.latency(), 220) << "known before it is reported";
    plugin.pumpEvents();
    EXPECT_EQ(adapter.updates, (Updates{{0, false}, {2, false}}));
    EXPECT_EQ(adapter.latencyReports, 1);
    EXPECT_EQ(plugin.pumpEvents(), 0);
}

TEST_F(Model, AQueuedResetIsNotLostToWhatFollows) {
    State state{"", {}, 0, {9.0f, 1.0f, 5.0f, 3.0f}, {}};
    onAnotherThread([&] {
        plugin.restoreState(state);
        const ChangeBlock block(plugin);
        plugin.level.setValue(2.0f, 0);
    });
    plugin.pumpEvents();
    EXPECT_EQ(adapter.updates, (Updates{{-1, true}}));
    plugin.restoreState(State{"", {}, 0, {2.0f}, {}});
    plugin.level.setValue(3.0f, 0);
    EXPECT_EQ(adapter.updates.size(), 2u) << "a state that changes nothing leaves no reset behind";
    EXPECT_FALSE(adapter.updates.back().reset);
}

TEST_F(Model, ManyThreadsLoseNoChange) {
    constexpr int kThreads = 4;
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t) {
        threads.emplace_back([this, t] {
            for (int i = 0; i < 2000; ++i) {
                const ChangeBlock block(plugin);
                plugin.parameterAt(t % 2)->setValue(static_cast<float>(i % 7) * 0.1f, 0);
            }
        });
    }
    for (std::thread& thread : threads) thread.join();
    plugin.pumpEvents();
    ASSERT_FALSE(adapter.updates.empty());
    adapter.updates.clear();
    plugin.level.setValue(9.5f, 0);
    EXPECT_EQ(adapter.updates, (Updates{{0, false}})) << "no block is left open";
}

TEST_F(Model, AListenerThatWasReplacedIsNeverCalledAgain) {
    struct Frail final : GenericPlugin::Listener {
        ~Frail() override { gone = true; }
        void onEvent(int, int) override {
            EXPECT_FALSE(gone.load());
            ++calls;
        }
        std::atomic<bool> gone{false};
        std::atomic<int> calls{0};
    };
    std::atomic<bool> stop{false};
    std::thread host([&] {
        for (int i = 0; !stop.load(); ++i) plugin.level.setValue(static_cast<float>(i % 10), kFromHost);
    });
    for (int i = 0; i < 200; ++i) {
        auto listener = std::make_unique<Frail>();
        plugin.setListener(listener.get());
        while (listener->calls.load() == 0) std::this_thread::yield();
        plugin.setListener(nullptr);
        const int calls = listener->calls.load();
        std::this_thread::yield();
        EXPECT_EQ(listener->calls.load(), calls);
    }
    stop = true;
    host.join();
}

TEST_F(Model, AListenerMayLeaveWithinItsOwnCall) {
    struct Leaving final : GenericPlugin::Listener {
        void onEvent(int, int) override { model->setListener(nullptr); }
        GenericPlugin* model = nullptr;
    } listener;
    listener.model = &plugin;
    plugin.setListener(&listener);
    plugin.level.setValue(5.0f, 0);
    EXPECT_EQ(plugin.listener(), nullptr);
}

TEST_F(Model, TheInterfacesThreadBecomesTheOwner) {
    RecordingListener listener;
    onAnotherThread([&] {
        plugin.setListener(&listener);
        EXPECT_TRUE(plugin.onOwnerThread());
    });
    EXPECT_FALSE(plugin.onOwnerThread());
    EXPECT_FALSE(plugin.claim()) << "an interface is open";
    plugin.setListener(nullptr);
    EXPECT_TRUE(plugin.claim());
}

TEST_F(Model, ProxiesTakeCommandsOnceAndCombineChannels) {
    std::vector<std::uint8_t> commands;
    plugin.combinedLevelSource(1).resetPeak();
    plugin.levelSource(0).resetMeasurement();
    plugin.takeLevelCommands(commands);
    EXPECT_EQ(commands, (std::vector<std::uint8_t>{2, 0, 1, 0, 1}));
    plugin.takeLevelCommands(commands);
    EXPECT_EQ(commands, (std::vector<std::uint8_t>(5, 0)));
}

TEST(ModelStatics, AreSharedAndGoWithTheLastInstance) {
    auto first = std::make_unique<TestPlugin>();
    RecordingAdapter adapter;
    {
        TestPlugin second;
        second.setAdapter(&adapter);
        EXPECT_EQ(&first->statics(), &second.statics());
        EXPECT_EQ(GenericPlugin::instanceCount(), 2);
        RecordingListener listener;
        second.setListener(&listener);
        first->statics().controllers.assign(7, 0);
        EXPECT_EQ(adapter.mapChanges, 1) << "a map that one instance edits is everybody's";
        EXPECT_EQ(listener.count(GenericPlugin::ControllerMapChanged), 1);
        second.setListener(nullptr);
    }
    first->statics().controllers.assign(8, 1);
    EXPECT_EQ(adapter.mapChanges, 1);
    first.reset();
    EXPECT_EQ(GenericPlugin::instanceCount(), 0);
    EXPECT_EQ(TestPlugin().statics().controllers.controllerOf(0), -1);
}

// Presets

class ModelPresets : public testing::Test {
protected:
    ModelPresets() {
        std::filesystem::create_directories(folder.file("presets"));
        write("Default Setting", {2.0f, 0.5f, 3.0f, 1.0f});
        write("Loud", {8.0f, -0.5f, 5.0f, 2.0f});
        std::filesystem::create_directories(folder.file("data"));
    }
    std::string write(const std::string& name, const std::vector<float>& values) {
        return folder.write("presets/" + name + ".qmp", test::presetBytes(TestPlugin::kTag, 1, values))
            .string();
    }
    static PresetEntry entry(const TestPlugin& plugin, const std::string& name) {
        return plugin.statics().findPreset(name, true).value();
    }

    ScratchFolder folder;
};

TEST_F(ModelPresets, TheFirstLoadTakesTheInterfaceFromItsDefaults) {
    folder.write("data/InterfaceDefaults.qmd", test::presetBytes(TestPlugin::kTag, 1, {3.0f}));
    const TestPlugin plugin(folder.path());
    EXPECT_EQ(plugin.parameterValues(), (std::vector<float>{2.0f, 0.5f, 3.0f, 3.0f}));
    EXPECT_EQ(plugin.latency(), 132) << "every parameter takes effect once";
}

TEST_F(ModelPresets, LaterLoadsLeaveTheInterfaceAlone) {
    TestPlugin plugin(folder.path());
    RecordingAdapter adapter;
    plugin.setAdapter(&adapter);
    EXPECT_EQ(plugin.presetState().name(), "Default Setting");
    EXPECT_EQ(plugin.view.value(), 1.0f);
    EXPECT_TRUE(plugin.loadPreset(entry(plugin, "Loud")));
    EXPECT_EQ(plugin.parameterValues(), (std::vector<float>{8.0f, -0.5f, 5.0f, 1.0f}));
    EXPECT_EQ(adapter.updates, (Updates{{-1, true}})) << "one update, and the processor starts anew";
    EXPECT_EQ(adapter.nameChanges, 1);
    EXPECT_EQ(plugin.presetState().values(),
              (PresetState::Values{"Loud", folder.file("presets/Loud.qmp"), false}));
}

TEST_F(ModelPresets, AFailedLoadKeepsNameAndPath) {
    TestPlugin plugin(folder.path());
    const std::string foreign = folder.write("presets/Foreign.qmp", "nothing of ours").string();
    EXPECT_FALSE(plugin.loadPreset({foreign, "Foreign", {}, -1, -1}));
    EXPECT_EQ(plugin.presetState().values().name, "Default Setting");
    EXPECT_FALSE(plugin.presetState().modified());
    EXPECT_EQ(plugin.level.value(), 2.0f);
}

TEST_F(ModelPresets, SavingNamesThePresetAndListsIt) {
    TestPlugin plugin(folder.path());
    plugin.level.setValue(4.5f, 0);
    const PresetEntry mine{folder.file("presets/Mine.qmp").string(), "Mine", {}, -1, -1};
    EXPECT_TRUE(plugin.savePreset(mine));
    EXPECT_EQ(plugin.presetState().values(), (PresetState::Values{"Mine", mine.path, false}));
    EXPECT_TRUE(plugin.statics().findPreset("Mine", true).has_value());
    plugin.loadPreset(entry(plugin, "Loud"));
    plugin.loadPreset(entry(plugin, "Mine"));
    EXPECT_EQ(plugin.level.value(), 4.5f);
    EXPECT_FALSE(plugin.savePreset({"/proc/nowhere/Mine.qmp", "Other", {}, -1, -1}));
    EXPECT_EQ(plugin.presetState().name(), "Mine");
}

TEST_F(ModelPresets, ARestoredNameFindsItsFile) {
    TestPlugin plugin(folder.path());
    plugin.setPresetName("Loud");
    EXPECT_EQ(plugin.presetState().values().path, folder.file("presets/Loud.qmp"));
    plugin.setPresetName("Loudest", 4);
    EXPECT_EQ(plugin.presetState().name(), "Loud") << "equal as far as it is compared";
    plugin.setPresetName("Gone");
    EXPECT_EQ(plugin.presetState().values(), (PresetState::Values{"Gone", {}, false}));
}

TEST_F(ModelPresets, AStepOnAnInterfaceParameterIsRemembered) {
    TestPlugin plugin(folder.path());
    plugin.level.setValue(3.0f, 0);
    plugin.takeSnapshot(plugin.level.index());
    EXPECT_FALSE(std::filesystem::exists(folder.file("data/InterfaceDefaults.qmd")));
    plugin.view.setValue(2.0f, 0);
    plugin.takeSnapshot(plugin.view.index());
    EXPECT_EQ(test::contentOf(folder.file("data/InterfaceDefaults.qmd")),
              test::presetBytes(TestPlugin::kTag, 1, {2.0f}));
}

TEST_F(ModelPresets, ProgramChangesLoadOnTheOwnerAndOnlyIfTheyAreEnabled) {
    TestPlugin plugin(folder.path());
    const PresetEntry loud = entry(plugin, "Loud");
    const auto request = [&] {
        std::thread audio(
            [&] { plugin.eventQueue().post(ModelEventQueue::Program, loud.bank << 8 | loud.program); });
        audio.join();
        EXPECT_EQ(plugin.presetState().name(), "Default Setting");
        plugin.pumpEvents();
    };
    request();
    EXPECT_EQ(plugin.presetState().name(), "Default Setting");
    plugin.statics().settings.enableMidiProgramChanges = true;
    request();
    EXPECT_EQ(plugin.presetState().name(), "Loud");
}

}  // namespace
}  // namespace vanta
