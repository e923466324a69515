#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "audiofile/alac/alac_file.hpp"
#include "audiofile/audio_file_reader.hpp"
#include "audiofile/encoding.hpp"
#include "audiofile/file_format.hpp"
#include "foundation/audio_stream.hpp"

namespace vanta {

/// A sample beyond full scale, met by a writer that was told not to clip.
class BeyondFullScale {};

/// A float sample as an integer of `bits` bits in the upper bits of the result, rounded to the nearest. A
/// sample that lies on the grid of these bits, as the dither leaves it, is represented exactly; full scale
/// itself becomes the largest integer.
std::int32_t quantised(float sample, int bits);

/// Writes float samples, in the order of a layout, into an audio file.
class AudioFileWriter final : public AudioWriter {
public:
    enum class Limit { Refuse, Clip };  ///< a sample that the file cannot hold: BeyondFullScale, or cut

    struct Target {
        std::filesystem::path file;  ///< created
        std::string name;            ///< the file's name in messages
        int format;                  ///< libsndfile's
        int sampleRate;
        std::vector<int> fileChannel;  ///< of each channel of the layout
        std::vector<int> speakers;     ///< to be declared, in libsndfile's numbers; empty: none
        Limit limit;
        Encoding encoding = {};
        /// The channel mask of a WAV, RF64 or Wave64, if it is to be other than that of the speakers.
        std::optional<std::uint32_t> mask = std::nullopt;
    };

    /// Failure if the file cannot be created.
    explicit AudioFileWriter(const Target& target);

    /// After `finish`: false if the file's type has no place for the positions that were to be declared.
    bool positionsDeclared() const { return declared_; }
    /// Samples that were cut at full scale.
    std::int64_t clipped() const { return clipped_; }

    void write(std::span<const float* const> channels, std::size_t frames) override;
    /// Closes the file. Failure unless all of it can be read back. Equal audio gives equal bytes.
    void finish();

private:
    void interleave(std::span<const float* const> channels, std::size_t frames);
    void openAlac();
    void openSoundFile();
    void writeAlac(sf_count_t frames);
    void closeEncoder();
    void quantise();
    void checkRange();
    void declareSpeakers();
    /// Failure unless all that was written can be read back.
    void checkLength() const;
    [[noreturn]] void fail(const std::string& reason) const;

    Target target_;
    const FileSubtype* subtype_;
    SoundFile file_;
    std::unique_ptr<AlacFile> alac_;  ///< in place of the above
    bool declared_ = true;
    std::int64_t clipped_ = 0;
    sf_count_t written_ = 0;
    std::vector<float> interleaved_;
    std::vector<int> integers_;
};

}  // namespace vanta
