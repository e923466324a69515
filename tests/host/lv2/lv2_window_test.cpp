#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <cstring>
#include <memory>
#include <thread>

#include "host/common/hosted_plugin.hpp"
#include "host/lv2/lv2_descriptors.hpp"
#include "host/lv2/lv2_interface_descriptors.hpp"
#include "host/lv2/thinned_levels.hpp"
#include "plugin/model/generic_plugin.hpp"
#include "tests/host/formats/fake_view.hpp"
#include "tests/host/formats/performance.hpp"
#include "tests/host/lv2/lv2_window.hpp"
#include "tests/plugin/user_home.hpp"
#include "tests/support/realtime_trap.hpp"
#include "tests/support/signals.hpp"

namespace vanta::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;
using namespace std::chrono_literals;

constexpr double kRate = 48000.0;
constexpr int kBlock = 256;
/// The style of "Club and Dance".
constexpr float kPunchy = 1.0f;

/// A view that takes the model for its own, as an interface does.
class Viewer final : public EmbeddedView, private PluginListener {
public:
    Viewer(HostedPlugin& shown, FakeView::Log& log) : plugin_(shown), view_(log) {
        plugin_.model().setListener(this);
        plugin_.model().interfaceOpened();
    }
    ~Viewer() override { plugin_.model().setListener(nullptr); }
    NativeWindow window() const override { return view_.window(); }
    void setVisible(bool visible) override { view_.setVisible(visible); }
    ViewSize size() const override { return view_.size(); }
    bool isResizable() const override { return true; }
    ViewSize nearestSize(ViewSize wanted) const override { return view_.nearestSize(wanted); }
    void resize(ViewSize size) override { view_.resize(size); }
    void setScale(double scale) override { view_.setScale(scale); }
    void idle() override { plugin_.pump(); }

private:
    void onEvent(const PluginEvent&) override {}

    HostedPlugin& plugin_;
    FakeView view_;
};

/// A plug-in with a window whose view is told of what it shows, and blocks that run on.
class Lv2WindowTest : public testing::Test {
protected:
    explicit Lv2WindowTest(Lv2Offers offers = {.options = true, .portRequests = false}) : host(offers) {}
    void SetUp() override { ASSERT_TRUE(host.open(kStereoLayout, kRate, kBlock, false)); }

    void openWindow(Lv2WindowOffers offers = {}) {
        window = std::make_unique<Lv2Window>(host, *module.descriptor(0), offers);
        ASSERT_TRUE(window->isOpen());
    }
    /// Until both ends know of each other.
    void openConnected(Lv2WindowOffers offers = {}) {
        openWindow(offers);
        ASSERT_TRUE(eventually([&] { return !window->heard.empty(); }));
        meanwhile(50ms);
        ASSERT_TRUE(eventually([&] { return isInStep(); }));
    }
    EmbeddedViewFactory views() {
        return [this](HostedPlugin& plugin, NativeWindow parent, EmbeddedViewHost& viewHost) {
            shown = &plugin;
            view.parent = parent;
            view.host = &viewHost;
            return std::make_unique<Viewer>(plugin, view);
        };
    }
    void block(float level = 0.0f) {
        std::ranges::fill(input, level);
        const float* inputs[] = {input.data(), input.data()};
        float* outputs[] = {output.data(), output.data()};
        if (window) window->deliver();
        host.process({inputs, {}, outputs, kBlock, {}, {}});
        if (window) window->collect();
        if (window) window->follow();
    }
    template <typename Condition>
    bool eventually(Condition condition) {
        for (int round = 0; round < 400; ++round) {
            if (condition()) return true;
            std::this_thread::sleep_for(5ms);
            block();
        }
        return false;
    }
    void meanwhile(std::chrono::milliseconds time) {
        const auto until = std::chrono::steady_clock::now() + time;
        eventually([&] { return std::chrono::steady_clock::now() >= until; });
    }
    bool isInStep() { return shown->saveState() == host.state(); }
    GenericPlugin& model() { return shown->model(); }
    float valueAt(int index) { return model().parameterAt(index)->value(); }
    /// As a user does.
    void drag(int index, float value) {
        shown->beginGesture(index);
        model().gesture(index, GenericPlugin::Gesture::Begin);
        model().parameterAt(index)->setValue(value, 0);
        model().gesture(index, GenericPlugin::Gesture::Change);
        model().gesture(index, GenericPlugin::Gesture::End);
        shown->endGesture(index);
    }
    void load(const std::string& preset) {
        const auto entry = model().statics().findPreset(preset, false);
        ASSERT_TRUE(entry) << preset;
        ASSERT_TRUE(model().loadPreset(*entry));
        model().takeSnapshot();
    }

