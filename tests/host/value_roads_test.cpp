#include <gtest/gtest.h>

#include <atomic>
#include <bit>
#include <cmath>
#include <thread>

#include "host/unified/host_position.hpp"
#include "limiter/model/vanta_plugin.hpp"
#include "limiter/processor/vanta_processor.hpp"
#include "tests/host/session.hpp"
#include "tests/plugin/user_home.hpp"

namespace vanta::test {
namespace {

/// Ends, default and odd places between; stepped parameters have all their indexes.
std::vector<float> placesOf(const AbstractPluginParameter& parameter) {
    std::vector<float> places{parameter.minimum(), parameter.maximum(), parameter.defaultValue()};
    const float range = parameter.maximum() - parameter.minimum();
    if (parameter.kind() == AbstractPluginParameter::Kind::Indexed) {
        for (float i = 0.0f; i <= range; ++i) places.push_back(parameter.minimum() + i);
        return places;
    }
    for (const float share : {1.0f / 3.0f, 0.1f, 0.70710678f, 0.999999f, 1e-4f}) {
        const float value = parameter.minimum() + share * range;
        places.push_back(value);
        places.push_back(std::nextafter(value, parameter.maximum()));
    }
    return places;
}

std::uint32_t bits(float value) {
    return std::bit_cast<std::uint32_t>(value);
}

void setOddValues(Session& session) {
    for (int i = 0; i < session.count(); ++i) session.model(i).setValue(placesOf(session.model(i)).back(), 0);
}

class ValueRoads : public testing::TestWithParam<InProcessHost::Answers> {
protected:
    /// Model, processor and host agree to the last bit.
    static void expectAgreement(Session& session, int index, float expected) {
        SCOPED_TRACE(session.model(index).name());
        EXPECT_EQ(bits(session.model(index).value()), bits(expected));
        EXPECT_EQ(bits(session.audio(index).value()), bits(expected));
        EXPECT_EQ(session.host.position(index), hostPosition(session.model(index), expected));
    }

