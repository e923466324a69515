#include <gtest/gtest.h>

#include <vector>

#include "limiter/modulation/modulation_matrix.hpp"
#include "limiter/modulation/voice_matrix.hpp"
#include "tests/support/element_rig.hpp"
#include "tests/support/signals.hpp"

namespace vanta::test {
namespace {

using Mode = ModulationMatrix::SlotMode;

/// Two elements with an audio input each, targets 0 and 1, behind sources 0 and 1; four slots, and source 2
/// that all voices share.
ModulationLayout twoElements() {
    ModulationLayout layout;
    layout.elementTargetCount = 2;
    layout.slotCount = 4;
    layout.sources = {{0, {0}}, {0, {1}}, {0, {}}};
    layout.ranges = {{1.0f, true, 0.0f, 0.0f, {}}, {1.0f, false, 0.0f, 100.0f, {}}};
    layout.rangeOf = {0, 0, 1, 1, 1, 1};
    return layout;
}

struct Rig {
    Rig() { matrix.setGlobalSource(2, shared); }
    void connect(int slot, int source, int target, float level = 1.0f) {
        matrix.controller().setLevel(slot, level);
        matrix.controller().setSource(slot, source);
        matrix.controller().setTarget(slot, target);
    }

    wave::Environment environment{64};
    ModulationMatrix matrix{environment, twoElements()};
    VectorSource shared{environment, Signal(64, 0.5f)};
    ModulationMatrix::VoiceMatrix& voice = matrix.createVoice();
};

TEST(ModulationMatrix, LeavesTheSlotOffThatClosesALoopUntilTheOtherGoes) {
    Rig rig;
    rig.connect(0, 0, 1);
    rig.connect(1, 1, 0);
    EXPECT_EQ(rig.matrix.slotMode(0), Mode::PerVoice);
    EXPECT_EQ(rig.matrix.slotMode(1), Mode::Off);
    rig.matrix.controller().setBypassed(0, true);
    EXPECT_EQ(rig.matrix.slotMode(0), Mode::Off);
    EXPECT_EQ(rig.matrix.slotMode(1), Mode::PerVoice);
}

TEST(ModulationMatrix, SeesALoopThroughAControl) {
    ModulationLayout layout = twoElements();
    layout.sources.push_back({0, {}, 1});  // a main control, which hands out the value of target 1
    wave::Environment environment(64);
    ModulationMatrix matrix(environment, layout);
    matrix.setGlobalSource(3, matrix.globalTarget(1));
    auto& controller = matrix.controller();
    controller.setSource(0, 3);
    controller.setTarget(0, 1);
    EXPECT_EQ(matrix.slotMode(0), Mode::Off) << "a control would feed itself";
    controller.setTarget(0, 0);
    EXPECT_NE(matrix.slotMode(0), Mode::Off);
    controller.setSource(1, 0);
    controller.setTarget(1, 1);
    EXPECT_EQ(matrix.slotMode(1), Mode::Off) << "element 0 follows the control that it would feed";
}

TEST(ModulationMatrix, AddsUpWhatItsSlotsSendToATarget) {
    Rig rig;
    rig.connect(0, 2, 1, 3.0f);
    rig.connect(1, 2, 1, 1.0f);
    rig.matrix.controller().setInverted(1, true);
    rig.connect(3, 2, 3, 2.0f);  // on top of the level of slot 1, and inverted with it
    EXPECT_EQ(rig.matrix.slotMode(0), Mode::Global);
    EXPECT_EQ(rig.matrix.controller().slotsInto(1), (std::vector<int>{0, 1}));
    EXPECT_EQ(rig.matrix.controller().slotsFrom(2), (std::vector<int>{0, 1, 3}));
    rig.environment.advanceTick();
    EXPECT_FLOAT_EQ(rig.voice.controller(1).pullData(16)[15], 0.5f * 3 - 0.5f * (1 + 0.5f * 2));
}

TEST(ModulationMatrix, KnowsWhichSourcesHaveAnInfluenceOnATarget) {
    // Sources 2 to 4 are a signal and two controls, of which 4 hands out what target 0 holds.
    ModulationLayout layout = twoElements();
    layout.sources = {{0, {0}}, {0, {1}}, {0, {}}, {0, {}}, {0, {}, 0}};
    wave::Environment environment(64);
    ModulationMatrix matrix(environment, layout);
    const auto connect = [&](int slot, int source, int target) {
        matrix.controller().setSource(slot, source);
        matrix.controller().setTarget(slot, target);
    };
    connect(0, 4, 1);
    EXPECT_EQ(matrix.originsOf(1), 1u << 4);
    connect(1, 3, 0);
    EXPECT_EQ(matrix.originsOf(1), 1u << 4 | 1u << 3);
    const auto wiring = matrix.wiringChanges();
    connect(2, 2, 3);  // onto the level of slot 1
    EXPECT_EQ(matrix.originsOf(1), 1u << 4 | 1u << 3 | 1u << 2);
    EXPECT_NE(matrix.wiringChanges(), wiring);
    matrix.controller().setBypassed(1, true);
    EXPECT_EQ(matrix.originsOf(1), 1u << 4);
}

}  // namespace
}  // namespace vanta::test