    UserHome home;
    FakeView::Log view;
    HostedPlugin* shown = nullptr;
    Lv2InterfaceModule module{views()};
    Lv2Host host;
    std::unique_ptr<Lv2Window> window;
    std::array<float, kBlock> input{};
    std::array<float, kBlock> output{};
    const int gain = host.table().gain.index();
    const int style = host.table().style.index();
    const int attack = host.table().attack.index();
};

/// The plug-in lies in the built module, which has nothing in common with the window of this program.
class Lv2Bridge : public Lv2WindowTest {};

TEST_F(Lv2Bridge, TheWindowBeginsAsThePluginIs) {
    host.setValue(gain, 7.25);
    block();
    openWindow({.instance = true, .parent = reinterpret_cast<void*>(77), .scale = 2.0f});
    EXPECT_EQ(view.parent, 77u);
    EXPECT_EQ(view.scale, 2.0);
    EXPECT_TRUE(view.isVisible);
    EXPECT_EQ(window->widget(), reinterpret_cast<void*>(5)) << "there from the start";
    EXPECT_THAT(host.wantedSizes, ElementsAre(FormatHost::Size{view.size.width, view.size.height}));
    EXPECT_TRUE(eventually([&] { return valueAt(gain) == 7.25f && isInStep(); }));
    model().undoHistory().undo();
    EXPECT_EQ(valueAt(gain), 7.25f) << "nothing leads to where the window's own instance began";
    EXPECT_EQ(window->extension<LV2UI_Resize>(LV2_UI__resize)->ui_resize(window->handle(), 350, 10), 0);
    EXPECT_EQ(view.size, (ViewSize{350, 200}));
}

TEST_F(Lv2Bridge, ValuesAndGesturesReachTheHostAndItsValuesTheWindow) {
    openConnected();
    drag(gain, 4.5f);
    EXPECT_TRUE(eventually([&] { return host.value(gain) == 4.5 && isInStep(); }));
    EXPECT_THAT(window->touches, ElementsAre(Pair(gain, true), Pair(gain, false)));

    host.setValue(gain, 9.0);
    EXPECT_TRUE(eventually([&] { return valueAt(gain) == 9.0f && isInStep(); }));
    EXPECT_EQ(window->touches.size(), 2u) << "the host's own values are not told to it";

    drag(gain, 2.0f);
    ASSERT_TRUE(eventually([&] { return host.value(gain) == 2.0 && isInStep(); }));
    model().undoHistory().undo();
    EXPECT_TRUE(eventually([&] { return host.value(gain) == 4.5 && isInStep(); }));
}

TEST_F(Lv2Bridge, PresetsSlotsAndTheMidiMapTravelBothWays) {
    openConnected();
    const std::vector<std::byte> before = host.save(0);
    const auto fresh = valueAt(style);
    load("Club and Dance");
    EXPECT_TRUE(eventually([&] { return isInStep() && host.value(style) == kPunchy; }));
    EXPECT_FALSE(model().presetState().modified());
    model().toggleCompare();
    drag(attack, 0.75f);
    EXPECT_TRUE(eventually([&] { return isInStep() && host.value(style) == fresh; }));
    model().toggleCompare();
    EXPECT_TRUE(eventually([&] { return isInStep() && host.value(style) == kPunchy; }));
    EXPECT_EQ(model().compareStates().current(), 0);
    const std::vector<std::byte> session = host.save(0);

    constexpr int kController = 20;
    {
        const auto held = model().statics().lock();
        model().statics().controllers.assign(kController, gain);
    }
    meanwhile(200ms);
    const FormatHost::Midi midi[] = {{5, {0xB0, kController, 127}}};
    const float* inputs[] = {input.data(), input.data()};
    float* outputs[] = {output.data(), output.data()};
    host.process({inputs, {}, outputs, kBlock, {}, midi});
    EXPECT_TRUE(eventually([&] { return valueAt(gain) == 30.0f; })) << "its port stays, the window follows";
    EXPECT_EQ(host.value(gain), 0.0);

    ASSERT_TRUE(host.restore(before, 0));
    EXPECT_TRUE(eventually([&] { return isInStep() && valueAt(gain) == 0.0f && valueAt(style) == fresh; }));
    ASSERT_TRUE(host.restore(session, 0));
    EXPECT_TRUE(eventually([&] { return isInStep() && valueAt(style) == kPunchy; }));
    EXPECT_EQ(model().presetState().name(), "Club and Dance");
    model().toggleCompare();
    EXPECT_EQ(valueAt(attack), 0.75f) << "the other slot came along";
}

