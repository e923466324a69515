#pragma once

#include <algorithm>
#include <filesystem>
#include <mutex>
#include <span>
#include <string>
#include <vector>

#include "plugin/model/generic_plugin.hpp"
#include "plugin/parameters/float_plugin_parameter.hpp"
#include "plugin/parameters/indexed_plugin_parameter.hpp"

namespace vanta::test {

/// A small plug-in: two floats, a choice that sets the latency, and a choice that only the interface uses.
class TestPlugin final : public GenericPlugin {
public:
    static constexpr const char* kTag = "Test";

    /// Presets lie in `folder`, interface defaults beside them; none of both if it is empty.
    explicit TestPlugin(std::filesystem::path folder = {})
        : GenericPlugin(kStereoLayout), home_(std::move(folder)) {
        level.setRange(0.0f, 10.0f, 1.0f);
        balance.setRange(-1.0f, 1.0f, 0.0f);
        mode.setRange(2, 5, 2);
        mode.setLabels("A,B,C,D");
        view.setRange(0, 3, 0);
        levelSourcesPerChannel = 2;
        globalLevelSources = 1;
        audioSourceCount = 1;
        initialize({&view});
    }

    std::string presetMagic() const override { return kTag; }
    void updateLatency() override { setLatency(static_cast<int>(sampleRate()) / 1000 * mode.currentIndex()); }

    FloatPluginParameter level{*this, "Level"};
    FloatPluginParameter balance{*this, "Balance"};
    IndexedPluginParameter<int> mode{*this, "Mode"};
    IndexedPluginParameter<int> view{*this, "View"};

protected:
    std::unique_ptr<PluginStatics> createStatics() override {
        auto created = GenericPlugin::createStatics();
        if (home_.empty()) return created;
        created->presets.rescan((home_ / "presets").string());
        created->interfaceDefaults = home_ / "data" / "InterfaceDefaults.qmd";
        return created;
    }
    void parameterHook(int index) override {
        if (index == kAllParameters || index == mode.index()) updateLatency();
    }

private:
    std::filesystem::path home_;
};

/// Keeps what a model tells the host side.
class RecordingAdapter final : public GenericPlugin::Adapter {
public:
    void midiMapChanged() override { ++mapChanges; }
    void reportLatency() override { ++latencyReports; }
    void sendMidi(const MidiMessage&) override {}
    void parameterUpdated(int index) override { updates.push_back(index); }
    void sendAllParameters(bool reset) override { send(reset ? "reset" : "all"); }
    void sendState(std::span<const float>) override { send("state"); }
    void presetNameChanged() override { ++nameChanges; }
    void syncLevels() override {}
    void reportParameter(int, float) override {}

    std::vector<int> updates;       ///< what the host is to hear of, by index
    std::vector<std::string> sent;  ///< what the processor was sent
    int mapChanges = 0;
    int latencyReports = 0;
    int nameChanges = 0;

private:
    void send(const char* what) {
        const std::lock_guard held(mutex_);
        sent.emplace_back(what);
    }

    std::mutex mutex_;  ///< any thread sends
};

class RecordingListener final : public GenericPlugin::Listener {
public:
    void onEvent(const PluginEvent& event) override { events.push_back(event); }
    template <typename Event>
    std::ptrdiff_t count() const {
        return std::count_if(events.begin(), events.end(),
                             [](const PluginEvent& event) { return std::holds_alternative<Event>(event); });
    }

    std::vector<PluginEvent> events;
};

}  // namespace vanta::test
