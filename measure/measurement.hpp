#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "foundation/channel_layout.hpp"
#include "foundation/progress.hpp"
#include "measure/programme_meter.hpp"

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
/// cannot be read to its end, Stopped if `watcher` ends it.
Measurement measureFile(const std::filesystem::path& file, std::optional<ChannelLayout> layout,
                        const WorkWatcher& watcher = {});

}  // namespace vanta
