#include "tests/host/windows/window_contract.hpp"

// After the server's.
#include <cstdio>
#include <filesystem>
#include <future>

#include "foundation/realtime.hpp"
#include "plugin/settings/product.hpp"
#include "plugin/settings/registry_serializer.hpp"
#include "plugin/settings/shared_settings.hpp"
#include "tests/host/windows/paced_audio.hpp"
#include "tests/support/realtime_trap.hpp"

namespace vanta::test {
namespace {

using Kind = FormatHost::Edit::Kind;

constexpr int kRelease = 4;

int rounds(int usual) {
    const char* const wanted = std::getenv("VANTA_WINDOW_ROUNDS");
    return wanted ? std::max(std::atoi(wanted), 1) : usual;
}

/// Blocks with changes of a value, on a thread of their own.
std::future<Channels> playAside(FormatHost& host) {
    return std::async(std::launch::async, [&host] {
        constexpr int kSamples = 512;
        constexpr int kBlocks = 200;
        BlockCounts counts;
        const RealtimeTrap::ThreadWatch watch;
        const Channels input = programme(2, kBlocks * kSamples);
        Channels output = input;
        startThread(host);
        for (int n = 0; n < kBlocks; ++n) {
            const auto at = static_cast<std::size_t>(n * kSamples);
            const float* const inputs[] = {input[0].data() + at, input[1].data() + at};
            float* const outputs[] = {output[0].data() + at, output[1].data() + at};
            const FormatHost::Change change{100, kRelease, 0.3 + 0.002 * n};
            const bool travels = host.traits().hasValuesInBlocks;
            if (!travels) host.touch(kRelease, change.value);
            processCounted(host, {inputs, {}, outputs, kSamples, {&change, travels ? 1u : 0u}, {}}, counts);
        }
        if (RealtimeTrap::catches(RealtimeTrap::Kind::Lock)) {
            EXPECT_EQ(counts.waits, 0);
        }
        return output;
    });
}

int openDescriptors() {
    const std::filesystem::directory_iterator all("/proc/self/fd");
    return static_cast<int>(std::distance(begin(all), end(all)));
}

class WindowLife : public WindowContract {
protected:
    void comeAndGo(FormatHost& host);
    void freeze(FormatHost& host, FormatHost& withoutWindow);
};

/// The same where a thread of the window's draws it.
class WindowLifeByOpenGl : public WindowLife {
protected:
    WindowLifeByOpenGl() {
        using Mode = GraphicsAccelerationMode;
        const int mode = static_cast<int>(Mode::OpenGl60) | static_cast<int>(Mode::SkipVendorTest);
        RegistryWriter(Product::rootKey()).integer("GraphicsAcceleration", mode, 0);
    }
};

void WindowLife::comeAndGo(FormatHost& host) {
    const Window parent = makeParent();
    openWindow(host, parent);
    host.closeWindow();
    settle();
    const int formerDescriptors = openDescriptors();
    const int formerClients = server.clients();
    const int count = rounds(20);
    const RealtimeTrap trap;
    PacedAudio audio(host, kRate, kLargest);
    // On the same machine, without a window.
    PacedAudio other(open(), kRate, kLargest);
    for (int round = 0; round < count; ++round) {
        ASSERT_TRUE(host.openWindow(parent)) << round;
        // At whatever moment: before anything is shown, within a frame, or long after.
        for (int n = 0; n < round % 7 * 5; ++n) {
            host.idle();
            std::this_thread::sleep_for(1ms);
        }
        host.closeWindow();
        ASSERT_TRUE(server.children(parent).empty());
    }
    const BlockCounts blocks = audio.stop();
    const BlockCounts others = other.stop();
    EXPECT_TRUE(waitFor([&] { return server.clients() == formerClients; }))
        << server.clients() << " clients of the server, after " << formerClients;
    EXPECT_EQ(openDescriptors(), formerDescriptors);
    EXPECT_EQ(trap.total(), 0) << trap.report();
    EXPECT_GT(blocks.rests, 0) << "nobody counts";
    // A sanitizer's own locks count among them.
    if (RealtimeTrap::catches(RealtimeTrap::Kind::Lock)) {
        EXPECT_EQ(blocks.waits, 0);
    }
    std::printf("%d windows; blocks late: %d of %d, without a window %d of %d; waits: %d\n", count,
                blocks.late, blocks.blocks, others.late, others.blocks, blocks.waits);
    std::printf("clients: %d, before %d; descriptors: %d, before %d\n", server.clients(), formerClients,
                openDescriptors(), formerDescriptors);
    openWindow(host, parent);
}

TEST_P(WindowLife, ComesAndGoesWithoutATrace) {
    comeAndGo(open());
}

TEST_P(WindowLifeByOpenGl, ComesAndGoesWithoutATrace) {
    comeAndGo(open());
}

TEST_P(WindowLifeByOpenGl, PaintsItselfInEverySize) {
    const int formerClients = server.clients();
    FormatHost& host = open();
    const Window parent = makeParent();
    openWindow(host, parent);
    EXPECT_EQ(server.clients(), formerClients + 2) << "OpenGL has a connection of its own";
    for (const Size size : {Size{800, 480}, Size{1003, 601}}) {
        EXPECT_TRUE(followsSize(parent, size));
        EXPECT_EQ(host.windowSize(), size);
    }
    drag(kSliderX, kSliderY, kSliderY - 60);
    EXPECT_GT(host.value(kGain), 0.0);
}

void WindowLife::freeze(FormatHost& host, FormatHost& withoutWindow) {
    openWindow(host, makeParent());
    const RealtimeTrap trap;
    // Nobody serves the window. What OpenGL draws goes on.
    EXPECT_EQ(playAside(host).get(), playAside(withoutWindow).get());
    // The window itself stands still, in the midst of a call to the host.
    std::future<Channels> playing;
    host.onWindowCall = [&] {
        if (playing.valid()) return;
        playing = playAside(host);
        EXPECT_EQ(playing.wait_for(60s), std::future_status::ready) << "audio waits for the window";
    };
    const auto compare = [&] {
        ASSERT_TRUE(playing.valid()) << "the host has not been called";
        EXPECT_EQ(playing.get(), playAside(withoutWindow).get());
    };
    drag(kSliderX, kSliderY, kSliderY);
    if (host.traits().callsForGestures) compare();
    chooseSize(host, 2);
    compare();
    EXPECT_EQ(trap.total(), 0) << trap.report();
    host.onWindowCall = [] {};
}

TEST_P(WindowLife, AFrozenWindowDelaysNoAudio) {
    freeze(open(), open());
}

TEST_P(WindowLifeByOpenGl, AFrozenWindowDelaysNoAudio) {
    freeze(open(), open());
}

TEST_P(WindowLife, ItsWindowMayBeKilledWithAMenuOpenOrAControlHeld) {
    FormatHost& host = open();
    for (const bool hasMenu : {true, false}) {
        SCOPED_TRACE(hasMenu);
        Window parent = makeParent();
        openWindow(host, parent);
        host.takeEdits();
        std::thread killer;
        if (hasMenu) {
            killer = std::thread([&] {
                std::this_thread::sleep_for(700ms);
                Display* const other = XOpenDisplay(server.name().c_str());
                XDestroyWindow(other, parent);
                XCloseDisplay(other);
            });
            server.movePointer(kSliderX, kSliderY);
            settle();
            server.click(3);
            settle();
            killer.join();
            std::erase(parents, parent);
        } else {
            drag(kSliderX, kSliderY, kSliderY - 30, false);
            destroy(parent);
            server.release();
        }
        settle();
        host.closeWindow();
        settle();
        int held = 0;
        for (const auto& edit : host.takeEdits())
            held += (edit.kind == Kind::Begin) - (edit.kind == Kind::End);
        EXPECT_EQ(held, 0) << "the host waits for the end";
        play(host, programme(2, 512));
    }
}

TEST_P(WindowLife, ItsPluginMayGoFirst) {
    for (int round = 0; round < 3; ++round) {
        FormatHost& host = open();
        const Window parent = makeParent();
        openWindow(host, parent);
        if (round == 1) drag(kSliderX, kSliderY, kSliderY - 30, false);
        host.dropWithWindow();
        server.release();
        EXPECT_TRUE(server.children(parent).empty());
        hosts.clear();
    }
}

TEST_P(WindowLife, SeveralLiveSideBySide) {
    FormatHost& first = open();
    FormatHost& second = open();
    // One above the other, so that each has its slider in sight.
    const Window below = makeParent(0, 0);
    const Window above = makeParent(100, 0);
    openWindow(first, below);
    openWindow(second, above);
    first.takeEdits();
    second.takeEdits();
    drag(kSliderX, kSliderY, kSliderY - 40);
    EXPECT_FALSE(first.takeEdits().empty());
    EXPECT_TRUE(second.takeEdits().empty());
    first.closeWindow();
    drag(100 + kSliderX, kSliderY, kSliderY - 40);
    EXPECT_FALSE(second.takeEdits().empty());
    EXPECT_GT(first.value(kGain), 0.0);
}

TEST_P(WindowLife, WithoutADisplayThereIsNoWindow) {
    FormatHost& host = open();
    ::setenv("DISPLAY", ":4711", 1);
    EXPECT_FALSE(host.openWindow(1));
    host.closeWindow();
    play(host, programme(2, 512));
}

VANTA_WINDOW_FORMATS(WindowLife);
VANTA_WINDOW_FORMATS(WindowLifeByOpenGl);

}  // namespace
}  // namespace vanta::test
