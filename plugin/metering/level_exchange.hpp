#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <vector>

#include "plugin/metering/level_source_proxies.hpp"

namespace vanta {

/// How many sources a processor offers. The level sources come in this order: the global ones, then those of
/// each channel.
struct LevelCounts {
    int channels = 0;
    int audio = 0;
    int levelsPerChannel = 0;
    int globalLevels = 0;
    int spectra = 0;
};

/// The model's end of the exchange of levels: an image of every source of the processor, and what the
/// interface asks of these. On the thread of the interface, unless stated otherwise.
class LevelExchange {
public:
    explicit LevelExchange(const LevelCounts& counts);

    AudioSourceProxy& audio(int index) { return *audio_[static_cast<std::size_t>(index)]; }
    LevelSourceProxy& level(int index) { return *levels_[static_cast<std::size_t>(index)]; }
    SpectrumSourceProxy& spectrum(int index) { return *spectra_[static_cast<std::size_t>(index)]; }
    int levelCount() const { return static_cast<int>(levels_.size()); }
    /// Source `index` of every channel in one.
    CombinedLevelSource& combinedLevel(int index) { return *combined_[static_cast<std::size_t>(index)]; }

    /// One byte for each level source; see LevelSourceProxy. Each command is handed out once.
    void takeCommands(std::vector<std::uint8_t>& commands);
    /// Takes over what the processor wrote.
    void read(BinaryDataReader& reader);
    /// The audio that the next `read` brings was recorded for somebody else and is dropped. Any thread.
    void beginAnew() { anew_.store(true); }

private:
    std::vector<std::unique_ptr<AudioSourceProxy>> audio_;
    std::vector<std::unique_ptr<LevelSourceProxy>> levels_;
    std::vector<std::unique_ptr<SpectrumSourceProxy>> spectra_;
    std::vector<std::unique_ptr<CombinedLevelSource>> combined_;
    std::atomic<bool> anew_{false};
};

}  // namespace vanta
