#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <sstream>
#include <string>
#include <vector>

#include "plugin/midi/controller_mapping.hpp"
#include "tests/plugin/mutations.hpp"
#include "tests/plugin/preset_bytes.hpp"

namespace vanta {
namespace {

using test::Bytes;
using test::ScratchFolder;

constexpr int kNone = ControllerMapping::kNoTarget;

struct CountedMapping {
    CountedMapping() { map.changed.addHandler(this, &CountedMapping::count); }
    void count(void*) { ++changes; }

    ControllerMapping map{31, 1};
    int changes = 0;
};

std::string mapBytes(int version, const std::vector<int>& targets) {
    Bytes bytes;
    bytes.tag("QMCM").number(version);
    for (const int target : targets) bytes.number(target);
    return bytes.bytes;
}

bool readBytes(ControllerMapping& map, const std::string& bytes) {
    std::istringstream stream(bytes);
    BinaryDataReader reader(stream);
    return map.read(reader);
}

TEST(ControllerMapping, ControllerAndTargetBelongToEachOtherAlone) {
    CountedMapping counted;
    ControllerMapping& map = counted.map;
    map.assign(5, 12);
    map.assign(5, 12);
    EXPECT_EQ(counted.changes, 1);
    map.assign(7, 12);
    EXPECT_EQ(counted.changes, 2);
    EXPECT_EQ(map.targetOf(5), kNone);
    EXPECT_EQ(map.controllerOf(12), 7);
    map.assign(7, 13);
    EXPECT_EQ(map.controllerOf(12), -1);
    EXPECT_EQ(map.targetOf(7), 13);
    map.assign(-1, 13);
    EXPECT_EQ(map.targetOf(7), kNone);
    map.assign(3, 1);
    map.assign(3, kNone);
    EXPECT_EQ(map.controllerOf(1), -1);
}

TEST(ControllerMapping, WhatDoesNotExistCannotBeAssigned) {
    CountedMapping counted;
    for (const auto& [controller, target] :
         std::vector<std::pair<int, int>>{{128, 3},
                                          {-2, 3},
                                          {4, 31},
                                          {4, -2},
                                          {4, ControllerMapping::kExtraTargetBase + 1},
                                          {-1, kNone}}) {
        counted.map.assign(controller, target);
    }
    EXPECT_EQ(counted.changes, 0);
    EXPECT_EQ(counted.map.controllerOf(kNone), -1);
    counted.map.assign(4, ControllerMapping::kExtraTargetBase);
    EXPECT_EQ(counted.map.controllerOf(ControllerMapping::kExtraTargetBase), 4);
}

TEST(ControllerMapping, AMapIsReadWholeOrNotAtAll) {
    std::vector<int> targets(128, kNone);
    targets[1] = 0;
    targets[2] = 30;
    targets[3] = 31;  // no such parameter
    targets[4] = 30;  // has a controller already
    CountedMapping counted;
    counted.map.assign(9, 9);
    const std::string sound = mapBytes(9, targets);
    for (const std::size_t size : {std::size_t{0}, std::size_t{7}, std::size_t{8}, sound.size() - 1}) {
        EXPECT_FALSE(readBytes(counted.map, sound.substr(0, size)));
    }
    EXPECT_FALSE(readBytes(counted.map, "QMCX" + sound.substr(4)));
    EXPECT_EQ(counted.map.targetOf(9), 9);
    EXPECT_EQ(counted.changes, 1);

    EXPECT_TRUE(readBytes(counted.map, sound));
    EXPECT_EQ(counted.changes, 2);
    EXPECT_EQ(counted.map.targetOf(1), 0);
    EXPECT_EQ(counted.map.targetOf(2), 30);
    for (const int free : {3, 4, 9}) EXPECT_EQ(counted.map.targetOf(free), kNone);
}

TEST(ControllerMapping, DamagedFilesNeverLeadToATargetThatDoesNotExist) {
    std::vector<int> targets(128, kNone);
    for (int i = 0; i < 31; ++i) targets[static_cast<std::size_t>(3 * i)] = i;
    test::forMutations(mapBytes(1, targets), 500, [](const std::string& damaged) {
        ControllerMapping map(31);
        readBytes(map, damaged);
        for (int i = 0; i < 128; ++i) {
            ASSERT_LT(map.targetOf(i), 31);
            ASSERT_GE(map.targetOf(i), kNone);
        }
    });
}

TEST(ControllerMapping, TheFileIsWrittenOnlyForAChange) {
    const ScratchFolder folder;
    const auto path = folder.file("made/MidiControllerMap.qmm");
    ControllerMapping map(31);
    EXPECT_TRUE(map.save(path));
    EXPECT_FALSE(std::filesystem::exists(path));
    map.assign(7, 0);
    EXPECT_TRUE(map.save(path));
    EXPECT_EQ(test::contentOf(path).size(), 520u);

    ControllerMapping other(31);
    EXPECT_TRUE(other.load(path));
    EXPECT_EQ(other.controllerOf(0), 7);
    std::filesystem::remove(path);
    EXPECT_TRUE(other.save(path));
    EXPECT_FALSE(std::filesystem::exists(path));
    other.clear();
    EXPECT_TRUE(other.save(path));
    EXPECT_TRUE(map.load(path));
    EXPECT_EQ(map.controllerOf(0), -1);
    EXPECT_FALSE(map.load(folder.file("missing")));
}

TEST(ControllerMapping, AProcessThatIsKilledWhileItSavesLeavesTheOldFileOrTheNew) {
    const ScratchFolder folder;
    const auto path = folder.file("MidiControllerMap.qmm");
    const auto save = [&](int controller) {
        ControllerMapping map(31);
        map.assign(controller, 0);
        return map.save(path);
    };
    ASSERT_TRUE(save(1));
    for (int round = 0; round < 15; ++round) {
        const pid_t child = ::fork();
        if (child == 0) {
            for (int i = 0;; ++i) save(i % 2);
        }
        ::usleep(static_cast<useconds_t>(500 + 900 * round));
        ::kill(child, SIGKILL);
        ::waitpid(child, nullptr, 0);
        ControllerMapping map(31);
        ASSERT_TRUE(map.load(path));
        ASSERT_TRUE(map.controllerOf(0) == 0 || map.controllerOf(0) == 1);
    }
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
    EXPECT_EQ(map.targetOf(22), kNone);
}

}  // namespace
}  // namespace vanta