TEST_F(Lv2Bridge, ASlowHostDoesNotPullAControlBack) {
    openConnected({.lag = 6});
    for (int i = 1; i <= 20; ++i) {
        drag(gain, static_cast<float>(i));
        block();
        std::this_thread::sleep_for(5ms);
        ASSERT_EQ(valueAt(gain), static_cast<float>(i));
    }
    EXPECT_TRUE(eventually([&] { return isInStep() && host.value(gain) == 20.0; }));
    EXPECT_EQ(valueAt(gain), 20.0f);
}

TEST_F(Lv2Bridge, ShowsLevelsAndPictureAndResetsPeaks) {
    openConnected();
    LevelExchange& levels = model().levels();
    const auto highest = [&](float level, int blocks) {
        float found = 0.0f;
        for (int i = 0; i < blocks; ++i) {
            block(level);
            std::this_thread::sleep_for(5ms);
            model().adapter()->syncLevels();
            AudioSourceProxy& audio = levels.audio(0);
            for (int frame = 0; frame < audio.frameCount(); ++frame) {
                for (int k = 0; k < audio.blockLength(); ++k)
                    found = std::max(found, audio.block(frame, 0)[k]);
            }
            audio.unlock();
        }
        return found;
    };
    EXPECT_EQ(highest(0.25f, 40), 0.25f) << "to the last bit";
    const auto peak = [&] { return levels.combinedLevel(0).value(wave::LevelSource::Extreme); };
    EXPECT_GT(peak(), -13.0f);
    highest(0.0f, 100);
    EXPECT_GT(peak(), -13.0f) << "held";
    levels.combinedLevel(0).resetPeak();
    highest(0.0f, 40);
    EXPECT_LT(peak(), -40.0f);
}

TEST_F(Lv2Bridge, NothingIsSentWhereNobodyListens) {
    const auto sentMeanwhile = [&](std::chrono::milliseconds time) {
        const auto until = std::chrono::steady_clock::now() + time;
        int sent = 0;
        while (std::chrono::steady_clock::now() < until) {
            std::this_thread::sleep_for(5ms);
            window ? block() : host.run(kBlock);
            if (host.notified().atom.size > sizeof(LV2_Atom_Sequence_Body)) ++sent;
        }
        return sent;
    };
    EXPECT_EQ(sentMeanwhile(100ms), 0);
    openWindow();
    EXPECT_GT(sentMeanwhile(300ms), 3);
    window.reset();
    host.run(kBlock);
    std::this_thread::sleep_for(30ms);
    host.run(kBlock);
    EXPECT_EQ(sentMeanwhile(200ms), 0) << "it has taken leave";

    openConnected();
    EXPECT_GT(sentMeanwhile(300ms), 3);
    std::unique_ptr<Lv2Window> frozen = std::move(window);
    EXPECT_GT(sentMeanwhile(2500ms), 10);
    sentMeanwhile(1000ms);
    EXPECT_EQ(sentMeanwhile(200ms), 0) << "it is frozen";
    load("Club and Dance");
    window = std::move(frozen);
    EXPECT_TRUE(eventually([&] { return isInStep() && host.value(style) == kPunchy; }))
        << "what a user did meanwhile, as in a menu";
}

