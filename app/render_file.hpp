#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "app/file_format.hpp"
#include "app/measurement.hpp"
#include "app/render_source.hpp"
#include "foundation/file_replacement.hpp"
#include "host/offline/limiter_settings.hpp"
#include "host/offline/render.hpp"

namespace vanta {

class AudioFileWriter;

/// How files are to be rendered.
struct RenderOptions {
    std::filesystem::path sideChain;  ///< empty: none
    std::optional<ChannelLayout> layout;
    FormatWish format;
    int blockSamples = kUsualBlock;
    double tailSeconds = 0.0;
    std::uint32_t ditherSeed = 1;
    bool replace = false;
    bool quiet = false;
    bool measure = true;                          ///< loudness and peaks of input and output
    std::vector<std::filesystem::path> alsoRead;  ///< further files that no output may replace
};

/// What became of one file.
struct FileReport {
    std::filesystem::path input;
    std::filesystem::path output;
    RenderResult result;
    std::string style;
    double gainDb = 0.0;
    double outputLevelDb = 0.0;
    int renders = 0;                    ///< until it was as wanted
    std::optional<Measurement> before;  ///< of the input
    std::optional<Measurement> after;   ///< of the file as it was written
    int sampleRate = 0;                 ///< Hz
    int format = 0;                     ///< libsndfile's, of the output
    std::vector<std::string> warnings;
};

/// One file on its way through the limiter: rendered and measured as often as it takes, put in place once.
/// Whatever is not put in place leaves nothing behind. Everything may throw Failure or Interrupted.
class FileRender {
public:
    /// Opens and checks what is read and written.
    FileRender(const std::filesystem::path& inputPath, const std::filesystem::path& outputPath,
               const LimiterSettings& limiterSettings, const RenderOptions& renderOptions);
    ~FileRender();

    /// Fills `report().before`, once.
    void measureInput();
    /// Renders with these settings of the limiter beside the place of the output, and measures what it wrote.
    void render(double gainDb, double outputLevelDb);
    /// Puts the last render in place.
    void commit();

    /// Complete after `commit`.
    const FileReport& report() const { return report_; }

private:
    std::int64_t tailSamples() const;
    void checkDestination() const;
    int formatBeyondFullScale(int format);
    void renderAs(int format, bool mayClip);
    RenderResult runLimiter(AudioFileWriter& writer);
    void noteWriter(const AudioFileWriter& writer);
    void noteSignal();
    void warn(std::string text) { report_.warnings.push_back(std::move(text)); }

    LimiterSettings settings;
    const RenderOptions& options;
    RenderSource source;
    StreamShape shape;  ///< of the output
    FileReport report_;
    std::unique_ptr<FileReplacement> replacement;  ///< holds the last render
};

/// One line that says what was done.
std::string summary(const FileReport& report, const LimiterSettings& settings);

}  // namespace vanta
