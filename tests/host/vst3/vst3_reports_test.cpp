#include <atomic>
#include <chrono>
#include <thread>

#include "tests/host/vst3/vst3_fixture.hpp"
#include "tests/plugin/preset_bytes.hpp"

namespace vanta::test {
namespace {

using Kind = Handler::Call::Kind;

/// A map in which controller 20 moves the gain and 21 the attack.
void learn(const UserHome& home) {
    Bytes map;
    map.tag("QMCM").number(1);
    for (int i = 0; i < 128; ++i) map.number(i == 20 ? 0 : i == 21 ? 3 : -1);
    home.write("data/Quillmark/Vanta 2/MidiControllerMap.qmm", map.bytes);
}

TEST_F(Vst3, ALearnedControllerIsAnEditOnTheMainThread) {
    learn(home_);
    Vst3Host host;
    ASSERT_TRUE(host.open(kStereoLayout, kRate, 128, false));
    v3_param_id id = 0;
    auto** const midi = host.plugin().midi;
    const auto assignment = [&](std::int16_t channel, std::int16_t controller) {
        return v3_cpp_obj(midi)->get_midi_controller_assignment(midi, 0, channel, controller, &id);
    };
    ASSERT_EQ(assignment(9, 20), V3_TRUE);
    EXPECT_EQ(id, kFirstController + 20);
    EXPECT_EQ(assignment(0, 128), V3_FALSE);
    EXPECT_EQ(assignment(16, 20), V3_FALSE);

    Audio audio(2, 128);
    std::thread([&] {
        host.changes.add(id, 30, 1.0);
        audio.process(host);
    }).join();
    EXPECT_TRUE(host.handler.calls.empty()) << "never on the audio thread";
    host.idle();
    const std::vector<Handler::Call> expected = {
        {Kind::Begin, kGain}, {Kind::Perform, kGain, 1.0}, {Kind::End, kGain}};
    EXPECT_EQ(host.handler.calls, expected);
    EXPECT_EQ(host.plugin().value(kGain), 1.0);
    EXPECT_EQ(host.answers.count(), 0) << "told already";
}

TEST_F(Vst3, WithoutARunLoopAControllerReachesTheHostWithABlock) {
    learn(home_);
    Vst3Host host(Vst3Host::Loop::None);
    ASSERT_TRUE(host.open(kStereoLayout, kRate, 128, false));
    Audio audio(2, 128);
    host.changes.add(kFirstController + 21, 5, 1.0);
    int answered = 0;
    for (int wait = 0; answered == 0 && wait < 2000; ++wait) {
        audio.process(host);
        answered = host.answers.count();
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
    ASSERT_EQ(answered, 1);
    EXPECT_EQ(host.answers.queues[0].parameterId, kAttack);
    EXPECT_EQ(host.answers.queues[0].points[0].value, 1.0);
    EXPECT_EQ(host.plugin().value(kAttack), 1.0);
    EXPECT_TRUE(host.handler.calls.empty());
}

TEST_F(Vst3, ANewLatencyIsToldOnTheMainThreadAndOnlyWhileActive) {
    Vst3Host host(Vst3Host::Loop::Handler);
    ASSERT_TRUE(host.open(kStereoLayout, kRate, 128, false));
    host.runLoop.run();
    host.handler.takeRestart(~0);
    const int before = host.latency();
    std::thread([&] {
        Audio audio(2, 128);
        host.changes.add(kOversampling, 0, 1.0);
        audio.process(host);
    }).join();
    // A host may do at once what it is asked for.
    int told = 0;
    host.handler.onCall = [&](const Handler::Call& call) {
        if (!(call.flags & V3_RESTART_LATENCY_CHANGED)) return;
        ++told;
        EXPECT_TRUE(host.reactivate(kRate, 128));
    };
    for (int wait = 0; host.plugin().value(kOversampling) < 1.0 && wait < 2000; ++wait) {
        host.runLoop.run();
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
    EXPECT_EQ(told, 1);
    EXPECT_GT(host.latency(), before);

    host.plugin().set(kOversampling, 0.0);
    host.plugin().set(kOversampling, 1.0);
    EXPECT_EQ(told, 1) << "never within a call of the host's, which may hold locks";
    host.runLoop.run();
    EXPECT_EQ(told, 1) << "there and back is no change";

    host.plugin().setActive(false);
    host.plugin().set(kOversampling, 0.4);
    host.runLoop.run();
    EXPECT_EQ(told, 1) << "it is read with the next activation";
    EXPECT_NE(host.plugin().latency(), host.latency());
}

TEST_F(Vst3, WithoutARunLoopAThreadOfOurOwnTellsANewLatency) {
    Vst3Host host(Vst3Host::Loop::None);
    ASSERT_TRUE(host.open(kStereoLayout, kRate, 128, false));
    const int before = host.latency();
    const auto here = std::this_thread::get_id();
    std::atomic<int> told{0};
    std::atomic<bool> within{false};
    host.handler.onCall = [&](const Handler::Call& call) {
        if (std::this_thread::get_id() == here) within.store(true);
        if (call.flags & V3_RESTART_LATENCY_CHANGED) told.fetch_add(1);
    };
    host.plugin().set(kOversampling, 1.0);
    host.plugin().set(kProgram, 0.5);
    for (int wait = 0; told.load() == 0 && wait < 2000; ++wait) {
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
    EXPECT_GT(told.load(), 0);
    EXPECT_FALSE(within.load()) << "a host may hold locks while it calls";
    ASSERT_TRUE(host.reactivate(kRate, 128));
    EXPECT_NE(host.latency(), before);
}

TEST_F(Vst3, PresetsAreProgramsOfTheRootUnit) {
    Vst3Host host;
    ASSERT_TRUE(host.open(kStereoLayout, kRate, 128, false));
    Vst3Instance& plugin = host.plugin();
    auto** const units = plugin.units;
    v3_program_list_info list{};
    ASSERT_EQ(v3_cpp_obj(units)->get_program_list_info(units, 0, &list), V3_OK);
    v3_unit_info root{};
    ASSERT_EQ(v3_cpp_obj(units)->get_unit_info(units, 0, &root), V3_OK);
    EXPECT_EQ(root.program_list_id, list.id);
    const v3_param_info info = infoOf(plugin, 31);
    ASSERT_EQ(info.param_id, kProgram);
    EXPECT_TRUE(info.flags & V3_PARAM_PROGRAM_CHANGE);
    ASSERT_EQ(info.step_count, list.programCount - 1);
    ASSERT_GT(list.programCount, 20);
    v3_str_128 name{};
    EXPECT_NE(v3_cpp_obj(units)->get_program_name(units, list.id, list.programCount, name), V3_OK);
    const auto programOf = [&](const std::string& wanted) {
        for (int i = 0; i < list.programCount; ++i) {
            EXPECT_EQ(v3_cpp_obj(units)->get_program_name(units, list.id, i, name), V3_OK);
            EXPECT_EQ(textOf(plugin, kProgram, static_cast<double>(i) / info.step_count), readText(name));
            if (readText(name) == wanted) return static_cast<double>(i) / info.step_count;
        }
        return -1.0;
    };
    const double standard = programOf("Default Setting");
    const double loud = programOf("Modern Loud");
    ASSERT_GE(loud, 0.0);
    EXPECT_EQ(plugin.value(kProgram), standard);
    const auto values = [&plugin] {
        std::vector<double> all;
        for (v3_param_id id = 0; id < 31; ++id) all.push_back(plugin.value(id));
        return all;
    };
    const std::vector<double> standardValues = values();

    // From the host's browser, on the main thread: at once.
    plugin.set(kProgram, loud);
    const std::vector<double> loudValues = values();
    EXPECT_NE(loudValues, standardValues);
    host.idle();
    EXPECT_GT(host.handler.count(Kind::Perform), 3) << "each value is an edit";
    EXPECT_EQ(host.handler.count(Kind::StartGroup), host.handler.count(Kind::FinishGroup));
    EXPECT_EQ(host.handler.count(Kind::Dirty), 1);
    // A host that restores its list of values chooses the current one again, and loses nothing.
    plugin.set(kAttack, 0.9);
    plugin.set(kProgram, loud);
    host.idle();
    EXPECT_NEAR(plugin.value(kAttack), 0.9, 1e-6);
    // With a block: when the main thread comes by.
    Audio audio(2, 128);
    host.changes.add(kProgram, 64, standard);
    audio.process(host);
    EXPECT_NEAR(plugin.value(kAttack), 0.9, 1e-6);
    host.idle();
    EXPECT_EQ(values(), standardValues);
    EXPECT_EQ(plugin.value(kProgram), standard);
    // A state brings its own.
    plugin.set(kProgram, loud);
    const auto state = host.save(0);
    plugin.set(kProgram, standard);
    ASSERT_TRUE(host.restore(state, 0));
    EXPECT_EQ(plugin.value(kProgram), loud);
    EXPECT_EQ(values(), loudValues);
}

}  // namespace
}  // namespace vanta::test
