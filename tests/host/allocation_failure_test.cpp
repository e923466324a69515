#include "tests/support/allocation_failure.hpp"

#include <gtest/gtest.h>

#include <functional>
#include <ostream>
#include <string>
#include <vector>

#include "limiter/model/vanta_plugin.hpp"
#include "limiter/resources/style_resources.hpp"
#include "limiter/styles/style_record.hpp"
#include "plugin/midi/controller_mapping.hpp"
#include "tests/host/in_process_host.hpp"
#include "tests/plugin/preset_bytes.hpp"
#include "tests/plugin/user_home.hpp"

namespace vanta::test {
namespace {

/// A whole instance whose state is looked at from outside.
class Rig {
public:
    Rig() {
        host.model().interfaceOpened();
        otherState = host.saveState();
        for (int i = 0; i < host.model().parameterCount(); ++i) {
            AbstractPluginParameter& parameter = *host.model().parameterAt(i);
            parameter.setValue(parameter.minimum(), 0);
        }
        plugin().lockOutput.setMapped(false);
        host.model().setPresetName("Mine");
        host.model().statics().controllers.assign(7, 3);
        state = host.saveState();
    }

    VantaPlugin& plugin() { return dynamic_cast<VantaPlugin&>(host.model()); }
    PresetEntry preset(const std::string& name) {
        return host.model().statics().findPreset(name, false).value();
    }

    UserHome home;
    InProcessHost host;
    std::vector<std::byte> state;       ///< as it stands
    std::vector<std::byte> otherState;  ///< another one, to be loaded
};

/// Something that is read into an instance.
struct Reading {
    const char* name;
    std::function<void(Rig&)> read;

    friend void PrintTo(const Reading& reading, std::ostream* out) { *out << reading.name; }
};

class AllocationFailures : public testing::TestWithParam<Reading> {};

TEST_P(AllocationFailures, LeaveTheInstanceAsItWasOrAsItWasToBecome) {
    Rig rig;
    rig.home.write("v1.qmp", presetBytes("Vntr", 3, std::vector<float>(19, 0.0f)));
    GetParam().read(rig);
    const auto read = rig.host.saveState();
    const auto mapped = rig.host.model().statics().controllers.targetOf(7);
    const auto takeBack = [&] {
        rig.host.model().statics().controllers.assign(7, 3);
        rig.host.loadState(rig.state);
    };
    takeBack();
    failEachAllocation([&] { GetParam().read(rig); },
                       [&] {
                           const auto now = rig.host.saveState();
                           EXPECT_TRUE(now == rig.state || now == read);
                           const int target = rig.host.model().statics().controllers.targetOf(7);
                           EXPECT_TRUE(target == 3 || target == mapped);
                           for (int i = 0; i < rig.host.model().parameterCount(); ++i) {
                               EXPECT_EQ(rig.host.model().parameterAt(i)->value(),
                                         rig.host.processor().parameterAt(i)->value())
                                   << i;
                           }
                           takeBack();
                       });
    GetParam().read(rig);
    EXPECT_EQ(rig.host.saveState(), read) << "with memory again";
}

INSTANTIATE_TEST_SUITE_P(
    Reading, AllocationFailures,
    testing::Values(
        Reading{"Preset", [](Rig& rig) { rig.host.model().loadPreset(rig.preset("Modern Loud")); }},
        Reading{"PresetOfTheFirstGeneration",
                [](Rig& rig) {
                    rig.host.model().loadPreset({(rig.home / "v1.qmp").string(), "v1", {}, -1, -1});
                }},
        Reading{"State", [](Rig& rig) { rig.host.loadState(rig.otherState); }},
        Reading{"ControllerMap",
                [](Rig& rig) {
                    ControllerMapping map(rig.plugin().parameterCount());
                    map.assign(7, 5);
                    const auto file = rig.home / "map.qmm";
                    map.save(file);
                    rig.host.model().statics().controllers.load(file);
                }}),
    [](const auto& instance) { return instance.param.name; });

TEST(AllocationFailure, WhileAnInstanceIsBuiltLeavesNothingBehind) {
    const UserHome home;
    failEachAllocation([] { InProcessHost host(kStereoLayout, 48000.0f); },
                       [] { EXPECT_EQ(GenericPlugin::instanceCount(), 0); }, 1000);
    InProcessHost host;
    EXPECT_EQ(host.model().presetState().name(), "Default Setting");
}

TEST(AllocationFailure, WhileAStyleIsReadLeavesNothingBehind) {
    for (const Resource& style : styleResources()) {
        failEachAllocation([&] { readStyleRecord(style.bytes); });
    }
}

}  // namespace
}  // namespace vanta::test
