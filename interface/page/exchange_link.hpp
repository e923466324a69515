#pragma once

#include <functional>

#include "interface/loudness/meter_link.hpp"
#include "plugin/metering/level_exchange.hpp"

namespace vanta::interface {

/// Joins a page to a table of parameters and an exchange of levels, which outlive it.
class ExchangeLink final : public MeterLink {
public:
    using Choose = std::function<void(const AbstractPluginParameter& parameter, float value)>;

    ExchangeLink(const VantaParameters& parameters, LevelExchange& levels, ChannelLayout layout)
        : parameters_(parameters), levels_(levels), layout_(layout) {}

    const VantaParameters& parameters() const override { return parameters_; }
    void choose(const AbstractPluginParameter& parameter, float value) override {
        if (onChoose) onChoose(parameter, value);
    }
    ChannelLayout channelLayout() const override { return layout_; }
    wave::LevelSource* level(int place) override {
        return place >= 0 && place < levels_.levelCount() ? &levels_.level(place) : nullptr;
    }
    wave::LevelSource* combinedLevel(ChannelLevel level) override {
        return &levels_.combinedLevel(static_cast<int>(level));
    }
    void restartPicture() override {
        if (onRestart) onRestart();
    }

    LevelExchange& levels() { return levels_; }

    /// Empty: what the user chooses has no effect.
    Choose onChoose;
    std::function<void()> onRestart;

private:
    const VantaParameters& parameters_;
    LevelExchange& levels_;
    ChannelLayout layout_;
};

/// How many levels and streams a limiter of a layout hands over.
LevelCounts levelCounts(ChannelLayout layout);

}  // namespace vanta::interface
