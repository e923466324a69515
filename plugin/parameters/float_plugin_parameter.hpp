#pragma once

#include <atomic>
#include <optional>

#include "plugin/parameters/float_display.hpp"
#include "plugin/parameters/typed_plugin_parameter.hpp"

namespace vanta {

/// A continuous parameter. Range 0 to 1, default and value 0 until the table that builds it says otherwise.
class FloatPluginParameter : public TypedPluginParameter<float> {
public:
    FloatPluginParameter(GenericParameterOwner& parameterOwner, std::string parameterName);

    /// Sets up the range; `initial` becomes default and value. Tells nobody: for the parameter's
    /// construction.
    void setRange(float low, float high, float initial);

    /// What reaches the audio code for the own number `value`.
    VANTA_REALTIME float engineValue(float value) const { return display.engineValue(value); }
    float fromDisplay(float shown) const override { return display.fromShown(shown); }
    float toDisplay(float value) const override { return display.shown(value); }
    float normalize(float value) const override;
    float denormalize(float normal) const override;
    /// Takes a number with or without unit, "50%" as a share of the range, and what the unit reads by itself,
    /// as a note name. Limits it to the range. On false `out` keeps its value.
    bool parseText(const std::string& text, float* out) const override;
    bool exceedsRange(const std::string& text) const override;
    using AbstractPluginParameter::text;
    std::string text(float value) const override { return display.text(value); }
    float defaultValue() const override { return default_; }
    float minimum() const override { return minimum_; }
    float maximum() const override { return maximum_; }
    float value() const override { return value_.load(std::memory_order_relaxed); }
    void setValue(float value, int flags) override;
    bool isContinuous() const override { return true; }
    VANTA_REALTIME void applyValue(float value) override { tellListeners(engineValue(value)); }

    FloatDisplay display{*this};

protected:
    /// To the range, the minimum first.
    float limit(float value) const;

private:
    /// A text read as a number, before any limit.
    struct Reading {
        double number;
        bool isShare;  ///< of the parameter's range, 0 to 1; else the shown value
    };
    std::optional<Reading> read(const std::string& text) const;
    std::optional<Reading> readSpecial(std::string_view text) const;

    // Host, interface and audio threads look at the value; the queue between them orders everything else.
    std::atomic<float> value_{0.0f};
    float default_ = 0.0f;
    float maximum_ = 1.0f;
    float minimum_ = 0.0f;
};

}  // namespace vanta
