#include "audiofile/resampled_reader.hpp"

#include <fmt/format.h>
#include <soxr.h>

#include <algorithm>
#include <cmath>
#include <exception>

#include "foundation/failure.hpp"

namespace vanta {

namespace {

constexpr std::size_t kPiece = 4096;

}  // namespace

/// The library with the buffers that it reads from. It calls back from C, which no exception may pass.
/// Samples go through it interleaved: with a buffer for each channel, version 0.1.3 writes beyond them.
struct ResampledReader::Converter {
    Converter(AudioReader& from, double fromRate, double toRate)
        : source(from),
          width(static_cast<std::size_t>(from.channelCount())),
          planar(width * kPiece),
          interleaved(width * kPiece) {
        for (std::size_t c = 0; c < width; ++c) channels.push_back(planar.data() + c * kPiece);
        const soxr_io_spec_t io = soxr_io_spec(SOXR_FLOAT32_I, SOXR_FLOAT32_I);
        const soxr_quality_spec_t quality = soxr_quality_spec(SOXR_VHQ, SOXR_ROLLOFF_NONE);
        const soxr_runtime_spec_t runtime = soxr_runtime_spec(1);
        soxr_error_t error = nullptr;
        handle = soxr_create(fromRate, toRate, static_cast<unsigned>(width), &error, &io, &quality, &runtime);
        if (!handle)
            throw Failure(fmt::format("cannot be converted from {} to {} Hz: {}", fromRate, toRate, error));
        soxr_set_input_fn(handle, &Converter::supply, this, kPiece);
    }
    ~Converter() { soxr_delete(handle); }
    Converter(const Converter&) = delete;
    Converter& operator=(const Converter&) = delete;

    static std::size_t supply(void* self, soxr_in_t* data, std::size_t wanted) {
        auto& its = *static_cast<Converter*>(self);
        *data = its.interleaved.data();
        try {
            return its.failure ? 0 : its.fetch(std::min(wanted, kPiece));
        } catch (...) {
            its.failure = std::current_exception();
            return 0;
        }
    }

    std::size_t fetch(std::size_t wanted) {
        if (ended) return 0;
        const std::size_t got = source.read(channels, wanted);
        ended = got < wanted;
        for (std::size_t c = 0; c < width; ++c) {
            for (std::size_t i = 0; i < got; ++i) interleaved[i * width + c] = number(channels[c][i]);
        }
        return got;
    }

    /// A filter would spread what is not a number over all that follows.
    float number(float sample) {
        if (std::isfinite(sample)) return sample;
        ++notFinite;
        return 0.0f;
    }

    AudioReader& source;
    std::size_t width;
    std::vector<float> planar;
    std::vector<float*> channels;
    std::vector<float> interleaved;
    soxr_t handle = nullptr;
    bool ended = false;
    std::int64_t notFinite = 0;
    std::exception_ptr failure;
};

ResampledReader::ResampledReader(AudioReader& source, std::int64_t frames, double fromRate, double toRate)
    : source_(source), sourceFrames_(frames), fromRate_(fromRate), toRate_(toRate) {
    restart();
}

ResampledReader::~ResampledReader() = default;

std::int64_t ResampledReader::framesAt(std::int64_t frames, double fromRate, double toRate) {
    return std::max<std::int64_t>(std::llround(static_cast<double>(frames) * toRate / fromRate), 1);
}

void ResampledReader::restart() {
    converter_.reset();
    converter_ = std::make_unique<Converter>(source_, fromRate_, toRate_);
    left_ = framesAt(sourceFrames_, fromRate_, toRate_);
}

std::int64_t ResampledReader::notFinite() const {
    return converter_->notFinite;
}

std::size_t ResampledReader::read(std::span<float* const> channels, std::size_t frames) {
    const auto wanted = static_cast<std::size_t>(std::min(left_, static_cast<std::int64_t>(frames)));
    const std::size_t width = channels.size();
    // The length is promised; what the filter leaves open at the very end is silence.
    result_.assign(wanted * width, 0.0f);
    for (std::size_t done = 0; done < wanted;) {
        const std::size_t got = soxr_output(converter_->handle, result_.data() + done * width, wanted - done);
        if (converter_->failure) std::rethrow_exception(converter_->failure);
        if (const char* error = soxr_error(converter_->handle)) throw Failure(error);
        if (got == 0) break;
        done += got;
    }
    for (std::size_t c = 0; c < width; ++c) {
        for (std::size_t i = 0; i < wanted; ++i) channels[c][i] = result_[i * width + c];
    }
    left_ -= static_cast<std::int64_t>(wanted);
    return wanted;
}

}  // namespace vanta
