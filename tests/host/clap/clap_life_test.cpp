#include <gtest/gtest.h>

#include "tests/host/clap/clap_test.hpp"
#include "tests/support/signals.hpp"

namespace vanta::test {
namespace {

using ClapLife = ClapTest;

TEST_F(ClapLife, TheModuleSaysWhatItIsAndRefusesWhatItIsNot) {
    const ClapLibrary library;
    const clap_plugin_factory_t& factory = library.factory();
    ASSERT_EQ(factory.get_plugin_count(&factory), 1u);
    const clap_plugin_descriptor_t& descriptor = *factory.get_plugin_descriptor(&factory, 0);
    EXPECT_EQ(factory.get_plugin_descriptor(&factory, 1), nullptr);
    EXPECT_EQ(library.entry().get_factory("clap.nothing"), nullptr);
    clap_host_t host{};
    EXPECT_EQ(factory.create_plugin(&factory, &host, descriptor.id), nullptr) << "of no version";
    host.clap_version = CLAP_VERSION_INIT;
    EXPECT_EQ(factory.create_plugin(&factory, &host, "com.quillmark.nothing"), nullptr);
    EXPECT_EQ(factory.create_plugin(&factory, nullptr, descriptor.id), nullptr);

    EXPECT_TRUE(library.entry().init(ClapLibrary::path()));
    library.entry().deinit();
    EXPECT_NE(library.entry().get_factory(CLAP_PLUGIN_FACTORY_ID), nullptr) << "one host is still there";
}

TEST_F(ClapLife, CallsInAnyOrderAreSurvived) {
    Random random(9);
    ClapHost host;
    const clap_plugin_t* plugin = &host.plugin();
    const auto& configs = *host.extension<ClapPluginAudioPortsConfig>(kClapAudioPortsConfig);
    const std::vector<std::byte> state = host.save(0);
    bool active = false;
    for (int round = 0; round < 600; ++round) {
        switch (random.between(0, 9)) {
            case 0:
                EXPECT_EQ(plugin->activate(plugin, random.between(8000, 96000), 1, 256), !active);
                active = true;
                break;
            case 1:
                plugin->deactivate(plugin);
                active = false;
                break;
            case 2:
                EXPECT_EQ(plugin->start_processing(plugin), active);
                break;
            case 3:
                plugin->stop_processing(plugin);
                break;
            case 4:
                plugin->reset(plugin);
                break;
            case 5:
                host.flush({valueEvent(0, static_cast<clap_id>(random.between(0, 30)), random.bipolar())});
                break;
            case 6:
                EXPECT_EQ(configs.select(plugin, static_cast<clap_id>(random.between(0, 14))), !active);
                break;
            case 7:
                EXPECT_TRUE(host.restore(state, 0));
                break;
            case 8:
                plugin->on_main_thread(plugin);
                break;
            default:
                EXPECT_EQ(RawBlock(100).run(host), active ? CLAP_PROCESS_CONTINUE : CLAP_PROCESS_ERROR);
        }
    }
    EXPECT_EQ(plugin->process(plugin, nullptr), CLAP_PROCESS_ERROR);
    host.deactivate();
    plugin->deactivate(plugin);
    EXPECT_FALSE(host.activate(kRate, 0));
}

TEST_F(ClapLife, ALatencyIsToldOnceWhileInactive) {
    ClapHost host;
    const int oversampling = indexOf(host, "Oversampling");
    ASSERT_TRUE(host.activate(kRate, kLargest));
    const int before = host.latency();
    host.plugin().on_main_thread(&host.plugin());
    EXPECT_FALSE(host.restartRequested) << "it has the latency that it began with";
    int told = host.latencyChanges;
    host.setValue(oversampling, 4.0);
    host.plugin().on_main_thread(&host.plugin());
    EXPECT_TRUE(host.restartRequested);
    EXPECT_EQ(host.latencyChanges, told) << "not while it is active";
    host.idle();
    EXPECT_EQ(host.latencyChanges, ++told);
    host.deactivate();
    host.setValue(oversampling, 0.0);
    host.idle();
    EXPECT_EQ(host.latencyChanges, ++told);
    EXPECT_EQ(host.latency(), before);
    ++told;
    for (int round = 0; round < 2; ++round) {
        ASSERT_TRUE(host.activate(192000.0, kLargest));
        EXPECT_EQ(host.latencyChanges, told) << "known when audio starts, and told once";
        EXPECT_NE(host.latency(), before);
        host.deactivate();
    }
}

}  // namespace
}  // namespace vanta::test
