#include "app/render_source.hpp"

#include <fmt/format.h>

#include "app/failure.hpp"

namespace vanta {

RenderSource::RenderSource(const std::filesystem::path& inputPath, const std::filesystem::path& sideChainPath,
                           std::optional<ChannelLayout> layout)
    : input_(inputPath) {
    checkRate();
    mapping_ = input_.mapTo(layout, warnings_);
    if (!sideChainPath.empty()) openSideChain(sideChainPath);
}

void RenderSource::rewind() {
    input_.rewind();
    if (sideChain_) sideChain_->rewind();
}

void RenderSource::checkRate() const {
    if (sampleRate() >= kLowestSampleRate && sampleRate() <= kHighestSampleRate) return;
    throw Failure(
        fmt::format("{}: its sample rate of {} Hz is out of range: the limiter runs at 8000 to "
                    "384000 Hz",
                    input_.path().string(), sampleRate()));
}

void RenderSource::openSideChain(const std::filesystem::path& path) {
    sideChain_.emplace(path);
    const SF_INFO& side = sideChain_->info();
    const SF_INFO& main = input_.info();
    const auto differs = [&](std::string_view what, std::int64_t its, std::int64_t mains) {
        throw Failure(fmt::format("{}: a side chain of {} {} does not go with {}, which has {}",
                                  path.string(), its, what, input_.path().string(), mains));
    };
    if (side.samplerate != main.samplerate) differs("Hz", side.samplerate, main.samplerate);
    if (side.frames != main.frames) differs("frames", side.frames, main.frames);
    if (side.channels > main.channels) differs("channels", side.channels, main.channels);
    const bool same = side.channels == main.channels;
    sideChain_->mapTo(same ? std::optional(mapping_.layout) : std::nullopt, warnings_);
}

}  // namespace vanta
