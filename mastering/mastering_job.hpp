#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <vector>

#include "audiofile/format_choice.hpp"
#include "foundation/progress.hpp"
#include "host/offline/limiter_settings.hpp"
#include "host/offline/render.hpp"
#include "limiter/styles/style_patch.hpp"

namespace vanta {

/// What written files are to reach.
struct RenderGoals {
    std::optional<double> loudnessLufs;   ///< integrated
    bool album = false;                   ///< one Gain for all files, measured together; else one for each
    std::optional<double> maxTruePeakDb;  ///< dBTP, of each file
    /// A preset or a state set the Gain that a loudness now finds anew, and reports should say so.
    bool replacesGain = false;

    bool any() const { return loudnessLufs || maxTruePeakDb; }
};

/// How files are rendered.
struct RenderOptions {
    std::filesystem::path sideChain;      ///< empty: none
    std::optional<StylePatch> patch;      ///< in place of the style that is set
    std::optional<ChannelLayout> layout;  ///< where files leave it open
    FormatWish format;
    bool dither = true;         ///< where the word length is reduced to 16 bits, unless the settings dither
    bool keepsMetadata = true;  ///< tags, pictures and chunks of the input
    enum class ReplayGain { None, Track, Album } replayGain = ReplayGain::None;  ///< to be written
    int blockSamples = kUsualBlock;
    double tailSeconds = 0.0;
    std::uint32_t ditherSeed = 1;
    bool replace = false;                         ///< outputs that exist
    bool makeFolders = false;                     ///< that outputs go to
    std::size_t threads = 1;                      ///< on which files are rendered side by side
    bool measure = true;                          ///< inputs and outputs, also where no goal asks for it
    std::vector<std::filesystem::path> alsoRead;  ///< further files that no output may replace
    WorkWatcher watcher;                          ///< of every render and measurement; may be empty
    /// Renders a stream in place of `render`; may be empty.
    std::function<RenderResult(const RenderJob&)> renderer;
};

/// What files that are mastered together have in common. A goal renders them with a Gain of its own in
/// place of the setting, and with an Output Level that is the setting's or lower.
struct MasteringJob {
    const LimiterSettings& settings;
    RenderOptions options;
    RenderGoals goals;

    bool measures() const {
        return options.measure || goals.any() || options.replayGain != RenderOptions::ReplayGain::None;
    }
    /// Whether files are put in place only when all are rendered.
    bool takesAllTogether() const {
        return goals.album || options.replayGain == RenderOptions::ReplayGain::Album;
    }
    /// What the style in use is called.
    std::string styleName() const;
};

}  // namespace vanta
