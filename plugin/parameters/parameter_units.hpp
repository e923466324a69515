#pragma once

#include <span>
#include <string_view>

#include "plugin/parameters/float_plugin_parameter_unit.hpp"

namespace vanta {

/// The rows of the table of units.
enum class ParameterUnit {
    Hz,          ///< takes note names too: "A4", "c#3", "Bb2 -15" with cents; A4 is 440 Hz
    ExpFreq,     ///< the same for engine values in octaves, log2 of Hz
    Ms,          ///< milliseconds
    Sec,         ///< seconds
    Db,          ///< a level; as in all units of decibels, "2x" and "2*" are gain factors
    Dbtp,        ///< a true-peak level
    OutputDb,    ///< a ceiling in dB that may also be typed in dBTP
    OutputDbtp,  ///< a ceiling in dBTP that may also be typed in dB
    DbRange,     ///< a difference of levels, which is never silence
    Octaves,     ///< engine values in octaves, shown in semitones
    Percent,
    Ratio,  ///< "4.00:1"
    Slope,  ///< dB per octave
};

/// All rows, in the order of their enumerators. They live as long as the program.
std::span<const FloatPluginParameterUnit> parameterUnits();

const FloatPluginParameterUnit& parameterUnit(ParameterUnit unit);

/// The registered unit whose printed word is `text`, without regard to case. Null if there is none.
const FloatPluginParameterUnit* registeredUnit(std::string_view text);

/// A row by a type name of its own.
template <ParameterUnit unit>
struct NamedParameterUnit {
    static const FloatPluginParameterUnit& instance() { return parameterUnit(unit); }
};
using HzParameterUnit = NamedParameterUnit<ParameterUnit::Hz>;
using ExpFreqParameterUnit = NamedParameterUnit<ParameterUnit::ExpFreq>;
using MsParameterUnit = NamedParameterUnit<ParameterUnit::Ms>;
using SecParameterUnit = NamedParameterUnit<ParameterUnit::Sec>;
using DBRangeParameterUnit = NamedParameterUnit<ParameterUnit::DbRange>;
using OctavesParameterUnit = NamedParameterUnit<ParameterUnit::Octaves>;
using PercentParameterUnit = NamedParameterUnit<ParameterUnit::Percent>;
using RatioParameterUnit = NamedParameterUnit<ParameterUnit::Ratio>;
using SlopeParameterUnit = NamedParameterUnit<ParameterUnit::Slope>;

struct DBParameterUnit {
    static const FloatPluginParameterUnit& db() { return parameterUnit(ParameterUnit::Db); }
    static const FloatPluginParameterUnit& dbtp() { return parameterUnit(ParameterUnit::Dbtp); }
    /// A ceiling that is shown in dBTP or dB and may be typed in either.
    static const FloatPluginParameterUnit& outputLevel(bool truePeak) {
        return parameterUnit(truePeak ? ParameterUnit::OutputDbtp : ParameterUnit::OutputDb);
    }
};

}  // namespace vanta
