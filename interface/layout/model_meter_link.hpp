#pragma once

#include <functional>

#include "interface/binding/parameter_gestures.hpp"
#include "interface/loudness/meter_link.hpp"
#include "limiter/model/vanta_plugin.hpp"

namespace vanta::interface {

/// Meters of an instance of the limiter. What they let the user choose is a gesture like any other.
class ModelMeterLink final : public MeterLink {
public:
    ModelMeterLink(VantaPlugin& shownPlugin, ParameterGestures& usedGestures)
        : plugin_(shownPlugin), gestures_(usedGestures) {}

    const VantaParameters& parameters() const override { return plugin_; }
    void choose(const AbstractPluginParameter& parameter, float value) override {
        gestures_.set(parameter.index(), value);
    }
    ChannelLayout channelLayout() const override { return plugin_.channelLayout; }
    wave::LevelSource* level(int place) override {
        LevelExchange& levels = plugin_.levels();
        return place >= 0 && place < levels.levelCount() ? &levels.level(place) : nullptr;
    }
    wave::LevelSource* combinedLevel(ChannelLevel level) override {
        return &plugin_.levels().combinedLevel(static_cast<int>(level));
    }
    void restartPicture() override {
        if (onRestart) onRestart();
    }

    std::function<void()> onRestart;

private:
    VantaPlugin& plugin_;
    ParameterGestures& gestures_;
};

}  // namespace vanta::interface
