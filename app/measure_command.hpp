#pragma once

#include <optional>
#include <string>
#include <vector>

namespace vanta {

/// What the command line of `vanta measure` says, before it is understood.
struct MeasureCommand {
    std::vector<std::string> files;
    std::string layout;
    bool json = false;
    bool csv = false;
    std::string timeline;                 ///< a CSV file to be written; empty: none
    std::string plot;                     ///< a PNG file to be written; empty: none
    std::optional<double> targetLufs;     ///< of the integrated loudness
    std::optional<double> maxTruePeakDb;  ///< dBTP
    double toleranceLu = 0.5;             ///< around the target
    bool quiet = false;
};

/// Measures all files and prints the figures; a file that fails does not keep the next from being measured.
/// The result is an ExitCode: kExitFailed if a file could not be measured or written, else kExitMissed if one
/// misses the target or the highest true peak. UsageError before anything is measured.
int runMeasure(const MeasureCommand& command);

}  // namespace vanta
