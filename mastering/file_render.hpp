#pragma once

#include <chrono>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "audiofile/metadata/replay_gain.hpp"
#include "foundation/file_replacement.hpp"
#include "mastering/mastering_job.hpp"
#include "mastering/render_source.hpp"
#include "measure/measurement.hpp"

namespace vanta {

class AudioFileWriter;

/// As tags tell it; nothing for what is too quiet or too short to measure.
std::optional<PlaybackLevel> playbackLevel(const ProgrammeFigures& figures);

/// From where to where a file is rendered.
struct Route {
    std::filesystem::path input;
    std::filesystem::path output;
};

/// A file as it was rendered last.
struct RenderedFile {
    Route route;
    std::unique_ptr<LimiterSettings> settings;  ///< that it was rendered with
    double inputTrimDb = 0.0;  ///< 0 or less: how far the input was turned down in front of the limiter
    RenderResult result;
    int renders = 0;                    ///< until it was as wanted
    double seconds = 0.0;               ///< that it all took, from opening to putting in place
    std::optional<Measurement> before;  ///< of the input
    std::optional<Measurement> after;   ///< of the file as it was written
    int sampleRate = 0;                 ///< Hz
    int format = 0;                     ///< libsndfile's, of the output
    bool ditherAdded = false;           ///< since the word length is reduced, not by the settings
    std::vector<std::string> warnings;
};

/// One file on its way through the limiter: rendered and measured as often as it takes, put in place once.
/// Whatever is not put in place leaves nothing behind. Everything may throw Failure or Stopped.
class FileRender {
public:
    /// Opens and checks what is read and written.
    FileRender(const Route& route, const MasteringJob& job);

    /// What the next render is made with, at first the settings of the job.
    LimiterSettings& settings() { return *file_.settings; }
    /// Drives the limiter by so many dB in the next render: by Gain, and below 0 dB by turning the input
    /// down.
    void setDrive(double db);
    /// Fills `rendered().before`, once.
    void measureInput();
    /// Renders into a file beside the output's place, and measures what it wrote if the job measures.
    void render();
    /// Puts the last render in place, with what the input says of itself. `album`: the level of all files
    /// together, if it is to be written.
    void commit(const std::optional<PlaybackLevel>& album = std::nullopt);

    /// libsndfile's, that the next render would be written in.
    int format() const { return chooseFormat(shape_, file_.route.output, job_.options.format); }
    const RenderedFile& rendered() const { return file_; }
    /// Gives the file away; the render is over.
    RenderedFile take() { return std::move(file_); }

private:
    using Clock = std::chrono::steady_clock;

    std::string name() const { return file_.route.output.string(); }
    std::int64_t tailSamples() const;
    int ditherBits() const;
    Work work(int pass) const;
    void checkDestination() const;
    void makeFolder() const;
    void chooseOutput();
    void chooseDither();
    bool needsFigures() const;
    void transferMetadata(const std::optional<PlaybackLevel>& album);
    int formatBeyondFullScale(int format);
    void renderAs(int format, bool mayClip);
    RenderResult runLimiter(AudioFileWriter& writer, const Progress& progress);
    void measureOutput();
    void noteWriter(const AudioFileWriter& writer);
    void noteSignal();
    void warn(std::string text) { file_.warnings.push_back(std::move(text)); }

    Clock::time_point start_ = Clock::now();
    const MasteringJob& job_;
    RenderSource source_;
    StreamShape shape_;  ///< of the output
    int format_ = 0;     ///< that it will have, unless it exceeds full scale
    RenderedFile file_;
    std::unique_ptr<FileReplacement> replacement_;  ///< holds the last render
};

}  // namespace vanta
