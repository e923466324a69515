#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <map>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "host/unified/event_pump.hpp"
#include "limiter/model/vanta_plugin.hpp"
#include "limiter/processor/vanta_processor.hpp"
#include "tests/host/in_process_host.hpp"
#include "tests/plugin/preset_bytes.hpp"
#include "tests/plugin/user_home.hpp"

namespace vanta::test {
namespace {

class Instances : public testing::Test {
protected:
    UserHome home;
};

TEST_F(Instances, TwoHundredInTurnLeaveNothingBehind) {
    const auto filesOfTheUser = [&] {
        std::map<std::string, std::filesystem::file_time_type> files;
        for (const auto& file : std::filesystem::recursive_directory_iterator(home.path)) {
            files.emplace(file.path(), file.last_write_time());
        }
        return files;
    };
    const int presetCount = InProcessHost().model().statics().presets.mainCount();
    ASSERT_GT(presetCount, 0);
    const auto files = filesOfTheUser();
    for (int i = 0; i < 200; ++i) {
        InProcessHost host(i % kChannelLayoutCount);
        ASSERT_EQ(GenericPlugin::instanceCount(), 1);
        PluginStatics& statics = host.model().statics();
        ASSERT_EQ(statics.controllers.controllerOf(0), -1);
        ASSERT_EQ(statics.presets.mainCount(), presetCount);
        ASSERT_EQ(host.model().presetState().name(), "Default Setting");
    }
    EXPECT_EQ(GenericPlugin::instanceCount(), 0);
    EXPECT_EQ(filesOfTheUser(), files) << "who only looks leaves no trace";
}

TEST_F(Instances, TwentyAtOnceShareOneSetOfStatics) {
    std::vector<std::unique_ptr<InProcessHost>> hosts;
    for (int i = 0; i < 20; ++i) hosts.push_back(std::make_unique<InProcessHost>());
    EXPECT_EQ(GenericPlugin::instanceCount(), 20);
    PluginStatics& shared = hosts.front()->model().statics();
    for (auto& host : hosts) EXPECT_EQ(&host->model().statics(), &shared);
    shared.controllers.assign(11, 3);
    hosts.erase(hosts.begin(), hosts.end() - 1);
    EXPECT_EQ(&hosts.front()->model().statics(), &shared) << "the first instance is not the owner";
    EXPECT_EQ(shared.controllers.controllerOf(3), 11);
    hosts.clear();
    EXPECT_EQ(GenericPlugin::instanceCount(), 0);
    // The map was kept for the next start.
    EXPECT_EQ(InProcessHost().model().statics().controllers.controllerOf(3), 11);
}

TEST_F(Instances, ComeAndGoOnSeveralThreads) {
    std::vector<std::thread> threads;
    for (int t = 0; t < 3; ++t) {
        threads.emplace_back([t] {
            for (int i = 0; i < 4; ++i) {
                InProcessHost host;
                const auto held = host.model().statics().lock();
                host.model().statics().controllers.assign(t, i);
            }
        });
    }
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(GenericPlugin::instanceCount(), 0);
}

TEST_F(Instances, TheFirstRestoresThePresetsButNotWhatAUserTookAway) {
    std::string preset;
    {
        InProcessHost host;
        auto& table = dynamic_cast<VantaPlugin&>(host.model());
        EXPECT_EQ(table.presetState().name(), "Default Setting");
        EXPECT_FALSE(table.presetState().modified());
        EXPECT_NEAR(table.lookahead.value(), 0.18f, 1e-6f);
        EXPECT_EQ(table.latency(), host.processor().latency());
        EXPECT_TRUE(table.statics().settings.showWelcomeHint) << "this version was never here";
        table.statics().settings.showWelcomeHint = false;
        preset = table.statics().findPreset("Modern Loud", true).value().path;
    }
    std::filesystem::remove(preset);
    InProcessHost again;
    EXPECT_FALSE(std::filesystem::exists(preset));
    EXPECT_FALSE(again.model().statics().settings.showWelcomeHint);
}

TEST_F(Instances, PresetsOfTheFirstGenerationFollowTheirOwn) {
    std::filesystem::create_directories(home / "old");
    std::vector<float> values(19, 0.0f);
    values[0] = 6.0f;
    values[5] = 0.8f;  // a channel link, which had twice the range
    home.write("old/From Long Ago.qmp", presetBytes("Vntr", 3, values));
    home.write("old/Default Setting.qmp", presetBytes("Vntr", 3, values));
    home.write("config/Quillmark/Vanta/1.0.conf", "[Texts]\nPresetFolder=" + (home / "old").string() + "\n");
    InProcessHost host;
    auto& table = dynamic_cast<VantaPlugin&>(host.model());
    EXPECT_EQ(table.gain.value(), 0.0f) << "the default is not theirs";
    EXPECT_FALSE(table.statics().findPreset("From Long Ago", true));
    const auto entry = table.statics().findPreset("From Long Ago", false);
    ASSERT_TRUE(entry);
    EXPECT_EQ(entry->program, table.statics().presets.mainCount() + 1) << "their default comes first";
    table.lockOutput.setMapped(false);
    ASSERT_TRUE(table.loadPreset(*entry));
    EXPECT_EQ(table.gain.value(), 6.0f);
    EXPECT_EQ(table.channelLinkTransients.value(), 0.4f);
}

TEST_F(Instances, AStartThatWasCutShortIsMadeUpFor) {
    { const InProcessHost complete; }
    const auto preset = home / "documents/Quillmark/Vanta 2/_Basic/Modern Loud.qmp";
    ASSERT_TRUE(std::filesystem::remove(preset));
    const auto settings = home / "config/Quillmark/Vanta/2.0.conf";
    std::string content = readBytes(settings);
    const std::size_t version = content.find("CurrentVersion=");
    ASSERT_NE(version, std::string::npos);
    content.erase(version, content.find('\n', version) + 1 - version);
    std::ofstream(settings, std::ios::trunc) << content;
    const InProcessHost again;
    EXPECT_TRUE(std::filesystem::exists(preset));
    EXPECT_NE(readBytes(settings).find("CurrentVersion="), std::string::npos);
}

TEST_F(Instances, AThreadOfTheProcessPumpsWhereNoHostDoes) {
    InProcessHost host;
    const EventPump::Registration pumped(host.adapter());
    host.model().statics().controllers.assign(20, 0);
    host.sendMidi(0, {0xB0, 20, 127});
    float silence[2][32] = {};
    float* outputs[] = {silence[0], silence[1]};
    const float* inputs[] = {silence[0], silence[1]};
    host.process(inputs, outputs, 32);
    for (int wait = 0; host.model().parameterAt(0)->value() != 30.0f && wait < 2000; ++wait) {
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    EXPECT_EQ(host.model().parameterAt(0)->value(), 30.0f);
    EXPECT_FALSE(host.model().owner().isThisThread());
}

TEST_F(Instances, AProcessMayEndWithThemStillThere) {
    const auto endEarly = [] {
        static auto* const left = new InProcessHost;
        static const auto* const pumped = new EventPump::Registration(left->adapter());
        std::exit(pumped ? 0 : 1);
    };
    EXPECT_EXIT(endEarly(), testing::ExitedWithCode(0), "");
}

TEST_F(Instances, OthersComeAndGoWithinACallOfThatThread) {
    struct Opening final : UnifiedPluginAdapter {
        Opening() : UnifiedPluginAdapter(RoundTrip::ByUs) { create(kStereoLayout); }
        void reportLatency() override {}
        void reportParameter(int, float) override {
            InProcessHost another;
            const EventPump::Registration pumped(another.adapter());
            opened = true;
        }
        std::atomic<bool> opened{false};
    } opening;
    const EventPump::Registration pumped(opening);
    opening.processor().parameterAt(0)->setValue(5.0f, 0);
    for (int wait = 0; !opening.opened.load() && wait < 2000; ++wait) {
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    EXPECT_TRUE(opening.opened.load());
}

TEST_F(Instances, NoneHasALayoutThatDoesNotExist) {
    for (const ChannelLayout layout : {-1, kChannelLayoutCount, 1 << 20}) {
        EXPECT_THROW(InProcessHost{layout}, std::invalid_argument) << layout;
        EXPECT_THROW(VantaProcessor{layout}, std::invalid_argument) << layout;
        EXPECT_THROW(channelCount(layout), std::invalid_argument) << layout;
    }
    EXPECT_EQ(GenericPlugin::instanceCount(), 0);
    EXPECT_EQ(InProcessHost().model().presetState().name(), "Default Setting") << "and harms no other";
}

}  // namespace
}  // namespace vanta::test
