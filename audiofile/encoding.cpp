#include "audiofile/encoding.hpp"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <span>
#include <string_view>

#include "audiofile/file_format.hpp"
#include "foundation/failure.hpp"

namespace vanta {

namespace {

enum class Codec { None, Flac, Vorbis, Opus, Mp3 };

Codec codecOf(int format) {
    if ((format & SF_FORMAT_TYPEMASK) == SF_FORMAT_FLAC) return Codec::Flac;
    switch (format & SF_FORMAT_SUBMASK) {
        case SF_FORMAT_VORBIS:
            return Codec::Vorbis;
        case SF_FORMAT_OPUS:
            return Codec::Opus;
        case SF_FORMAT_MPEG_LAYER_III:
            return Codec::Mp3;
        default:
            return Codec::None;
    }
}

void requireWithin(std::string_view option, double value, double low, double high) {
    if (!(value >= low && value <= high))
        throw Failure(fmt::format("{} cannot be {}: use {} to {}", option, value, low, high));
}

constexpr double kOpusLowest = 6.0;
constexpr double kOpusSpan = 250.0;

/// Bit rates of MP3 (ISO/IEC 11172-3 and 13818-3, and the extension to low rates), without those so low that
/// a frame has no place for how long the file is.
struct Mp3Rates {
    std::span<const int> kbps;
    double lowest, highest;  ///< of the scale that libsndfile maps them to
};

Mp3Rates mp3Rates(int sampleRate) {
    static constexpr int kFull[] = {64, 80, 96, 112, 128, 160, 192, 224, 256, 320};
    static constexpr int kHalf[] = {64, 80, 96, 112, 128, 144, 160};
    static constexpr int kQuarter[] = {32, 40, 48, 56, 64};
    if (sampleRate >= 32000) return {kFull, 32.0, 320.0};
    if (sampleRate >= 16000) return {kHalf, 8.0, 160.0};
    return {kQuarter, 8.0, 64.0};
}

void checkMp3Bitrate(double kbps, int sampleRate) {
    const auto rates = mp3Rates(sampleRate).kbps;
    if (std::ranges::find(rates, kbps) == rates.end())
        throw Failure(fmt::format("--bitrate cannot be {} for mp3 at {} Hz: use {}", kbps, sampleRate,
                                  fmt::join(rates, ", ")));
}

/// What libsndfile calls compression: 0 for the largest file, 1 for the smallest.
double compression(const SF_INFO& info, const Encoding& encoding) {
    switch (codecOf(info.format)) {
        case Codec::Flac:
            return *encoding.quality / 8.0;
        case Codec::Vorbis:
            return 1.0 - *encoding.quality / 10.0;
        case Codec::Opus:
            return 1.0 - (*encoding.bitrateKbps / info.channels - kOpusLowest) / kOpusSpan;
        default:
            break;
    }
    if (!encoding.bitrateKbps) return encoding.quality.value_or(0.0) / 10.0;
    const Mp3Rates rates = mp3Rates(info.samplerate);
    return (rates.highest - *encoding.bitrateKbps) / (rates.highest - rates.lowest);
}

}  // namespace

void checkEncoding(const SF_INFO& info, const Encoding& encoding) {
    const Codec codec = codecOf(info.format);
    if (encoding.quality && encoding.bitrateKbps)
        throw Failure("--quality and --bitrate cannot be combined: choose one");
    if (encoding.quality) {
        if (codec == Codec::Opus) throw Failure("opus takes no --quality: use --bitrate");
        if (codec == Codec::None)
            throw Failure(fmt::format("{} has no --quality to choose", formatName(info.format)));
        requireWithin("--quality", *encoding.quality, 0.0,
                      codec == Codec::Flac  ? 8.0
                      : codec == Codec::Mp3 ? 9.0
                                            : 10.0);
    }
    if (encoding.bitrateKbps) {
        if (codec == Codec::Vorbis || codec == Codec::Flac)
            throw Failure(fmt::format("{} takes no --bitrate: use --quality", formatName(info.format)));
        if (codec == Codec::None)
            throw Failure(fmt::format("{} has no --bitrate to choose", formatName(info.format)));
        if (codec == Codec::Mp3) checkMp3Bitrate(*encoding.bitrateKbps, info.samplerate);
        if (codec == Codec::Opus)
            requireWithin("--bitrate", *encoding.bitrateKbps, kOpusLowest * info.channels,
                          (kOpusLowest + kOpusSpan) * info.channels);
    }
}

void applyEncoding(SNDFILE* file, const SF_INFO& info, const Encoding& encoding) {
    const bool isMp3 = codecOf(info.format) == Codec::Mp3;
    if (!encoding.quality && !encoding.bitrateKbps && !isMp3) return;
    if (isMp3) {
        int mode = encoding.bitrateKbps ? SF_BITRATE_MODE_CONSTANT : SF_BITRATE_MODE_VARIABLE;
        sf_command(file, SFC_SET_BITRATE_MODE, &mode, sizeof mode);
    }
    double level = compression(info, encoding);
    sf_command(file, SFC_SET_COMPRESSION_LEVEL, &level, sizeof level);
}

}  // namespace vanta
