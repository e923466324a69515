#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

#include "plugin/midi/controller_mapping.hpp"
#include "tests/plugin/preset_bytes.hpp"
#include "tests/support/temp_folder.hpp"

namespace vanta::test {
namespace {

constexpr int kNone = MidiControlled::kNoTarget;

struct CountedMapping : ControllerMapping {
    CountedMapping() : ControllerMapping(31, 1) { changed.addHandler(this, &CountedMapping::count); }
    void count(void*) { ++changes; }

    int changes = 0;
};

TEST(ControllerMapping, ControllerAndTargetBelongToEachOtherAlone) {
    CountedMapping map;
    map.assign(5, 12);
    map.assign(5, 12);
    EXPECT_EQ(map.changes, 1);
    map.assign(7, 12);
    EXPECT_EQ(map.changes, 2);
    EXPECT_EQ(map.targetOf(5), kNone);
    map.assign(7, 13);
    EXPECT_EQ(map.controllerOf(12), -1);
    EXPECT_EQ(map.targetOf(7), 13);
    map.assign(-1, 13);
    EXPECT_EQ(map.targetOf(7), kNone);
    map.assign(3, MidiControlled::kExtraTargetBase);
    EXPECT_EQ(map.controllerOf(MidiControlled::kExtraTargetBase), 3);
    map.assign(3, kNone);
    EXPECT_EQ(map.controllerOf(MidiControlled::kExtraTargetBase), -1);
}

TEST(ControllerMapping, WhatDoesNotExistCannotBeAssigned) {
    CountedMapping map;
    for (const auto& [controller, target] : std::vector<std::pair<int, int>>{
             {128, 3}, {-2, 3}, {4, 31}, {4, -2}, {4, MidiControlled::kExtraTargetBase + 1}, {-1, kNone}}) {
        map.assign(controller, target);
    }
    EXPECT_EQ(map.changes, 0);
    EXPECT_EQ(map.controllerOf(kNone), -1);
}

TEST(ControllerMapping, AMapIsReadWholeOrNotAtAll) {
    Bytes bytes;
    bytes.tag("QMCM").number(9);
    // There is no parameter 31, and 30 has a controller already.
    for (const int target : {kNone, 0, 30, 31, 30}) bytes.number(target);
    for (int controller = 5; controller < 128; ++controller) bytes.number(kNone);
    const std::string& sound = bytes.bytes;
    CountedMapping map;
    const auto read = [&map](const std::string& text) {
        std::istringstream stream(text);
        BinaryDataReader reader(stream);
        return map.read(reader);
    };
    map.assign(9, 9);
    for (const std::size_t size : {std::size_t{0}, std::size_t{8}, sound.size() - 1}) {
        EXPECT_FALSE(read(sound.substr(0, size)));
    }
    EXPECT_FALSE(read("QMCX" + sound.substr(4)));
    EXPECT_EQ(map.targetOf(9), 9);
    EXPECT_TRUE(read(sound));
    EXPECT_EQ(map.changes, 2);
    EXPECT_EQ(map.targetOf(1), 0);
    EXPECT_EQ(map.targetOf(2), 30);
    for (const int free : {3, 4, 9}) EXPECT_EQ(map.targetOf(free), kNone);
}

TEST(ControllerMapping, TheFileIsWrittenOnlyForAChange) {
    const TempFolder folder;
    const auto path = folder / "made/MidiControllerMap.qmm";
    ControllerMapping map(31);
    EXPECT_TRUE(map.save(path));
    EXPECT_FALSE(std::filesystem::exists(path));
    map.assign(7, 0);
    EXPECT_TRUE(map.save(path));
    EXPECT_TRUE(std::filesystem::remove(path));
    EXPECT_TRUE(map.save(path));
    EXPECT_FALSE(std::filesystem::exists(path));
}

TEST(ControllerLearner, AssignsOnlyWhileATargetIsChosen) {
    ControllerMapping map(31);
    ControllerLearner learner(map);
    EXPECT_FALSE(learner.controllerMoved(20));
    learner.setTarget(4);
    EXPECT_FALSE(learner.controllerMoved(-1));
    EXPECT_TRUE(learner.controllerMoved(20));
    EXPECT_FALSE(learner.controllerMoved(20));
    EXPECT_TRUE(learner.controllerMoved(21));
    EXPECT_EQ(map.controllerOf(4), 21);
    learner.setTarget(kNone);
    EXPECT_FALSE(learner.controllerMoved(22));
}

}  // namespace
}  // namespace vanta::test
