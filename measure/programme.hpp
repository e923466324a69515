#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "dsp/metering/loudness_gate.hpp"

namespace vanta {

/// A level and where it was reached, in seconds from the start.
struct TimedLevel {
    double level;
    double seconds;
};

/// What can be said of one channel. Nothing where there is no reading: a silent channel has no level.
struct ChannelFigures {
    std::optional<TimedLevel> samplePeak;  ///< dBFS
    std::optional<TimedLevel> truePeak;    ///< dBTP
    std::optional<double> rms;             ///< dB; a square wave of full scale reads 0
    std::optional<double> crest;           ///< dB, from the RMS to the sample peak
};

/// What can be said of a programme. Nothing where there is no reading: it is silent, or shorter than the
/// window.
struct ProgrammeFigures {
    double seconds = 0.0;
    std::optional<double> integrated;            ///< LUFS
    std::optional<double> range;                 ///< LU
    std::optional<double> rangeLow;              ///< LUFS
    std::optional<double> rangeHigh;             ///< LUFS
    std::optional<TimedLevel> highestMomentary;  ///< LUFS, where its window of 400 ms ends
    std::optional<TimedLevel> highestShortTerm;  ///< LUFS, where its window of 3 s ends
    ChannelFigures total;                        ///< highest of all channels; the RMS is their mean
    std::vector<ChannelFigures> channels;        ///< in the layout's order
};

/// All that was gathered of one or several programmes.
class Programme {
public:
    /// The largest of what was seen.
    struct Highest {
        double value = 0.0;
        double seconds = 0.0;
        void raise(double newValue, double at) {
            if (newValue > value) *this = {newValue, at};
        }
    };
    struct Channel {
        Highest samplePeak;  ///< magnitude, as a factor of full scale
        Highest truePeak;
        double squares = 0.0;  ///< sum over all samples
    };

    Programme() : momentaryGate(4), shortTermGate(30) {}

    /// Takes in another one as if both were parts of one programme: the gates judge all their blocks
    /// together. Times of extremes stay those within their own programme.
    void merge(const Programme& other);
    ProgrammeFigures figures() const;

    double seconds = 0.0;
    double samples = 0.0;        ///< of all channels
    std::int64_t notFinite = 0;  ///< samples that are not numbers; they count as 0
    LoudnessGate momentaryGate;
    LoudnessGate shortTermGate;
    Highest momentary;  ///< weighted mean square
    Highest shortTerm;
    std::vector<Channel> channels;
};

}  // namespace vanta
