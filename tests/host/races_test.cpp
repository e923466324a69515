#include <gtest/gtest.h>

#include <atomic>
#include <random>
#include <thread>

#include "host/unified/host_position.hpp"
#include "tests/host/session.hpp"
#include "tests/plugin/user_home.hpp"

namespace vanta::test {
namespace {

constexpr int kGain = 0;
constexpr int kOutputLevel = 18;

/// Several threads at one parameter; when they are done, all who hold its value hold the same.
class Races : public testing::TestWithParam<InProcessHost::Answers> {
protected:
    Races() : session(GetParam()) { session.host.model().statics().controllers.assign(20, kGain); }

    /// On the audio side. The result is the value that the processor then has.
    float moveController() {
        session.host.sendMidi(0, {0xB0, 20, static_cast<std::uint8_t>(random() % 128)});
        session.process(1);
        return session.audio(kGain).value();
    }
    template <typename Work>
    void whileTheOwnerPumps(Work work) {
        std::atomic<bool> done{false};
        std::thread thread([&] {
            work();
            done = true;
        });
        while (!done.load()) session.host.idle();
        thread.join();
    }
    bool allHoldInTheEnd(float value) {
        for (int i = 0; i < 4; ++i) session.host.idle();
        return session.model(kGain).value() == value && session.audio(kGain).value() == value &&
               session.host.position(kGain) == hostPosition(session.model(kGain), value);
    }

    UserHome home;
    Session session;
    std::mt19937 random{1};
};

TEST_P(Races, AControllerThatMovesWhileItIsDeliveredReachesModelAndHost) {
    int failed = 0;
    for (int trial = 0; trial < 1000; ++trial) {
        float last = 0.0f;
        whileTheOwnerPumps([&] {
            for (int i = 0; i < 3; ++i) last = moveController();
        });
        failed += !allHoldInTheEnd(last);
    }
    EXPECT_EQ(failed, 0);
}

TEST_P(Races, AHostThatAutomatesMeanwhileEndsInAgreement) {
    int failed = 0;
    for (int trial = 0; trial < 300; ++trial) {
        whileTheOwnerPumps([&] {
            std::atomic<bool> playing{true};
            std::thread automation([&] {
                for (int i = 0; playing.load(); ++i) session.host.setPosition(kGain, 0.001 * (i % 1000));
            });
            for (int i = 0; i < 10; ++i) moveController();
            playing = false;
            automation.join();
        });
        allHoldInTheEnd(0.0f);
        failed += session.model(kGain).value() != session.audio(kGain).value();
    }
    EXPECT_EQ(failed, 0);
}

TEST_P(Races, AStateThatIsLoadedYieldsToWhatIsNewerAlone) {
    const auto state = session.host.saveState();
    int failed = 0;
    for (int trial = 0; trial < 300; ++trial) {
        moveController();
        whileTheOwnerPumps([&] { session.host.loadState(state); });
        failed += !allHoldInTheEnd(0.0f);
        moveController();
        std::thread([&] { session.host.loadState(state); }).join();
        failed += !allHoldInTheEnd(trial % 2 ? moveController() : 0.0f);
    }
    EXPECT_EQ(failed, 0);
}

TEST_P(Races, ASessionAndAnOfflineRenderHaveWhatWaitsForTheOwnerThread) {
    const float playing = moveController();
    Session other;
    std::thread([&] {
        EXPECT_TRUE(other.host.loadState(session.host.saveState()));
        session.model(kOutputLevel).setValue(-3.0f, 0);
        session.host.adapter().deliverBeforeRender();
    }).join();
    EXPECT_EQ(other.model(kGain).value(), playing);
    EXPECT_EQ(session.audio(kGain).value(), playing);
    EXPECT_EQ(session.audio(kOutputLevel).value(), -3.0f);
    EXPECT_TRUE(allHoldInTheEnd(playing)) << "and the host hears of it";
}

INSTANTIATE_TEST_SUITE_P(Hosts, Races,
                         testing::Values(InProcessHost::Answers::AtOnce, InProcessHost::Answers::OnIdle),
                         [](const auto& instance) {
                             return instance.param == InProcessHost::Answers::AtOnce ? "AtOnce" : "OnIdle";
                         });

}  // namespace
}  // namespace vanta::test
