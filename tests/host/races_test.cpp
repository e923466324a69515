#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <cmath>
#include <future>
#include <random>
#include <thread>

#include "host/unified/host_position.hpp"
#include "tests/host/session.hpp"
#include "tests/plugin/user_home.hpp"

namespace vanta::test {
namespace {

constexpr int kGain = 0;
constexpr int kStyle = 1;
constexpr int kOversampling = 9;
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
        const auto done = std::async(std::launch::async, work);
        while (done.wait_for(std::chrono::seconds(0)) != std::future_status::ready) session.host.idle();
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

TEST_P(Races, AHostAnInterfaceAndAControllerAtOnceEndInAgreement) {
    int failed = 0;
    for (int trial = 0; trial < 300; ++trial) {
        std::atomic<bool> playing{true};
        const auto moveAll = [&](const auto& move) {
            for (int i = 0; playing.load(); ++i) {
                const int index = i % 2 ? kGain : i / 2 % session.count();
                // These rebuild the signal path; the values are what is looked at here.
                if (index == kStyle || index == kOversampling) continue;
                move(index, static_cast<float>(i % 1000) * 0.001f);
            }
        };
        std::thread host(
            [&] { moveAll([&](int index, float place) { session.host.setPosition(index, place); }); });
        std::thread audio([&] {
            for (int i = 0; i < 10; ++i) {
                session.host.automate(kOutputLevel, -0.1 * i);
                moveController();
            }
            playing = false;
        });
        moveAll([&](int index, float place) {
            session.model(index).setValue(session.model(index).denormalize(place), 0);
            session.host.idle();
            session.host.adapter().syncLevels();
        });
        host.join();
        audio.join();
        allHoldInTheEnd(0.0f);
        for (int i = 0; i < session.count(); ++i) {
            // What a host rounds may stay apart by as much.
            const double apart = hostPosition(session.model(i), session.model(i).value()) -
                                 hostPosition(session.audio(i), session.audio(i).value());
            failed += std::abs(apart) > 2.8e-5;
        }
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
                         testing::Values(InProcessHost::Answers::AtOnce, InProcessHost::Answers::OnIdle));

}  // namespace
}  // namespace vanta::test
