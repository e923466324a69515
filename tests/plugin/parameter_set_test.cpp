#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "plugin/parameters/float_plugin_parameter.hpp"
#include "plugin/parameters/indexed_plugin_parameter.hpp"
#include "plugin/parameters/parameter_change_forwarder.hpp"
#include "plugin/parameters/parameter_set_list.hpp"
#include "tests/plugin/recording_owner.hpp"

namespace vanta::test {
namespace {

struct ChangeHandler {
    void changed(void* sender) { senders.push_back(sender); }
    std::vector<void*> senders;
};

TEST(ParameterChangeForwarder, FoldsManyChangesIntoOneCall) {
    RecordingOwner owner;
    owner.applies = true;
    FloatPluginParameter gain(owner, "Gain");
    IndexedPluginParameter<bool> unity(owner, "Unity");
    ChangeHandler handler;
    auto& forwarder = ParameterChangeForwarder::add(owner.forwarderList(), &handler, &ChangeHandler::changed);
    forwarder.listenTo(gain);
    forwarder.listenTo(unity);
    for (const float unityToo : {0.0f, 1.0f}) {
        ChangeBlock block(owner);
        gain.setValue(0.5f, 0);
        unity.setValue(unityToo, 0);
        gain.setValue(0.7f, 0);
        EXPECT_EQ(handler.senders.size(), static_cast<std::size_t>(unityToo));
    }
    EXPECT_THAT(handler.senders, testing::ElementsAre(static_cast<AbstractPluginParameter*>(&gain), nullptr));
}

struct PairSet : PluginParameterSet {
    PairSet(GenericParameterOwner& parent, const std::string& prefix)
        : PluginParameterSet(parent), level(*this, prefix + " Level"), mode(*this, prefix + " Mode") {
        mode.setRange(0, 9, 1);
    }
    FloatPluginParameter level;
    IndexedPluginParameter<int> mode;
};

struct Renumbering final : ConnectionRenumbering {
    void sourcesRemoved(int first, int removed, int last) override {
        calls.push_back({1, first, removed, last});
    }
    void targetsRemoved(int first, int removed, int last) override {
        calls.push_back({2, first, removed, last});
    }
    std::vector<std::vector<int>> calls;
};

TEST(ParameterSetList, RemovingASlotMovesTheOthersUpInEveryLinkedList) {
    RecordingOwner owner;
    SourceParameterSetList<PairSet> list(owner, "Pairs", 4, "Pair ");
    ParameterSetList<PairSet> linked(owner, "Shadows", 4, "Shadow ");
    list.linkedLists.push_back(&linked);
    list.targets = {100, 3};
    list.sources = {10, 2};
    Renumbering renumbering;
    list.renumbering = &renumbering;
    EXPECT_EQ(list.at(1).mode.name(), "Pair 2 Mode");
    for (int i = -1; i < 19; ++i) EXPECT_EQ(list.contains(i), i != 18) << "with what is linked " << i;
    list.numActive.setValue(3.0f, 0);
    for (int i = 0; i < 4; ++i) {
        list.at(i).level.setValue(0.1f * static_cast<float>(i + 1), 0);
        linked.at(i).mode.setValue(static_cast<float>(i + 2), 0);
    }
    const int blocks = owner.blocksEnded;
    list.removeAt(3);
    EXPECT_EQ(list.numActive.value(), 3.0f);
    list.removeAt(1);
    EXPECT_EQ(owner.blocksEnded, blocks + 1);
    EXPECT_EQ(list.numActive.value(), 2.0f);
    for (int i = 0; i < 4; ++i) {
        constexpr float kLevels[] = {0.1f, 0.3f, 0.0f, 0.4f}, kModes[] = {2, 4, 1, 5};
        EXPECT_EQ(list.at(i).level.value(), kLevels[i]);
        EXPECT_EQ(linked.at(i).mode.value(), kModes[i]);
    }
    EXPECT_EQ(renumbering.calls, (std::vector<std::vector<int>>{{2, 103, 3, 108}, {1, 12, 2, 15}}));

    list.numActive.setRange(2, 4, 2);
    list.removeAt(0);
    EXPECT_EQ(list.numActive.value(), 2.0f);
    list.resetAll();
    EXPECT_EQ(linked.at(3).mode.value(), 1.0f);
}

}  // namespace
}  // namespace vanta::test
