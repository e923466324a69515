#pragma once

#include <optional>
#include <span>
#include <vector>

#include "measure/programme_meter.hpp"

namespace vanta {

/// Guesses how loud a programme will be after limiting, from nothing but its timeline, so that a search
/// begins near its end. Where peaks exceed full scale by o dB, the loudness of that moment loses
/// o^2 / (o + softness): short peaks cost next to nothing, long ones all that they exceed. The softness is
/// learned from what limiting did.
class LoudnessForecast {
public:
    /// The timelines of all that is measured together, its integrated loudness in LUFS, and the softness to
    /// begin with, in dB.
    LoudnessForecast(std::span<const std::span<const TimelinePoint>> timelines, double integratedLufs,
                     double softnessDb);

    /// What music usually shows of a style, by its index; of any style for null.
    static double usualSoftnessDb(std::optional<int> style);

    /// Integrated LUFS after so much gain into a limiter at full scale.
    double lufs(double gainDb) const { return lufs(gainDb, softnessDb_); }
    /// The gain in dB that is expected to give the loudness, within `lowestDb` and `highestDb`.
    double gainFor(double lufs, double lowestDb, double highestDb) const;
    /// What a gain really gave. From here on the forecast goes through that point where it can.
    void learn(double gainDb, double lufs);

private:
    /// A hundred milliseconds.
    struct Moment {
        double power = 0.0;   ///< of the 400 ms that end here
        double peakDb = 0.0;  ///< in dB of full scale
    };

    double lufs(double gainDb, double softnessDb) const;

    std::vector<Moment> moments_;
    double biasLu_ = 0.0;  ///< by which the loudness of the moments falls short of the measured one
    double softnessDb_;
};

}  // namespace vanta
