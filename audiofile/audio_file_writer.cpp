#include "audiofile/audio_file_writer.hpp"

#include <fcntl.h>
#include <fmt/format.h>

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstring>

#include "audiofile/channel_mapping.hpp"
#include "audiofile/chunks/ogg_serial.hpp"
#include "audiofile/speaker_mask.hpp"
#include "foundation/failure.hpp"

namespace vanta {

namespace {

SF_INFO infoOf(const AudioFileWriter::Target& target) {
    SF_INFO info{};
    info.format = target.format;
    info.samplerate = target.sampleRate;
    info.channels = static_cast<int>(target.fileChannel.size());
    return info;
}

/// libsndfile's description of an error, without the words in front of the system's own.
std::string reasonOf(SNDFILE* file) {
    std::string text = sf_strerror(file);
    constexpr std::string_view kLead = "System error : ";
    if (text.starts_with(kLead)) text.erase(0, kLead.size());
    while (!text.empty() && (text.back() == '.' || text.back() == ' ')) text.pop_back();
    return text;
}

}  // namespace

std::int32_t quantised(float sample, int bits) {
    const double scale = std::ldexp(1.0, bits - 1);
    const double rounded = std::floor(static_cast<double>(sample) * scale + 0.5);
    const auto value = static_cast<std::int64_t>(std::clamp(rounded, -scale, scale - 1.0));
    return static_cast<std::int32_t>(value * (std::int64_t{1} << (32 - bits)));
}

AudioFileWriter::AudioFileWriter(const Target& target)
    : target_(target), subtype_(fileSubtypeOf(target.format)) {
    isOwnAlac(target_.format) ? openAlac() : openSoundFile();
}

void AudioFileWriter::openSoundFile() {
    const int descriptor = ::open(target_.file.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    if (descriptor < 0) fail(std::strerror(errno));
    SF_INFO info = infoOf(target_);
    file_.reset(sf_open_fd(descriptor, SFM_WRITE, &info, SF_TRUE));
    if (!file_) fail(reasonOf(nullptr));
    sf_command(file_.get(), SFC_SET_CLIPPING, nullptr, SF_TRUE);
    // It would bear the time of day.
    sf_command(file_.get(), SFC_SET_ADD_PEAK_CHUNK, nullptr, SF_FALSE);
    applyEncoding(file_.get(), info, target_.encoding);
    if (!target_.speakers.empty()) {
        const auto bytes = static_cast<int>(target_.speakers.size() * sizeof(int));
        declared_ =
            sf_command(file_.get(), SFC_SET_CHANNEL_MAP_INFO, target_.speakers.data(), bytes) == SF_TRUE;
    }
}

void AudioFileWriter::write(std::span<const float* const> channels, std::size_t frames) {
    interleave(channels, frames);
    if (subtype_->isLimited()) checkRange();
    const auto count = static_cast<sf_count_t>(frames);
    sf_count_t taken = 0;
    if (alac_) return writeAlac(count);
    if (subtype_->kind == FileSubtype::Integer) {
        quantise();
        taken = sf_writef_int(file_.get(), integers_.data(), count);
    } else {
        taken = sf_writef_float(file_.get(), interleaved_.data(), count);
    }
    if (taken != count || sf_error(file_.get()) != SF_ERR_NO_ERROR) fail(reasonOf(file_.get()));
    written_ += count;
}

void AudioFileWriter::interleave(std::span<const float* const> channels, std::size_t frames) {
    const std::size_t width = channels.size();
    interleaved_.resize(frames * width);
    for (std::size_t c = 0; c < width; ++c) {
        float* to = interleaved_.data() + target_.fileChannel[c];
        for (std::size_t i = 0; i < frames; ++i) to[i * width] = channels[c][i];
    }
}

void AudioFileWriter::checkRange() {
    const auto beyond = std::ranges::count_if(interleaved_, [](float s) { return !(std::abs(s) <= 1.0f); });
    if (beyond > 0 && target_.limit == Limit::Refuse) throw BeyondFullScale();
    clipped_ += beyond;
}

void AudioFileWriter::openAlac() try {
    alac_ = std::make_unique<AlacFile>(target_.file, target_.sampleRate,
                                       static_cast<int>(target_.fileChannel.size()), subtype_->bits);
} catch (const Failure& failure) {
    fail(failure.what());
}

void AudioFileWriter::writeAlac(sf_count_t frames) try {
    quantise();
    alac_->write(integers_);
    written_ += frames;
} catch (const Failure& failure) {
    fail(failure.what());
}

void AudioFileWriter::quantise() {
    integers_.resize(interleaved_.size());
    std::ranges::transform(interleaved_, integers_.begin(),
                           [this](float sample) { return quantised(sample, subtype_->bits); });
}

void AudioFileWriter::finish() {
    closeEncoder();
    // Some encoders write their last part on closing and keep quiet when that fails.
    checkLength();
    try {
        if ((target_.format & SF_FORMAT_TYPEMASK) == SF_FORMAT_OGG) fixOggSerial(target_.file);
        declareSpeakers();
    } catch (const Failure& failure) {
        fail(failure.what());
    }
    checkLength();
}

void AudioFileWriter::closeEncoder() {
    if (alac_) {
        try {
            return alac_->finish();
        } catch (const Failure& failure) {
            fail(failure.what());
        }
    }
    sf_write_sync(file_.get());
    const bool failed = sf_error(file_.get()) != SF_ERR_NO_ERROR;
    const std::string reason = reasonOf(file_.get());
    const bool closed = sf_close(file_.release()) == 0;
    if (failed) fail(reason);
    if (!closed) fail("closing it failed");
}

void AudioFileWriter::checkLength() const {
    SF_INFO info{};
    const SoundFile again(sf_open(target_.file.c_str(), SFM_READ, &info));
    if (!again || info.frames != written_) fail("part of it did not reach the disk");
}

/// Where libsndfile knows no place for them.
void AudioFileWriter::declareSpeakers() {
    if (target_.mask) stateMask(target_.file, *target_.mask);
    if (declared_ || target_.speakers.empty()) return;
    const FileType& type = *fileTypeOf(target_.format);
    declared_ = type.orderIsFixed && isUsualOrder(target_.speakers, type.order);
    const auto mask = maskOf(target_.speakers);
    if (!declared_ && mask) declared_ = stateMask(target_.file, *mask);
}

void AudioFileWriter::fail(const std::string& reason) const {
    throw Failure(fmt::format("{}: cannot be written: {}", target_.name, reason));
}

}  // namespace vanta