TEST_F(Lv2Bridge, WhatGetsLostOrDoesNotFitComesLater) {
    // Room for one part a block, and every third gets lost on its way.
    host.setNotificationRoom(700);
    openWindow();
    int events = 0;
    window->loses = [&] { return ++events % 7 == 0; };
    ASSERT_TRUE(eventually([&] { return isInStep(); }));
    load("Club and Dance");
    EXPECT_TRUE(eventually([&] { return isInStep() && host.value(style) == kPunchy; }));
    host.setValue(gain, 3.0);
    model().toggleCompare();
    EXPECT_TRUE(eventually([&] { return isInStep(); }));
    for (const auto& words : window->heard) EXPECT_LE(words.size() * 8, 700u);
}

TEST_F(Lv2Bridge, HostileEventsDoNothing) {
    openConnected();
    load("Club and Dance");
    ASSERT_TRUE(eventually([&] { return isInStep() && host.value(style) == kPunchy; }));
    const std::vector<std::byte> before = host.state();
    const auto toPlugin = Lv2Host::urid("urn:quillmark:vanta2#ToPlugin");
    Random random(4);
    const auto byte = [&] { return static_cast<std::uint8_t>((random.bipolar() + 1.0) * 127.9); };
    const auto heard = window->heard;
    ASSERT_FALSE(heard.empty());
    for (const auto& words : heard) {
        for (int damage = 0; damage < 12; ++damage) {
            std::vector<std::uint64_t> spoiled = words;
            auto* bytes = reinterpret_cast<std::uint8_t*>(spoiled.data());
            auto& atom = *reinterpret_cast<LV2_Atom*>(bytes);
            if (damage < 6) std::memcpy(bytes + 12, &toPlugin, sizeof toPlugin);
            if (damage % 6 == 0) atom.size = atom.size * byte() / 256;
            if (damage % 6 == 1) bytes[28] = byte();
            // What a message says, and where a part belongs.
            if (damage % 6 >= 2) {
                for (std::size_t i = 32; i < spoiled.size() * 8; i += 1 + byte() % 16) bytes[i] = byte();
            }
            if (damage % 6 == 3) std::memset(bytes + 36, 0xFF, 4);
            host.addEvent(atom);
            window->portEvent(34, sizeof atom + atom.size, Lv2Host::urid(LV2_ATOM__eventTransfer), &atom);
            window->portEvent(34, byte() % 32, Lv2Host::urid(LV2_ATOM__eventTransfer), &atom);
            window->portEvent(byte(), 3, 0, bytes);
        }
        block();
    }
    meanwhile(300ms);
    EXPECT_EQ(host.state(), before);
    EXPECT_TRUE(eventually([&] { return isInStep(); }));
    drag(gain, 1.0f);
    EXPECT_TRUE(eventually([&] { return isInStep() && host.value(gain) == 1.0; })) << "it still works";
}

TEST(Lv2Levels, ThinnedAudioKeepsItsExtremes) {
    // Two channels, two frames of 40 samples; one reading behind.
    std::vector<float> samples(160);
    for (std::size_t i = 0; i < samples.size(); ++i) samples[i] = std::sin(static_cast<float>(i) * 1.7f);
    std::vector<std::byte> record;
    const auto append = [&](const auto& values) {
        const auto bytes = std::as_bytes(std::span(values));
        record.insert(record.end(), bytes.begin(), bytes.end());
    };
    append(std::array{2, 2, 40});
    append(samples);
    append(std::array{-3.5f});
    const auto thinned = thinLevels(record, 1);
    ASSERT_TRUE(thinned);
    EXPECT_EQ(thinned->size(), (2 + 2 * 4 + 1) * 4u);
    const auto thick = thickenLevels(*thinned, 1);
    ASSERT_TRUE(thick);
    ASSERT_EQ(thick->size(), (3 + 80 + 1) * 4u);
    std::array<float, 84> read{};
    std::memcpy(read.data(), thick->data(), thick->size());
    for (std::size_t frame = 0; frame < 2; ++frame) {
        for (const auto& [begin, end] : {std::pair{0u, 32u}, std::pair{32u, 40u}}) {
            std::vector<float> before;
            for (std::size_t c = 0; c < 2; ++c) {
                for (std::size_t i = begin; i < end; ++i) before.push_back(samples[(frame * 2 + c) * 40 + i]);
            }
            const auto now = std::span(read).subspan(3 + frame * 40 + begin, end - begin);
            EXPECT_EQ(std::ranges::max(now), std::ranges::max(before));
            EXPECT_EQ(std::ranges::min(now), std::ranges::min(before));
        }
    }
    EXPECT_EQ(read.back(), -3.5f);
    for (std::size_t size = 0; size < 48; ++size) {
        EXPECT_FALSE(thickenLevels(std::span(*thinned).first(size % 40), 1)) << size;
    }
}

