#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "host/offline/programme_meter.hpp"
#include "plugin/channel_layout.hpp"

namespace vanta {

/// One file and what was found in it.
struct Measurement {
    std::filesystem::path file;
    std::string error;  ///< why it could not be measured; empty if it was
    std::string format;
    ChannelLayout layout = kStereoLayout;
    int sampleRate = 0;  ///< Hz
    Programme programme;
    ProgrammeFigures figures;
    std::vector<TimelinePoint> timeline;
    std::vector<std::string> warnings;
};

/// Measures an audio file. `layout` says what its channels are where the file leaves it open. Failure if it
/// cannot be read to its end, Interrupted if the user asked to stop.
Measurement measureFile(const std::filesystem::path& file, std::optional<ChannelLayout> layout,
                        bool showProgress);

/// What a programme is to keep to.
struct Requirements {
    std::optional<double> targetLufs;
    double toleranceLu = 0.5;
    std::optional<double> maxTruePeakDb;

    /// A programme without a reading misses a target.
    bool missesTarget(const ProgrammeFigures& figures) const;
    bool missesTruePeak(const ProgrammeFigures& figures) const;
    bool misses(const ProgrammeFigures& figures) const {
        return missesTarget(figures) || missesTruePeak(figures);
    }
};

}  // namespace vanta
