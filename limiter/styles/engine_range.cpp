#include "limiter/styles/engine_range.hpp"

#include <array>
#include <limits>

namespace vanta {
namespace {

constexpr double kUnlisted = std::numeric_limits<double>::infinity();
constexpr double kLog2Of5 = 2.321928094887362;
constexpr double kLog2Of30000 = 14.872674880270605;
constexpr double kOctaves = 12.5507;  // log2(30000 / 5)

/// One range with its factors by groups of source types that are scaled alike.
struct Row {
    RangeId id;
    bool isAudio;
    double minimum, maximum, defaultFactor;
    double input;       ///< a sample, full scale 1
    double threshold;   ///< Main Threshold, dB: -60 to 0
    double ratio;       ///< Main Ratio, 0 to 99
    double attack;      ///< Main Attack and Main Release, 0 to 10 s
    double custom;      ///< 0 to 1
    double signal;      ///< Filter, Saturator, Crossover
    double gainChange;  ///< Detector to Constant: dB, of which 24 count as the full span
    double vca;
};

constexpr std::array<Row, kRangeCount> kRows{{
    {RangeId::Fraction, false, 0, 1, 1, 1, 1.0 / 60, 0.02, 0.1, 1, 1, 1.0 / 24, 1},
    {RangeId::Audio, true, 0, 0, 120, 1, 1, 0.48, 2.4, 24, 1, 1, 1},
    {RangeId::Threshold, false, -60, 60, 120, 60, 1, 1.2, 6, 60, 60, 1, 1},
    {RangeId::MainRatio, false, 0, 100, 99, 50, 5.0 / 6, 1, 5, 50, 50, 50.0 / 24, 50},
    {RangeId::DetectorRatio, false, 1, 100, 99, 50, 5.0 / 6, 1, 5, 50, 50, 50.0 / 24, 50},
    {RangeId::Knee, false, 0, 30, 30, 30, 1, 0.6, 3, 30, 30, 1, 30},
    {RangeId::Bipolar, false, -1, 1, 2, 2, 1.0 / 30, 0.04, 0.2, 2, 2, 1.0 / 12, 2},
    {RangeId::TimeConstant, false, 0, 1000, 5, 10, 10.0 / 24, 0.2, 1, 10, 10, 10.0 / 24, 10},
    {RangeId::Smoothing, false, -1, 1, 1, 1, 1.0 / 24, 0.02, 1, 1, 1, 1.0 / 24, 1},
    {RangeId::Frequency, false, kLog2Of5, kLog2Of30000, kOctaves, kOctaves, kOctaves / 24, 0.251015, 1.25507,
     kOctaves, kOctaves, kOctaves / 24, kOctaves},
    {RangeId::LookAhead, false, 0, 50, 50, 50, 50.0 / 24, 1, 1000, 50, 50, 50.0 / 24, 50},
    {RangeId::PeakHold, false, 0, 50, 50, 50, 50.0 / 24, 1, 1000, 50, 50, 50.0 / 24, 50},
    {RangeId::RmsWindow, false, 0, 50, 50, 50, 50.0 / 24, 1, 1000, 50, 50, 50.0 / 24, 50},
    {RangeId::Averaging, false, 0, 50, 50, 50, 50.0 / 24, 1, 1000, 50, 50, 50.0 / 24, 50},
    {RangeId::Delay, false, 0, 50, 50, 50, 50.0 / 24, 1, 1000, 50, 50, 50.0 / 24, 50},
    {RangeId::ConvolverWindow, false, 0, 50, 50, 50, 50.0 / 24, 1, 1000, 50, 50, 50.0 / 24, 50},
    {RangeId::ConstantValue, false, -180, 180, 120, 60, 1, 1.2, 6, 60, 60, 1, 60},
    {RangeId::DecibelSpan, false, 0, 180, 180, 180, 1, 3.6, 18, 180, 180, 1, 180},
    {RangeId::CapacitorHold, false, 0, 1, 0.1, 0.1, 0.1 / 24, 0.002, 1, 0.1, 0.1, 0.1 / 24, 0.1},
    {RangeId::Drive, false, -36, 36, 72, 72, 1, 1.44, 7.2, 72, 72, 1, kUnlisted},
    {RangeId::SlotLevel, false, 0, 100, 100, kUnlisted, 100.0 / 60, 2, 10, kUnlisted, 100, 100.0 / 24, 100},
}};

constexpr bool rowsStandInTheOrderOfTheirIds() {
    for (int i = 0; i < kRangeCount; ++i) {
        if (kRows[static_cast<std::size_t>(i)].id != static_cast<RangeId>(i)) return false;
    }
    return true;
}
static_assert(rowsStandInTheOrderOfTheirIds());

double rowFactor(const Row& row, ElementKind type) {
    if (type == ElementKind::Input) return row.input;
    if (type == ElementKind::MainThreshold) return row.threshold;
    if (type == ElementKind::MainRatio) return row.ratio;
    if (type <= ElementKind::MainRelease) return row.attack;
    if (type == ElementKind::Custom) return row.custom;
    if (type <= ElementKind::Crossover) return row.signal;
    return type == ElementKind::Vca ? row.vca : row.gainChange;
}

double factorOf(RangeId id, ElementKind type) {
    // 24 dB from a Detector span the 60 dB of a threshold, where other gain changes move it dB by dB; and a
    // Mixer counts as a plain signal for the main ratio.
    if (id == RangeId::Threshold && type == ElementKind::Detector) return 2.5;
    if (id == RangeId::MainRatio && type == ElementKind::Mixer) return 50;
    return rowFactor(kRows[static_cast<std::size_t>(id)], type);
}

TargetRange makeRange(RangeId id) {
    const Row& row = kRows[static_cast<std::size_t>(id)];
    TargetRange range{static_cast<float>(row.defaultFactor),
                      row.isAudio,
                      static_cast<float>(row.minimum),
                      static_cast<float>(row.maximum),
                      {}};
    for (int type = 0; type < kElementKindCount; ++type) {
        const double factor = factorOf(id, static_cast<ElementKind>(type));
        if (factor != kUnlisted) range.factors.emplace_back(type, static_cast<float>(factor));
    }
    return range;
}

}  // namespace

std::vector<TargetRange> engineRanges(const DynamicsEngineConfiguration& configuration) {
    std::vector<TargetRange> ranges;
    for (int id = 0; id < kRangeCount; ++id) ranges.push_back(makeRange(static_cast<RangeId>(id)));
    const auto limit = [&](RangeId id, float ms) { ranges[static_cast<std::size_t>(id)].maximum = ms; };
    limit(RangeId::LookAhead, configuration.lookAheadLimit);
    limit(RangeId::PeakHold, configuration.peakHoldLimit);
    limit(RangeId::RmsWindow, configuration.rmsWindowLimit);
    limit(RangeId::Averaging, configuration.averagingLimit);
    limit(RangeId::Delay, configuration.delayLimit);
    limit(RangeId::ConvolverWindow, configuration.convolverLimit);
    return ranges;
}

}  // namespace vanta