/// The plug-in is in this program, as is the window.
class Lv2SameProcess : public Lv2WindowTest {
protected:
    Lv2SameProcess() : Lv2WindowTest({.options = true, .portRequests = false, .module = lv2Descriptor}) {}
};

TEST_F(Lv2SameProcess, TheWindowShowsTheVeryInstance) {
    openWindow({.instance = true, .lag = 6});
    block();
    for (int i = 1; i <= 20; ++i) {
        drag(gain, static_cast<float>(i));
        block();
        std::this_thread::sleep_for(5ms);
        ASSERT_EQ(shown->processor().parameterAt(gain)->value(), static_cast<float>(i)) << "the port is late";
    }
    EXPECT_TRUE(eventually([&] { return host.value(gain) == 20.0; }));
    EXPECT_EQ(window->touches.size(), 40u);
    EXPECT_TRUE(isInStep());
    EXPECT_EQ(valueAt(gain), 20.0f);
    load("Club and Dance");
    EXPECT_TRUE(eventually([&] { return host.value(style) == kPunchy; })) << "the host's ports follow";
    meanwhile(600ms);
    EXPECT_FALSE(model().presetState().modified());
    host.setValue(gain, 5.0);
    EXPECT_TRUE(eventually([&] { return valueAt(gain) == 5.0f; }));
    EXPECT_THAT(window->heard, IsEmpty()) << "it needs no messages";
}

TEST_F(Lv2SameProcess, APortThatTheHostHoldsCountsAgainInTheEnd) {
    openWindow({.instance = true, .lag = 1 << 20});
    block();
    drag(gain, 6.0f);
    block();
    host.setValue(gain, 1.0);
    block();
    EXPECT_EQ(valueAt(gain), 6.0f);
    meanwhile(600ms);
    host.setValue(gain, 2.0);
    EXPECT_TRUE(eventually([&] { return valueAt(gain) == 2.0f; }));
}

TEST_F(Lv2SameProcess, TheWindowMayOutliveThePlugin) {
    openWindow({.instance = true});
    drag(gain, 6.0f);
    const std::unique_ptr<Lv2Window> left = std::move(window);
    host.close();
    const int written = left->written;
    drag(gain, 7.0f);
    left->extension<LV2UI_Idle_Interface>(LV2_UI__idleInterface)->idle(left->handle());
    EXPECT_EQ(valueAt(gain), 7.0f);
    EXPECT_EQ(left->written, written) << "there is no port any more";
    EXPECT_EQ(view.alive, 1);
}

TEST_F(Lv2SameProcess, TheAudioThreadNeitherWaitsNorAllocatesForAWindow) {
    openConnected();
    RealtimeTrap trap;
    for (int i = 0; i < 200; ++i) {
        if (i % 20 == 0) drag(gain, static_cast<float>(i) * 0.1f);
        if (i == 100) load("Club and Dance");
        block(0.3f);
        std::this_thread::sleep_for(2ms);
    }
    EXPECT_EQ(trap.total(), 0) << trap.report();
    EXPECT_GT(window->heard.size(), 10u);
}

TEST_F(Lv2SameProcess, WindowsComeAndGo) {
    for (int i = 0; i < 60; ++i) {
        openWindow({.instance = i % 2 == 0});
        drag(gain, static_cast<float>(i % 30));
        block();
        window.reset();
        block();
    }
    EXPECT_EQ(view.alive, 0);
    view.host = nullptr;
    const LV2_Feature* nothing[] = {nullptr};
    const LV2UI_Descriptor& descriptor = *module.descriptor(0);
    const auto write = [](LV2UI_Controller, std::uint32_t, std::uint32_t, std::uint32_t, const void*) {};
    EXPECT_EQ(descriptor.instantiate(&descriptor, "urn:quillmark:vanta2:stereo", "", write, nullptr, nullptr,
                                     nothing),
              nullptr);
    EXPECT_EQ(module.descriptor(1), nullptr);
}

}  // namespace
}  // namespace vanta::test
