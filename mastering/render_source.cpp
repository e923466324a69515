#include "mastering/render_source.hpp"

#include <fmt/format.h>

#include "foundation/failure.hpp"

namespace vanta {

RenderSource::RenderSource(const std::filesystem::path& input, const std::filesystem::path& sideChain,
                           std::optional<ChannelLayout> layout)
    : input_(input) {
    mapping_ = input_.mapTo(layout, warnings_);
    frames_ = input_.info().frames;
    if (!sideChain.empty()) openSideChain(sideChain);
}

void RenderSource::rewind() {
    input_.rewind();
    if (sideChain_) sideChain_->rewind();
    if (convertedInput_) convertedInput_->restart();
    if (convertedSideChain_) convertedSideChain_->restart();
}

void RenderSource::rest() {
    input_.rest();
    if (sideChain_) sideChain_->rest();
}

AudioReader& RenderSource::audio() {
    if (convertedInput_) return *convertedInput_;
    return input_;
}

AudioReader* RenderSource::sideChain() {
    if (convertedSideChain_) return &*convertedSideChain_;
    return sideChain_ ? &*sideChain_ : nullptr;
}

void RenderSource::convertTo(int rate) {
    if (rate == sampleRate()) return;
    const double from = sampleRate();
    const double to = rate;
    convertedInput_.emplace(input_, input_.info().frames, from, to);
    if (sideChain_) convertedSideChain_.emplace(*sideChain_, sideChain_->info().frames, from, to);
    frames_ = ResampledReader::framesAt(input_.info().frames, from, to);
}

void RenderSource::openSideChain(const std::filesystem::path& path) {
    sideChain_.emplace(path);
    const SF_INFO& side = sideChain_->info();
    const SF_INFO& main = input_.info();
    const auto refuse = [&](std::int64_t its, std::string_view unit, std::string_view bound,
                            std::int64_t wanted) {
        throw Failure(fmt::format("{}: has {} {}, but as the side chain of {} it needs {}{} {}",
                                  path.string(), its, unit, input_.path().string(), bound, wanted, unit));
    };
    if (side.samplerate != main.samplerate) refuse(side.samplerate, "Hz", "", main.samplerate);
    if (side.frames != main.frames) refuse(side.frames, "frames", "", main.frames);
    if (side.channels > main.channels) refuse(side.channels, "channels", "at most ", main.channels);
    const bool same = side.channels == main.channels;
    sideChain_->mapTo(same ? std::optional(mapping_.layout) : std::nullopt, warnings_);
}

}  // namespace vanta
