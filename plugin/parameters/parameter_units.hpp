#pragma once

#include <string>

#include "plugin/parameters/float_plugin_parameter_unit.hpp"

namespace vanta {

/// Takes note names besides frequencies: "A4", "c#3", "Bb2 -15" with cents. A4 is 440 Hz.
class FreqParameterUnit : public FloatPluginParameterUnit {
public:
    bool parseSpecial(const std::string& text, float* out) const override;
    void configure(FloatDisplay& display) const override;

protected:
    FreqParameterUnit();
};

/// Engine values in Hz.
class HzParameterUnit final : public FreqParameterUnit {
public:
    static const HzParameterUnit& instance();

private:
    HzParameterUnit() = default;
};

/// Engine values in octaves, log2 of Hz; shown in Hz.
class ExpFreqParameterUnit final : public FreqParameterUnit {
public:
    static const ExpFreqParameterUnit& instance();
    void configure(FloatDisplay& display) const override;

private:
    ExpFreqParameterUnit() = default;
};

class MsParameterUnit final : public FloatPluginParameterUnit {
public:
    static const MsParameterUnit& instance();

private:
    MsParameterUnit();
};

class SecParameterUnit final : public FloatPluginParameterUnit {
public:
    static const SecParameterUnit& instance();

private:
    SecParameterUnit();
};

/// Decibels. "2x" and "2*" name a gain factor.
class DBParameterUnitBase : public FloatPluginParameterUnit {
protected:
    explicit DBParameterUnitBase(const std::string& text, const std::string& alias = {});
};

class DBParameterUnit final : public DBParameterUnitBase {
public:
    static const DBParameterUnit& db();
    static const DBParameterUnit& dbtp();
    /// A level that is shown in dB or dBTP as the case may be, and typed in either.
    static const DBParameterUnit& outputLevel(bool truePeak);
    void configure(FloatDisplay& display) const override;

private:
    using DBParameterUnitBase::DBParameterUnitBase;
};

/// A distance in decibels, which knows no silence.
class DBRangeParameterUnit final : public DBParameterUnitBase {
public:
    static const DBRangeParameterUnit& instance();
    void configure(FloatDisplay& display) const override;

private:
    using DBParameterUnitBase::DBParameterUnitBase;
};

/// Engine values in octaves, shown in semitones.
class OctavesParameterUnit final : public FloatPluginParameterUnit {
public:
    static const OctavesParameterUnit& instance();
    void configure(FloatDisplay& display) const override;

private:
    OctavesParameterUnit();
};

class PercentParameterUnit final : public FloatPluginParameterUnit {
public:
    static const PercentParameterUnit& instance();
    void configure(FloatDisplay& display) const override;

private:
    PercentParameterUnit();
};

class RatioParameterUnit final : public FloatPluginParameterUnit {
public:
    static const RatioParameterUnit& instance();
    void configure(FloatDisplay& display) const override;

private:
    RatioParameterUnit();
};

class SlopeParameterUnit final : public FloatPluginParameterUnit {
public:
    static const SlopeParameterUnit& instance();
    void configure(FloatDisplay& display) const override;

private:
    SlopeParameterUnit();
};

}  // namespace vanta
