#include "app/audio_file_writer.hpp"

#include <fcntl.h>
#include <fmt/format.h>

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstring>

#include "app/failure.hpp"

namespace vanta {

namespace {

SF_INFO infoOf(const AudioFileWriter::Target& target) {
    SF_INFO info{};
    info.format = target.format;
    info.samplerate = target.sampleRate;
    info.channels = static_cast<int>(target.fileChannel.size());
    return info;
}

/// What libsndfile tells of an error, without the words that lead up to the system's own.
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

AudioFileWriter::AudioFileWriter(const Target& wanted)
    : target(wanted), subtype(fileSubtypeOf(wanted.format)) {
    const int descriptor = ::open(target.file.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    if (descriptor < 0) fail(std::strerror(errno));
    SF_INFO info = infoOf(target);
    file.reset(sf_open_fd(descriptor, SFM_WRITE, &info, SF_TRUE));
    if (!file) fail(reasonOf(nullptr));
    sf_command(file.get(), SFC_SET_CLIPPING, nullptr, SF_TRUE);
    if (!target.speakers.empty()) {
        const auto bytes = static_cast<int>(target.speakers.size() * sizeof(int));
        declared = sf_command(file.get(), SFC_SET_CHANNEL_MAP_INFO, target.speakers.data(), bytes) == SF_TRUE;
    }
}

void AudioFileWriter::write(std::span<const float* const> channels, std::size_t frames) {
    interleave(channels, frames);
    if (subtype->isLimited()) checkRange();
    const auto count = static_cast<sf_count_t>(frames);
    sf_count_t taken = 0;
    if (subtype->kind == FileSubtype::Integer) {
        integers.resize(interleaved.size());
        std::ranges::transform(interleaved, integers.begin(),
                               [this](float sample) { return quantised(sample, subtype->bits); });
        taken = sf_writef_int(file.get(), integers.data(), count);
    } else {
        taken = sf_writef_float(file.get(), interleaved.data(), count);
    }
    if (taken != count || sf_error(file.get()) != SF_ERR_NO_ERROR) fail(reasonOf(file.get()));
    written += count;
}

void AudioFileWriter::interleave(std::span<const float* const> channels, std::size_t frames) {
    const std::size_t width = channels.size();
    interleaved.resize(frames * width);
    for (std::size_t c = 0; c < width; ++c) {
        float* to = interleaved.data() + target.fileChannel[c];
        for (std::size_t i = 0; i < frames; ++i) to[i * width] = channels[c][i];
    }
}

void AudioFileWriter::checkRange() {
    const auto beyond = std::ranges::count_if(interleaved, [](float s) { return !(std::abs(s) <= 1.0f); });
    if (beyond > 0 && target.limit == Limit::Refuse) throw BeyondFullScale();
    clipped_ += beyond;
}

void AudioFileWriter::finish() {
    sf_write_sync(file.get());
    const bool failed = sf_error(file.get()) != SF_ERR_NO_ERROR;
    const std::string reason = reasonOf(file.get());
    const bool closed = sf_close(file.release()) == 0;
    if (failed) fail(reason);
    if (!closed) fail("closing it failed");
    // Some encoders write their last part on closing and keep quiet when that fails.
    SF_INFO info{};
    const SoundFile again(sf_open(target.file.c_str(), SFM_READ, &info));
    if (!again || info.frames != written) fail("not all of it reached the disk");
}

void AudioFileWriter::fail(const std::string& reason) const {
    throw Failure(fmt::format("{}: cannot be written: {}", target.name, reason));
}

}  // namespace vanta