    UserHome home;
};

TEST_P(ValueRoads, FromTheInterfaceWhileAudioRunsInTwoInstances) {
    constexpr int kAutomated = 5;
    Session session(GetParam());
    Session other(GetParam());
    auto untouched = other.host.model().parameterValues();
    std::atomic<bool> stop{false};
    std::thread audio([&] {
        for (int block = 0; !stop.load(); ++block) {
            other.host.automate(kAutomated, static_cast<double>(block % 1000) * 0.001);
            session.process();
            other.process();
        }
    });
    for (int i = 0; i < session.count(); ++i) {
        for (const float value : placesOf(session.model(i))) {
            session.model(i).setValue(value, 0);
            const float stored = session.model(i).value();
            EXPECT_NEAR(stored, value, 1.2e-7f);
            session.host.idle();
            other.host.idle();
            expectAgreement(session, i, stored);
        }
    }
    stop = true;
    audio.join();
    other.host.idle();
    other.host.idle();
    untouched[kAutomated] = other.audio(kAutomated).value();
    for (int i = 0; i < other.count(); ++i) {
        EXPECT_EQ(bits(other.model(i).value()), bits(untouched[static_cast<std::size_t>(i)])) << i;
        EXPECT_EQ(bits(other.audio(i).value()), bits(untouched[static_cast<std::size_t>(i)])) << i;
    }
}

TEST_P(ValueRoads, FromAHostsAutomation) {
    Session session(GetParam());
    const int steps = session.host.model().undoHistory().undoCount();
    for (int i = 0; i < session.count(); ++i) {
        for (const double position : {0.0, 1.0, 0.5, 1.0 / 3.0, 0.123456789012345}) {
            session.host.setPosition(i, position);
            session.host.idle();
            SCOPED_TRACE(session.model(i).name());
            EXPECT_EQ(bits(session.model(i).value()), bits(session.audio(i).value()));
            EXPECT_EQ(session.host.position(i), position) << "a host's own value is not corrected";
            EXPECT_EQ(bits(session.model(i).value()), bits(valueAt(session.model(i), position)));
        }
    }
    EXPECT_EQ(session.host.model().undoHistory().undoCount(), steps);
}

TEST_P(ValueRoads, FromAutomationThatComesWithABlock) {
    Session session(GetParam());
    for (int i = 0; i < session.count(); ++i) {
        for (const float value : placesOf(session.model(i))) {
            session.host.automate(i,
                                  static_cast<double>(value) + (session.model(i).isContinuous() ? 0.0 : 0.3));
            const float stored = session.audio(i).value();
            session.host.idle();
            // What a host's rounding makes of the model's own value is that value.
            const AbstractPluginParameter& model = session.model(i);
            EXPECT_NEAR(hostPosition(model, model.value()), hostPosition(model, stored),
                        model.isContinuous() ? 2.77e-5 : 0.0)
                << model.name();
        }
    }
}

TEST_P(ValueRoads, FromMidiByTheHostToTheModel) {
    Session session(GetParam());
    auto& controllers = session.host.model().statics().controllers;
    for (int i = 0; i < session.count(); ++i) {
        if (&session.audio(i) == session.host.processor().receiveMidiParameter) continue;
        controllers.assign(20, i);
        for (const int data : {0, 127, 64, 1, 99}) {
            EXPECT_TRUE(session.host.sendMidi(0, {0xB0, 20, static_cast<std::uint8_t>(data)}));
            session.process();
            const float expected = session.audio(i).value();
            EXPECT_EQ(bits(expected),
                      bits(session.audio(i).denormalize(static_cast<float>(data) * (1.0f / 127.0f))));
            session.host.idle();
            session.host.idle();
            expectAgreement(session, i, expected);
        }
        session.model(i).setValue(session.model(i).defaultValue(), 0);
        session.host.idle();
    }
}

TEST_P(ValueRoads, FromAPresetToAll) {
    Session source;
    setOddValues(source);
    const std::string file = (home / "odd.qmp").string();
    ASSERT_TRUE(source.host.model().savePreset({file, "odd", {}, -1, -1}));

    Session session(GetParam());
    auto& table = dynamic_cast<VantaPlugin&>(session.host.model());
    table.lockOutput.setMapped(false);
    const float displayMode = table.displayMode.value();
    const float target = table.loudnessMeterTarget.value();
    ASSERT_TRUE(session.host.model().loadPreset({file, "odd", {}, -1, -1}));
    session.host.idle();
    EXPECT_EQ(bits(table.gain.value()), bits(source.model(0).value()));
    EXPECT_EQ(table.displayMode.value(), displayMode) << "the interface is the user's";
    EXPECT_EQ(table.loudnessMeterTarget.value(), target);
    for (int i = 0; i < session.count(); ++i) expectAgreement(session, i, session.model(i).value());
    EXPECT_GE(session.host.nameReports(), 1);
}

TEST_P(ValueRoads, FromASessionsStateToAll) {
    Session source;
    setOddValues(source);
    const auto saved = source.host.saveState();
    Session session(GetParam());
    ASSERT_TRUE(session.host.loadState(saved));
    session.host.idle();
    for (int i = 0; i < session.count(); ++i) expectAgreement(session, i, source.model(i).value());
    EXPECT_EQ(session.host.saveState(), saved);
    EXPECT_FALSE(session.host.loadState(std::span(saved).first(100)));
}

TEST_P(ValueRoads, TheModelAndTheAudioSideAgreeOnTheLatency) {
    Session session(GetParam());
    auto& table = dynamic_cast<VantaPlugin&>(session.host.model());
    for (int setup = 0; setup < kStyleCount * 6 * 2; ++setup) {
        const int style = setup / 12;
        table.style.setValue(static_cast<float>(style), 0);
        table.oversampling.setValue(static_cast<float>(setup / 2 % 6), 0);
        table.truePeakLimiting.setMapped(setup % 2 == 1);
        session.host.idle();
        EXPECT_EQ(session.host.latency(), session.host.processor().latency()) << setup;
        EXPECT_EQ(session.host.latency(), session.host.model().latency()) << setup;
    }
    EXPECT_GT(session.host.latencyReports(), 20);
    EXPECT_EQ(table.outputLevel.text(-1.0f), "-1.00 dBTP");
}

INSTANTIATE_TEST_SUITE_P(Hosts, ValueRoads,
                         testing::Values(InProcessHost::Answers::AtOnce, InProcessHost::Answers::OnIdle),
                         [](const auto& instance) {
                             return instance.param == InProcessHost::Answers::AtOnce ? "AtOnce" : "OnIdle";
                         });

class Host : public testing::Test {
protected:
    UserHome home;
};

TEST_F(Host, MidiIsDroppedWhileItIsNotToBeReceived) {
    Session session;
    auto& table = dynamic_cast<VantaPlugin&>(session.host.model());
    session.host.model().statics().controllers.assign(20, table.gain.index());
    table.receiveMidi.setValue(1.0f, 0);
    session.host.sendMidi(0, {0xB0, 20, 127});
    session.process();
    session.host.idle();
    EXPECT_EQ(table.gain.value(), 0.0f);
    const std::uint8_t message[] = {0xB0, 20, 127};
    session.host.model().receive(message);
    session.process();
    EXPECT_EQ(session.audio(0).value(), 0.0f);
}

TEST_F(Host, AMovedControllerReachesWhoeverLearns) {
    struct Learning final : GenericPlugin::Listener {
        void onEvent(const PluginEvent& event) override {
            if (const auto* each = std::get_if<ControllerMoved>(&event)) moved.push_back(each->number);
        }
        std::vector<int> moved;
    } listener;
    Session session;
    session.host.model().setListener(&listener);
    session.host.sendMidi(3, {0xB2, 74, 11});
    session.process();
    EXPECT_TRUE(listener.moved.empty()) << "not on the audio thread";
    session.host.idle();
    EXPECT_EQ(listener.moved, std::vector<int>{74});
    session.host.sendMidi(0, {0x90, 60, 100});
    session.process();
    session.host.idle();
    EXPECT_EQ(listener.moved.size(), 1u) << "a note is no controller";
    session.host.model().setListener(nullptr);
}

TEST_F(Host, AnAnswerThatComesLateDoesNotMoveAControllerBack) {
    Session session(InProcessHost::Answers::OnIdle);
    session.host.model().statics().controllers.assign(20, 0);
    session.host.sendMidi(0, {0xB0, 20, 30});
    session.process();
    session.host.idle();  // reports the first place; its answer waits
    session.host.sendMidi(0, {0xB0, 20, 90});
    session.process();
    session.host.idle();  // the answer to the first place arrives
    const float second = session.audio(0).denormalize(90.0f * (1.0f / 127.0f));
    EXPECT_EQ(session.audio(0).value(), second);
    session.host.idle();
    EXPECT_EQ(session.model(0).value(), second);
    EXPECT_EQ(session.host.position(0), hostPosition(session.model(0), second));
}

TEST_F(Host, ARoundedAnswerLeavesTheModelAlone) {
    Session session;
    session.model(0).setValue(10.0f, 0);
    session.host.setPosition(0, 10.0 / 30.0 + 2.0e-5);
    EXPECT_EQ(session.model(0).value(), 10.0f);
    EXPECT_NEAR(session.audio(0).value(), 10.0006f, 1e-5f) << "the audio side follows the host";
    session.host.setPosition(0, 10.0 / 30.0 + 3.0e-5);
    EXPECT_NEAR(session.model(0).value(), 10.0009f, 1e-5f);
    session.host.adapter().hostPositionChanged(-1, 0.5);
    session.host.adapter().hostPositionChanged(1000, 0.5);
    session.host.adapter().hostPositionChanged(0, std::nan(""));
    EXPECT_NEAR(session.model(0).value(), 10.0009f, 1e-5f);
}

TEST_F(Host, LevelsTravelToTheInterfaceAndCommandsBack) {
    struct Screen final : GenericPlugin::Listener {
        void onEvent(const PluginEvent&) override {}
        void lockInterface() override { ++locks; }
        void unlockInterface() override { --locks; }
        int locks = 0;
    } screen;
    Session session;
    auto& model = session.host.model();
    ASSERT_EQ(static_cast<std::size_t>(model.levels().levelCount()),
              session.host.processor().levels().size());
    session.host.adapter().syncLevels();
    model.setListener(&screen);
    const auto play = [&] {
        for (int block = 0; block < 100; ++block) {
            std::fill(session.samples.begin(), session.samples.end(), 0.5f);
            session.process();
        }
        session.host.adapter().syncLevels();
    };
    play();
    model.levels().level(3).resetPeak();  // of the step at the start
    session.host.adapter().syncLevels();
    play();
    EXPECT_NEAR(model.levels().level(3).value(wave::LevelSource::Extreme), -6.02f, 0.1f);
    for (int i = 0; i < model.levels().levelCount(); ++i) {
        for (int info = 0; info < wave::LevelSource::InfoCount; ++info) {
            const auto reading = static_cast<wave::LevelSource::Info>(info);
            EXPECT_EQ(model.levels().level(i).value(reading),
                      session.host.processor().levels()[static_cast<std::size_t>(i)]->value(reading));
        }
    }
    model.levels().level(3).resetPeak();
    session.host.adapter().syncLevels();
    EXPECT_LT(model.levels().level(3).value(wave::LevelSource::Extreme), -20.0f);
    EXPECT_EQ(screen.locks, 0);
    model.setListener(nullptr);
}

}  // namespace
}  // namespace vanta::test
