#include "audiofile/audio_file_reader.hpp"

#include <fcntl.h>
#include <fmt/format.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <numeric>

#include "audiofile/cut_off.hpp"
#include "audiofile/speaker_mask.hpp"
#include "foundation/failure.hpp"

namespace vanta {

namespace {

Failure failure(const std::filesystem::path& path, std::string_view what) {
    return Failure(fmt::format("{}: {}", path.string(), what));
}

// A pipe would keep the open waiting, and cannot be read twice.
void requireRegularFile(const std::filesystem::path& path) {
    std::error_code error;
    const auto status = std::filesystem::status(path, error);
    if (status.type() == std::filesystem::file_type::not_found) throw failure(path, "no such file");
    if (error) throw failure(path, error.message());
    if (std::filesystem::is_directory(status)) throw failure(path, "is a folder, not a file");
    if (!std::filesystem::is_regular_file(status)) throw failure(path, "is not a regular file");
}

int openForReading(const std::filesystem::path& path) {
    requireRegularFile(path);
    const int descriptor = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (descriptor < 0) throw failure(path, fmt::format("cannot be read: {}", std::strerror(errno)));
    std::error_code error;
    if (std::filesystem::file_size(path, error) == 0) {
        ::close(descriptor);
        throw failure(path, "is empty");
    }
    return descriptor;
}

}  // namespace

AudioFileReader::AudioFileReader(const std::filesystem::path& path) : path_(path) {
    file_.reset(sf_open_fd(openForReading(path_), SFM_READ, &info_, SF_TRUE));
    if (isCutOff(path_)) throw failure(path_, "is cut off: it holds less audio than its header announces");
    if (!file_) throw failure(path_, "is not a readable audio file, or is damaged");
    if (info_.frames == SF_COUNT_MAX) throw failure(path_, "is cut off: its end is missing");
    if (info_.frames <= 0) throw failure(path_, "contains no audio");
    if (!info_.seekable) throw failure(path_, "is not seekable: convert it to another file type first");
    if (info_.samplerate < kLowestSampleRate || info_.samplerate > kHighestSampleRate) {
        throw failure(path_, fmt::format("has a sample rate of {} Hz: rates from {} to {} Hz are supported",
                                         info_.samplerate, kLowestSampleRate, kHighestSampleRate));
    }
    positions_ = statedPositions();
    fileChannel_.resize(static_cast<std::size_t>(info_.channels));
    std::iota(fileChannel_.begin(), fileChannel_.end(), 0);
}

std::vector<int> AudioFileReader::statedPositions() const {
    std::vector<int> speakers(static_cast<std::size_t>(info_.channels));
    const auto bytes = static_cast<int>(speakers.size() * sizeof(int));
    if (sf_command(file_.get(), SFC_GET_CHANNEL_MAP_INFO, speakers.data(), bytes) == SF_TRUE) return speakers;
    // What libsndfile does not read. One or two channels need no names.
    const auto mask = speakers.size() > 2 ? statedMask(path_) : std::nullopt;
    std::vector<int> stated = speakersOf(mask.value_or(0));
    if (stated.size() != speakers.size()) stated.clear();
    return stated;
}

SpeakerOrder AudioFileReader::usualOrder() const {
    const FileType* type = fileTypeOf(info_.format);
    return type ? type->order : SpeakerOrder::Wave;
}

ChannelMapping AudioFileReader::mapTo(std::optional<ChannelLayout> layout,
                                      std::vector<std::string>& warnings) {
    try {
        ChannelMapping found = mapChannels(positions(), channelCount(), usualOrder(), layout);
        if (found.positionsIgnored) {
            const std::string_view name = channelLayoutName(found.layout);
            warnings.push_back(
                layout
                    ? fmt::format("{}: its speaker positions are not those of {}, which it is taken for",
                                  path_.string(), name)
                    : fmt::format("{}: its speaker positions match no layout; it is taken for {}, and they "
                                  "stay as they are; name the layout if that is wrong",
                                  path_.string(), name));
        }
        setMapping(found);
        return found;
    } catch (const Failure& cause) {
        throw failure(path_, cause.what());
    }
}

void AudioFileReader::seek(sf_count_t frame) {
    if (!file_) {
        SF_INFO info{};
        file_.reset(sf_open_fd(openForReading(path_), SFM_READ, &info, SF_TRUE));
        if (!file_ || info.frames != info_.frames || info.channels != info_.channels)
            throw failure(path_, "was changed by somebody else meanwhile");
    }
    if (sf_seek(file_.get(), frame, SEEK_SET) != frame)
        throw failure(path_, frame == 0 ? "is damaged: it cannot be read from its start again"
                                        : "is damaged: it cannot be read from its middle");
    delivered_ = frame;
}

std::size_t AudioFileReader::read(std::span<float* const> channels, std::size_t frames) {
    const auto width = static_cast<std::size_t>(info_.channels);
    interleaved_.resize(frames * width);
    const sf_count_t wanted = static_cast<sf_count_t>(frames);
    const sf_count_t got = std::max<sf_count_t>(sf_readf_float(file_.get(), interleaved_.data(), wanted), 0);
    delivered_ += got;
    if (got < wanted && delivered_ < info_.frames) {
        throw failure(path_, fmt::format("is cut off or damaged: only {} of its {} frames are readable",
                                         delivered_, info_.frames));
    }
    for (std::size_t c = 0; c < channels.size(); ++c) {
        const float* from = interleaved_.data() + fileChannel_[c];
        for (std::size_t i = 0; i < static_cast<std::size_t>(got); ++i) channels[c][i] = from[i * width];
    }
    return static_cast<std::size_t>(got);
}

}  // namespace vanta
