#pragma once

#include <algorithm>
#include <cmath>
#include <numbers>
#include <stdexcept>
#include <string>
#include <vector>

#include "dsp/sr/true_peak_exposer.hpp"
#include "measure/programme_meter.hpp"
#include "tests/support/element_rig.hpp"
#include "tests/support/limiter_rig.hpp"
#include "tests/support/signals.hpp"

/// Signals of the documents that meters are measured by, and the meters of the house.
namespace vanta::test {

inline constexpr double kPi = std::numbers::pi;
inline constexpr double kRate = 48000.0;
inline constexpr double kLoudnessTolerance = 0.1;  ///< LU, of I, M and S
inline constexpr double kRangeTolerance = 1.0;     ///< LU
inline constexpr double kTruePeakAbove = 0.2;      ///< dB
inline constexpr double kTruePeakBelow = 0.4;      ///< dB

inline ChannelLayout layoutNamed(std::string_view name) {
    for (ChannelLayout i = 0; i < kChannelLayoutCount; ++i) {
        if (channelLayoutName(i) == name) return i;
    }
    throw std::invalid_argument(std::string(name));
}

struct Measured {
    ProgrammeFigures figures;
    std::vector<TimelinePoint> timeline;
    std::int64_t notFinite;
};

inline Measured measure(const Channels& channels, ChannelLayout layout = kStereoLayout, double rate = kRate,
                        std::size_t block = 4096) {
    ProgrammeMeter meter(layout, rate);
    const std::size_t frames = channels.front().size();
    std::vector<const float*> pointers(channels.size());
    for (std::size_t at = 0; at < frames; at += block) {
        for (std::size_t c = 0; c < channels.size(); ++c) pointers[c] = channels[c].data() + at;
        meter.process(pointers, std::min(block, frames - at));
    }
    meter.finish();
    return {meter.programme().figures(),
            {meter.timeline().begin(), meter.timeline().end()},
            meter.programme().notFinite};
}

/// A part of a test signal: that many seconds at a peak level in dBFS; below -200 it is silence.
struct Part {
    double seconds;
    double level;
};
inline constexpr double kSilent = -1000.0;

/// A sine of 1 kHz whose level changes from part to part, its phase running through.
inline Signal steps(const std::vector<Part>& parts, double frequency = 1000.0) {
    Signal signal;
    for (const auto& [seconds, level] : parts) {
        const auto count = static_cast<std::size_t>(std::lround(seconds * kRate));
        const double gain = level < -200.0 ? 0.0 : std::pow(10.0, level / 20.0);
        for (std::size_t i = 0; i < count; ++i) {
            const double time = static_cast<double>(signal.size()) / kRate;
            signal.push_back(static_cast<float>(gain * std::sin(2.0 * kPi * frequency * time)));
        }
    }
    return signal;
}

inline Channels stereo(const std::vector<Part>& parts) {
    const Signal signal = steps(parts);
    return {signal, signal};
}

inline std::vector<Part> repeated(int times, const std::vector<Part>& parts) {
    std::vector<Part> all;
    for (int i = 0; i < times; ++i) all.insert(all.end(), parts.begin(), parts.end());
    return all;
}

inline double valueOr(const std::optional<TimedLevel>& level) {
    return level ? level->level : -999.0;
}

/// What the limiter's own meter reads.
inline double exposedPeak(const Signal& signal) {
    wave::Environment environment(256);
    environment.setSampleRate(static_cast<float>(kRate));
    sr::TruePeakExposer::Style style(environment);
    VectorSource source(environment, signal);
    sr::TruePeakExposer exposer(environment, style);
    exposer.source = &source;
    exposer.detail = sr::TruePeakExposer::Highest;
    return peak(runElement(environment, exposer, evenBlocks(static_cast<int>(signal.size()), 256)));
}

}  // namespace vanta::test
