#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "plugin/parameters/float_plugin_parameter.hpp"
#include "plugin/parameters/indexed_plugin_parameter.hpp"
#include "plugin/parameters/parameter_change_forwarder.hpp"
#include "plugin/parameters/parameter_set_list.hpp"
#include "tests/plugin/recording_owner.hpp"
#include "wave/environment.hpp"

namespace vanta {
namespace {

using test::RecordingOwner;

struct ChangeHandler {
    void changed(void* sender) {
        ++calls;
        last = sender;
    }
    int calls = 0;
    void* last = nullptr;
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
    {
        ChangeBlock block(owner);
        gain.setValue(0.5f, 0);
        gain.setValue(0.7f, 0);
        EXPECT_EQ(handler.calls, 0);
    }
    EXPECT_EQ(handler.calls, 1);
    EXPECT_EQ(handler.last, static_cast<AbstractPluginParameter*>(&gain));
    {
        ChangeBlock block(owner);
        unity.setValue(1.0f, 0);
        gain.setValue(0.1f, 0);
    }
    EXPECT_EQ(handler.calls, 2);
    EXPECT_EQ(handler.last, nullptr);
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

TEST(ParameterSetList, CountsParametersOverTheWholePlugIn) {
    RecordingOwner owner;
    FloatPluginParameter before(owner, "Before");
    ParameterSetList<PairSet> list(owner, "Pairs", 3, "Pair ");
    FloatPluginParameter after(owner, "After");
    EXPECT_EQ(list.numActive.name(), "Num Active Pairs");
    EXPECT_EQ(list.firstIndex(), 1);
    EXPECT_EQ(list.at(1).firstParameterIndex(), 4);
    EXPECT_EQ(list.at(1).mode.name(), "Pair 2 Mode");
    EXPECT_EQ(list.at(1).mode.index(), 5);
    EXPECT_EQ(list.at(1).parameterAt(1), &list.at(1).mode);
    EXPECT_EQ(after.index(), 8);
    EXPECT_FALSE(list.contains(0));
    EXPECT_TRUE(list.contains(1));
    EXPECT_TRUE(list.contains(7));
    EXPECT_FALSE(list.contains(8));
    EXPECT_TRUE(list.contains(-1));
    std::vector<AbstractPluginParameter*> all;
    list.collectParameters(all);
    ASSERT_EQ(all.size(), 7u);
    for (int i = 0; i < 7; ++i) EXPECT_EQ(all[static_cast<std::size_t>(i)]->index(), i + 1);
    list.at(2).level.setValue(0.5f, 0);
    EXPECT_EQ(owner.changes.back().index, 6);
}

TEST(ParameterSetList, RemovingASlotMovesTheOthersUpInEveryLinkedList) {
    RecordingOwner owner;
    SourceParameterSetList<PairSet> list(owner, "Pairs", 4, "Pair ");
    ParameterSetList<PairSet> linked(owner, "Shadows", 4, "Shadow ");
    list.linkedLists.push_back(&linked);
    list.targets = {100, 3};
    list.sources = {10, 2};
    Renumbering renumbering;
    list.renumbering = &renumbering;
    EXPECT_TRUE(list.contains(linked.at(0).level.index()));
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
    EXPECT_EQ(owner.depth, 0);
    EXPECT_EQ(list.numActive.value(), 2.0f);
    EXPECT_EQ(list.at(0).level.value(), 0.1f);
    EXPECT_EQ(list.at(1).level.value(), 0.3f);
    EXPECT_EQ(list.at(2).level.value(), 0.0f);
    EXPECT_EQ(list.at(3).level.value(), 0.4f);
    EXPECT_EQ(linked.at(1).mode.value(), 4.0f);
    EXPECT_EQ(linked.at(2).mode.value(), 1.0f);
    EXPECT_EQ(renumbering.calls, (std::vector<std::vector<int>>{{2, 103, 3, 108}, {1, 12, 2, 15}}));

    list.numActive.setRange(2, 4, 2);
    list.removeAt(0);
    EXPECT_EQ(list.numActive.value(), 2.0f);
    list.resetAll();
    EXPECT_EQ(linked.at(3).mode.value(), 1.0f);
}

struct Node final : wave::Source {
    using Source::Source;
    void produce(wave::BasicBlock<float>*, int, int) override { publishSilence(); }
};

TEST(NumActiveParameter, WakesAsManyElementsAsItSays) {
    RecordingOwner owner;
    wave::Environment environment(64);
    NumActiveParameter number(owner, "Num Active Nodes");
    number.setRange(0, 3, 0);
    std::vector<std::unique_ptr<Node>> nodes;
    for (int i = 0; i < 5; ++i) nodes.push_back(std::make_unique<Node>(environment));
    const int group = number.attach({{nodes[0].get(), nodes[1].get()}, {nodes[2].get()}, {nullptr}});
    number.attach(std::vector<wave::Producer*>{nodes[3].get(), nullptr, nullptr});
    EXPECT_TRUE(nodes[0]->active());
    number.applyValue(1.0f);
    EXPECT_TRUE(nodes[0]->active() && nodes[1]->active() && nodes[3]->active());
    EXPECT_FALSE(nodes[2]->active());
    number.applyValue(0.0f);
    EXPECT_FALSE(nodes[0]->active() || nodes[1]->active() || nodes[3]->active());
    number.replace(group, 0, {nodes[4].get()});
    EXPECT_FALSE(nodes[4]->active());
    number.applyValue(3.0f);
    EXPECT_TRUE(nodes[4]->active() && nodes[2]->active() && nodes[3]->active());
    EXPECT_FALSE(nodes[0]->active());
}

}  // namespace
}  // namespace vanta
