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
struct ResampledReader::Converter {
    Converter(AudioReader& from, double fromRate, double toRate)
        : source(from), samples(static_cast<std::size_t>(from.channelCount()) * kPiece) {
        const soxr_io_spec_t io = soxr_io_spec(SOXR_FLOAT32_S, SOXR_FLOAT32_S);
        const soxr_quality_spec_t quality = soxr_quality_spec(SOXR_VHQ, 0);
        const soxr_runtime_spec_t runtime = soxr_runtime_spec(1);
        soxr_error_t error = nullptr;
        const auto width = static_cast<unsigned>(from.channelCount());
        handle = soxr_create(fromRate, toRate, width, &error, &io, &quality, &runtime);
        if (!handle)
            throw Failure(fmt::format("cannot be converted from {} to {} Hz: {}", fromRate, toRate, error));
        for (std::size_t c = 0; c < width; ++c) pointers.push_back(samples.data() + c * kPiece);
        soxr_set_input_fn(handle, &Converter::supply, this, kPiece);
    }
    ~Converter() { soxr_delete(handle); }
    Converter(const Converter&) = delete;
    Converter& operator=(const Converter&) = delete;

    static std::size_t supply(void* self, soxr_in_t* data, std::size_t wanted) {
        auto& its = *static_cast<Converter*>(self);
        *data = its.pointers.data();
        try {
            if (its.ended || its.failure) return 0;
            const std::size_t got = its.source.read(its.pointers, std::min(wanted, kPiece));
            its.ended = got < std::min(wanted, kPiece);
            for (float* const channel : its.pointers) its.silenceOthers(std::span(channel, got));
            return got;
        } catch (...) {
            its.failure = std::current_exception();
            return 0;
        }
    }

    /// A filter would spread what is not a number over all that follows.
    void silenceOthers(std::span<float> channel) {
        for (float& sample : channel) {
            if (std::isfinite(sample)) continue;
            sample = 0.0f;
            ++notFinite;
        }
    }

    AudioReader& source;
    std::vector<float> samples;
    std::vector<float*> pointers;
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
    const std::size_t wanted =
        static_cast<std::size_t>(std::min<std::int64_t>(left_, static_cast<std::int64_t>(frames)));
    std::size_t done = 0;
    std::vector<float*> to(channels.begin(), channels.end());
    while (done < wanted) {
        const std::size_t got = soxr_output(converter_->handle, to.data(), wanted - done);
        if (converter_->failure) std::rethrow_exception(converter_->failure);
        if (const char* error = soxr_error(converter_->handle)) throw Failure(error);
        if (got == 0) break;
        for (float*& channel : to) channel += got;
        done += got;
    }
    // The length is promised; what the filter leaves open at the very end is silence.
    for (float* channel : to) std::fill(channel, channel + (wanted - done), 0.0f);
    left_ -= static_cast<std::int64_t>(wanted);
    return wanted;
}

}  // namespace vanta
