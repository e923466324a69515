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
constexpr std::uint8_t kController = 20;

/// Several threads at one parameter; when they are done, all who hold its value hold the same.
class Races : public testing::TestWithParam<InProcessHost::Answers> {
protected:
    Races() : session(GetParam()) { session.host.model().statics().controllers.assign(kController, kGain); }

    /// On the audio side. The result is the value that the processor then has.
    float moveController() {
        session.host.sendMidi(0, {0xB0, kController, static_cast<std::uint8_t>(random() % 128)});
        session.process(1);
        return session.audio(kGain).value();
    }
    void settle() {
        for (int i = 0; i < 4; ++i) session.host.idle();
        session.process(1);
    }
    bool allHold(float value) {
        return session.model(kGain).value() == value && session.audio(kGain).value() == value &&
               session.host.position(kGain) == hostPosition(session.model(kGain), value);
    }

    UserHome home;
    Session session;
    std::mt19937 random{1};
};

TEST_P(Races, AControllerThatMovesWhileItIsDeliveredReachesModelAndHost) {
    constexpr int kTrials = 1000;
    std::atomic<int> begun{0};
    std::atomic<int> ended{0};
    std::atomic<float> last{0.0f};
    std::thread audio([&] {
        for (int trial = 1; trial <= kTrials; ++trial) {
            while (begun.load() != trial) std::this_thread::yield();
            for (int i = 0; i < 3; ++i) last = moveController();
            ended = trial;
        }
    });
    int failed = 0;
    for (int trial = 1; trial <= kTrials; ++trial) {
        begun = trial;
        while (ended.load() != trial) session.host.idle();
        settle();
        failed += !allHold(last);
    }
    audio.join();
    EXPECT_EQ(failed, 0) << "of " << kTrials;
}

TEST_P(Races, AHostThatAutomatesMeanwhileEndsInAgreement) {
    constexpr int kTrials = 300;
    int failed = 0;
    for (int trial = 0; trial < kTrials; ++trial) {
        std::atomic<int> playing{2};
        std::thread audio([&] {
            for (int i = 0; i < 10; ++i) moveController();
            --playing;
        });
        std::thread automation([&] {
            for (int i = 0; playing.load() == 2; ++i) session.host.setPosition(kGain, 0.001 * (i % 1000));
            --playing;
        });
        while (playing.load() > 0) session.host.idle();
        audio.join();
        automation.join();
        settle();
        failed += session.model(kGain).value() != session.audio(kGain).value();
    }
    EXPECT_EQ(failed, 0) << "of " << kTrials;
}

TEST_P(Races, AStateThatIsLoadedYieldsToWhatIsNewerAlone) {
    constexpr int kTrials = 300;
    session.model(kGain).setValue(3.0f, 0);
    settle();
    const auto state = session.host.saveState();
    int failed = 0;
    for (int trial = 0; trial < kTrials; ++trial) {
        moveController();
        std::atomic<bool> loaded{false};
        std::thread loader([&] {
            session.host.loadState(state);
            loaded = true;
        });
        while (trial % 2 == 0 && !loaded.load()) session.host.idle();
        loader.join();
        failed += session.audio(kGain).value() != 3.0f;
        const float newest = trial % 3 == 0 ? moveController() : 3.0f;
        settle();
        failed += !allHold(newest);
    }
    EXPECT_EQ(failed, 0) << "of " << kTrials;
}

TEST_P(Races, AStateThatIsSavedHoldsWhatPlays) {
    const float playing = moveController();
    std::vector<std::byte> state;
    std::thread([&] { state = session.host.saveState(); }).join();
    Session other;
    ASSERT_TRUE(other.host.loadState(state));
    EXPECT_EQ(other.model(kGain).value(), playing);
    settle();
    EXPECT_TRUE(allHold(playing)) << "and the host hears of it";
}

TEST_P(Races, ARenderThatDoesNotWaitForTheOwnerThreadHearsWhatIsShown) {
    const float playing = moveController();
    constexpr int kOutputLevel = 18;
    std::thread([&] {
        session.model(kOutputLevel).setValue(-3.0f, 0);
        session.host.adapter().deliverBeforeRender();
    }).join();
    EXPECT_EQ(session.model(kGain).value(), playing);
    EXPECT_EQ(session.audio(kGain).value(), playing);
    EXPECT_EQ(session.audio(kOutputLevel).value(), session.model(kOutputLevel).value());
    settle();
    EXPECT_EQ(session.model(kOutputLevel).value(), session.audio(kOutputLevel).value());
    EXPECT_TRUE(allHold(playing));
}

INSTANTIATE_TEST_SUITE_P(Hosts, Races,
                         testing::Values(InProcessHost::Answers::AtOnce, InProcessHost::Answers::OnIdle),
                         [](const auto& instance) {
                             return instance.param == InProcessHost::Answers::AtOnce ? "AtOnce" : "OnIdle";
                         });

}  // namespace
}  // namespace vanta::test
