#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <future>
#include <memory>
#include <thread>

#include "plugin/model/session_state.hpp"
#include "tests/plugin/preset_bytes.hpp"
#include "tests/plugin/test_plugin.hpp"
#include "tests/support/temp_folder.hpp"

namespace vanta::test {
namespace {

using Gesture = GenericPlugin::Gesture;
using testing::ElementsAre;
using testing::IsEmpty;

/// A model with an open interface and a host.
class Model : public testing::Test {
public:
    ~Model() override { plugin.setListener(nullptr); }

protected:
    Model() {
        plugin.setAdapter(&adapter);
        plugin.interfaceOpened();
    }

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
    UndoHistory& history = plugin.undoHistory();
};

TEST_F(Model, OneDragIsOneUndoStep) {
    drag(plugin.level, {0.05f, 4.0f, 9.95f, 10.0f});
    EXPECT_EQ(history.undoCount(), 1);
    EXPECT_TRUE(plugin.presetState().modified());
    drag(plugin.level, {3.0f, 10.0f});
    EXPECT_EQ(history.undoCount(), 1) << "released where it began";
    history.undo();
    EXPECT_EQ(plugin.level.value(), 1.0f);
    EXPECT_FALSE(plugin.presetState().modified());
    history.redo();
    EXPECT_EQ(plugin.level.value(), 10.0f);
}

TEST_F(Model, AHundredStepsReachBackNoFurther) {
    for (int i = 1; i <= 101; ++i) drag(plugin.level, {static_cast<float>(i) * 0.05f});
    int steps = 0;
    for (; history.canUndo(); ++steps) history.undo();
    EXPECT_EQ(steps, 100);
    EXPECT_FLOAT_EQ(plugin.level.value(), 0.05f) << "the state before the oldest step is still there";
    while (history.canRedo()) history.redo();
    EXPECT_FLOAT_EQ(plugin.level.value(), 5.05f);
    history.undo();
    drag(plugin.balance, {0.5f});
    EXPECT_FALSE(history.canRedo()) << "a new change ends redoing";
    history.undo();
    EXPECT_THAT(plugin.parameterValues(), ElementsAre(5.0f, 0, 2, 0));
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
    EXPECT_EQ(history.undoCount(), 4);

    // Back over the switch: the slot follows the values.
    history.undo();
    EXPECT_EQ(plugin.compareStates().current(), 1);
    EXPECT_EQ(plugin.balance.value(), 0.25f);
    history.undo();
    history.undo();
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
        EXPECT_THAT(adapter.updates, IsEmpty());
    }
    { const ChangeBlock nothing(plugin); }
    EXPECT_THAT(adapter.updates, ElementsAre(-1));
    EXPECT_THAT(adapter.sent, ElementsAre("all"));
    EXPECT_EQ(listener.count<ParameterChanged>(), 1);
    plugin.level.setValue(3.0f, 0);
    plugin.level.setValue(4.0f, kFromHost);
    EXPECT_THAT(adapter.updates, ElementsAre(-1, 0)) << "a host's own is not told";
    EXPECT_EQ(history.undoCount(), 0) << "and no step";
    EXPECT_TRUE(plugin.presetState().modified());
}

TEST_F(Model, WhatOtherThreadsChangeReachesTheHostFromTheOwner) {
    onAnotherThread([this] {
        for (const float value : {2.0f, 3.0f}) plugin.level.setValue(value, 0);
        for (const float value : {3.0f, 5.0f}) plugin.mode.setValue(value, 0);
        EXPECT_EQ(plugin.pumpEvents(), 0) << "not the owner";
    });
    EXPECT_THAT(adapter.updates, IsEmpty());
    EXPECT_EQ(plugin.latency(), 220) << "known before it is reported";
    plugin.pumpEvents();
    EXPECT_THAT(adapter.updates, ElementsAre(0, 2));
    EXPECT_EQ(adapter.latencyReports, 1);
    EXPECT_EQ(plugin.pumpEvents(), 0);
}

TEST_F(Model, TheProcessorIsSentWhatOtherThreadsReplaceAtOnce) {
    onAnotherThread([&] {
        plugin.restoreState(State{"", {}, 0, {9.0f, 1.0f, 5.0f, 3.0f}, {}});
        EXPECT_THAT(adapter.sent, ElementsAre("state"));
        const ChangeBlock block(plugin);
        plugin.level.setValue(2.0f, 0);
    });
    EXPECT_THAT(adapter.sent, ElementsAre("state", "all"));
    EXPECT_THAT(adapter.updates, IsEmpty()) << "the host is not theirs";
    plugin.pumpEvents();
    EXPECT_THAT(adapter.updates, ElementsAre(-1));
}

TEST_F(Model, BlocksOfManyThreadsAllClose) {
    const auto change = [this](int index) {
        for (int i = 0; i < 2000; ++i) {
            const ChangeBlock block(plugin);
            plugin.parameterAt(index)->setValue(static_cast<float>(i % 7) * 0.1f, 0);
        }
    };
    std::vector<std::thread> threads;
    for (const int index : {0, 1, 0, 1}) threads.emplace_back(change, index);
    for (std::thread& thread : threads) thread.join();
    plugin.pumpEvents();
    ASSERT_FALSE(adapter.updates.empty());
    adapter.updates.clear();
    plugin.level.setValue(9.5f, 0);
    EXPECT_THAT(adapter.updates, ElementsAre(0));
}

TEST_F(Model, AListenerThatWasReplacedIsNeverCalledAgain) {
    struct Frail final : GenericPlugin::Listener {
        ~Frail() override { gone = true; }
        void onEvent(const PluginEvent&) override {
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
        void onEvent(const PluginEvent&) override { model->setListener(nullptr); }
        GenericPlugin* model = nullptr;
    } listener;
    listener.model = &plugin;
    plugin.setListener(&listener);
    plugin.level.setValue(5.0f, 0);
    EXPECT_EQ(plugin.owner().listener(), nullptr);
}

TEST_F(Model, TheInterfacesThreadIsTheOwnerUntilItCloses) {
    RecordingListener listener;
    onAnotherThread([&] {
        plugin.setListener(&listener);
        EXPECT_TRUE(plugin.owner().isThisThread());
    });
    EXPECT_FALSE(plugin.owner().claim());
    plugin.setListener(nullptr);
    EXPECT_TRUE(plugin.owner().claim());
}

TEST_F(Model, AControllerMapThatOneInstanceEditsIsEverybodys) {
    const auto other = std::make_unique<TestPlugin>();
    RecordingListener listener;
    plugin.setListener(&listener);
    other->statics().controllers.assign(7, 0);
    EXPECT_EQ(adapter.mapChanges, 1);
    plugin.pumpEvents();
    EXPECT_EQ(listener.count<ControllerMapChanged>(), 1);
}

TEST_F(Model, AListenerIsCalledUnderNoLockThatInstancesShare) {
    struct Opening final : GenericPlugin::Listener {
        void onEvent(const PluginEvent&) override {
            // On another thread, as this one may enter again what it holds.
            opened = std::async(std::launch::async, [] { TestPlugin another; });
            inTime = opened.wait_for(std::chrono::seconds(5)) == std::future_status::ready;
        }
        std::future<void> opened;
        bool inTime = false;
    } listener;
    plugin.setListener(&listener);
    {
        const auto held = plugin.statics().lock();
        plugin.statics().controllers.assign(7, 0);
    }
    plugin.pumpEvents();
    EXPECT_TRUE(listener.inTime);
}

TEST_F(Model, WhoeverTakesOverAStateTellsOfItsNameAndMark) {
    RecordingListener listener;
    plugin.setListener(&listener);
    plugin.setPresetName("Mine");
    drag(plugin.level, {5.0f});
    const auto expectTold = [&](const auto& action, const std::string& name, bool modified) {
        listener.events.clear();
        adapter.nameChanges = 0;
        action();
        EXPECT_EQ(plugin.presetState().name(), name);
        EXPECT_EQ(plugin.presetState().modified(), modified);
        EXPECT_EQ(listener.count<PresetChanged>(), 1);
        EXPECT_EQ(adapter.nameChanges, 1);
    };
    expectTold([&] { history.undo(); }, "", false);
    expectTold([&] { history.redo(); }, "Mine", true);
    plugin.compareStates().copyToOther();
    plugin.setPresetName("Other");
    expectTold([&] { plugin.toggleCompare(); }, "Mine", true);
    const auto saved = writeSessionState(plugin);
    plugin.restoreState(State{"", {"Mine", {}, false}, 0, {}, {}});
    expectTold([&] { readSessionState(plugin, saved); }, "Mine", true);
}

TEST(ModelWithoutInterface, UndoesToWhatWasThere) {
    TestPlugin plugin;
    plugin.setPresetName("Mine");
    for (const auto phase : {Gesture::Begin, Gesture::Change, Gesture::End}) {
        if (phase == Gesture::Change) plugin.level.setValue(4.0f, 0);
        plugin.gesture(0, phase);
    }
    plugin.undoHistory().undo();
    EXPECT_EQ(plugin.presetState().name(), "Mine");
    EXPECT_EQ(plugin.level.value(), 1.0f);
}

// Presets

class ModelPresets : public testing::Test {
protected:
    ModelPresets() {
        writePreset("Default Setting", {2.0f, 0.5f, 3.0f, 1.0f});
        writePreset("Loud", {8.0f, -0.5f, 5.0f, 2.0f});
        folder.write(kDefaults, presetBytes(TestPlugin::kTag, 1, {3.0f}));
        plugin = std::make_unique<TestPlugin>(folder.path);
    }
    void writePreset(const std::string& name, const std::vector<float>& values) const {
        writeBytes(pathOf(name), presetBytes(TestPlugin::kTag, 1, values));
    }
    std::string pathOf(const std::string& name) const {
        std::filesystem::create_directories(folder / "presets");
        return folder / ("presets/" + name + ".qmp");
    }
    PresetEntry entry(const std::string& name) const {
        return plugin->statics().findPreset(name, true).value();
    }
    PresetState::Values shown() const { return plugin->presetState().values(); }

    static constexpr const char* kDefaults = "data/InterfaceDefaults.qmd";
    TempFolder folder;
    std::unique_ptr<TestPlugin> plugin;
};

TEST_F(ModelPresets, OnlyTheFirstLoadSetsTheInterfaceAndFromItsDefaults) {
    EXPECT_THAT(plugin->parameterValues(), ElementsAre(2, 0.5f, 3, 3));
    EXPECT_EQ(plugin->latency(), 132) << "every parameter takes effect once";
    RecordingAdapter adapter;
    plugin->setAdapter(&adapter);
    EXPECT_EQ(shown().name, "Default Setting");
    EXPECT_TRUE(plugin->loadPreset(entry("Loud")));
    EXPECT_THAT(plugin->parameterValues(), ElementsAre(8, -0.5f, 5, 3));
    EXPECT_THAT(adapter.updates, ElementsAre(-1));
    EXPECT_THAT(adapter.sent, ElementsAre("reset")) << "the processor starts anew";
    EXPECT_EQ(adapter.nameChanges, 1);
    EXPECT_EQ(shown(), (PresetState::Values{"Loud", pathOf("Loud"), false}));

    const std::string before = readBytes(folder / kDefaults);
    plugin->level.setValue(3.0f, 0);
    plugin->takeSnapshot(plugin->level.index());
    EXPECT_EQ(readBytes(folder / kDefaults), before);
    plugin->view.setValue(2.0f, 0);
    plugin->takeSnapshot(plugin->view.index());
    EXPECT_EQ(readBytes(folder / kDefaults), presetBytes(TestPlugin::kTag, 1, {2.0f}));
}

TEST_F(ModelPresets, SavingNamesThePresetAndWhatFailsChangesNothing) {
    plugin->level.setValue(4.5f, 0);
    const PresetEntry mine{pathOf("Mine"), "Mine", {}, -1, -1};
    EXPECT_TRUE(plugin->savePreset(mine));
    EXPECT_EQ(entry("Mine").path, mine.path);
    const PresetEntry foreign{folder.write("presets/Foreign.qmp", "nothing of ours"), "Foreign", {}, -1, -1};
    EXPECT_FALSE(plugin->loadPreset(foreign));
    EXPECT_FALSE(plugin->savePreset({"/proc/nowhere/Mine.qmp", "Other", {}, -1, -1}));
    EXPECT_EQ(shown(), (PresetState::Values{"Mine", mine.path, false}));
    EXPECT_EQ(plugin->level.value(), 4.5f);
}

TEST_F(ModelPresets, ARestoredNameFindsItsFile) {
    plugin->setPresetName("Loud");
    plugin->setPresetName("Loudest", 4);
    EXPECT_EQ(shown(), (PresetState::Values{"Loud", pathOf("Loud"), false}))
        << "equal as far as it is compared";
    plugin->setPresetName("Gone");
    EXPECT_EQ(shown(), (PresetState::Values{"Gone", {}, false}));
}

TEST_F(ModelPresets, ProgramChangesLoadOnTheOwnerAndOnlyIfTheyAreEnabled) {
    const PresetEntry loud = entry("Loud");
    for (const bool enabled : {false, true}) {
        plugin->statics().settings.enableMidiProgramChanges = enabled;
        std::thread([&] { plugin->eventQueue().post(ProgramRequested{loud.bank, loud.program}); }).join();
        EXPECT_EQ(shown().name, "Default Setting");
        plugin->pumpEvents();
        EXPECT_EQ(shown().name, enabled ? "Loud" : "Default Setting");
    }
    // More than there is room for.
    const PresetEntry last = entry("Default Setting");
    for (int i = 0; i < 100; ++i) plugin->eventQueue().post(ProgramRequested{loud.bank, loud.program});
    plugin->eventQueue().post(ProgramRequested{last.bank, last.program});
    plugin->pumpEvents();
    EXPECT_EQ(shown().name, "Default Setting");
}

}  // namespace
}  // namespace vanta::test
