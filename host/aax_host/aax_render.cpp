#include "host/aax_host/aax_render.hpp"

#include <fmt/format.h>

#include <algorithm>
#include <chrono>
#include <optional>

#include "foundation/failure.hpp"
#include "foundation/numbers.hpp"
#include "host/aax_host/aax_instance.hpp"
#include "host/aax_host/aax_selection.hpp"
#include "host/aax_host/offline_run.hpp"
#include "host/aax_host/stem_speakers.hpp"
#include "host/unified/host_position.hpp"

namespace vanta {
namespace {

class Render {
public:
    Render(const AaxModule& module, const RenderJob& job, bool offline)
        : module_(module), job_(job), hostChannel_(stemChannels(job.layout)) {
        const AaxComponent* const component = module.find(job.layout, offline);
        if (!component) fail(fmt::format("has no component for {}", channelLayoutName(job.layout)));
        instance_.emplace(*component, static_cast<float>(job.sampleRate));
        demand(instance_->initialize(), "does not start");
        for (int i = 0; i < job.settings.parameterCount(); ++i) {
            const AbstractPluginParameter& parameter = *job.settings.parameterAt(i);
            const std::string name = fmt::format("does not take {}", parameter.name());
            demand(instance_->setValue(std::to_string(i), hostPosition(parameter, parameter.value())), name);
        }
        instance_->idle();
        result_.latencySamples = instance_->latency();
    }

    RenderResult inBlocks() {
        const auto samples = static_cast<std::size_t>(job_.blockSamples);
        Buffers in(hostChannel_, samples);
        Buffers out(hostChannel_, samples);
        std::vector<float> side(job_.sideChain ? samples : 0);
        std::int64_t toDrop = result_.latencySamples;
        bool ended = false;
        while (!ended || result_.outputFrames < outputLength()) {
            if (!ended) {
                const std::size_t frames = read(job_.input, in.ofLayout, result_.input);
                result_.inputFrames += static_cast<std::int64_t>(frames);
                ended = frames < samples;
            } else {
                for (float* channel : in.ofLayout) std::fill_n(channel, samples, 0.0f);
            }
            if (job_.sideChain) {
                float* const key[] = {side.data()};
                read(*job_.sideChain, key, result_.sideChain);
            }
            instance_->render(
                {in.constHost(), job_.sideChain ? side.data() : nullptr, out.ofHost, job_.blockSamples, {}});
            noteMeter();
            const auto dropped = std::min<std::int64_t>(toDrop, job_.blockSamples);
            toDrop -= dropped;
            std::int64_t frames = job_.blockSamples - dropped;
            if (ended) frames = std::min(frames, outputLength() - result_.outputFrames);
            if (!write(out.ofLayout, dropped, frames)) return result_;
        }
        result_.complete = true;
        return result_;
    }

    RenderResult asSelection() {
        if (job_.sideChain) throw Failure("an offline render has no side chain: leave out --side-chain");
        AaxSelection selection(job_.input, job_.layout);
        bool stopped = false;
        OfflineRun run{.instance = *instance_, .selection = selection, .windowSize = job_.blockSamples};
        run.next = [&](std::int64_t location) {
            selection.forgetBefore(location);
            // Reads on to find out whether there is more.
            selection.readUntil(location + job_.blockSamples + 1);
            const std::int64_t end = selection.length() + (selection.hasEnded() ? job_.tailSamples : 0);
            return static_cast<std::int32_t>(std::min<std::int64_t>(job_.blockSamples, end - location));
        };
        run.take = [&](std::span<const float* const> outputs, std::int32_t samples) {
            std::vector<float*> ofLayout;
            for (const std::size_t at : hostChannel_) ofLayout.push_back(const_cast<float*>(outputs[at]));
            stopped = !write(ofLayout, 0, samples);
            return !stopped;
        };
        demand(runOffline(run), "ends the offline render");
        result_.input = selection.levels();
        result_.inputFrames = selection.length();
        result_.complete = !stopped;
        return result_;
    }

private:
    /// A block in the host's order, seen in that of the layout as well.
    struct Buffers {
        Buffers(const std::vector<std::size_t>& hostChannel, std::size_t samples)
            : data(hostChannel.size() * samples) {
            for (std::size_t i = 0; i < hostChannel.size(); ++i) {
                ofHost.push_back(data.data() + i * samples);
                ofLayout.push_back(data.data() + hostChannel[i] * samples);
            }
        }
        std::span<const float* const> constHost() const { return {ofHost.data(), ofHost.size()}; }
        std::vector<float> data;
        std::vector<float*> ofHost;
        std::vector<float*> ofLayout;
    };

    [[noreturn]] void fail(const std::string& what) const {
        throw Failure(fmt::format("{}: {}", module_.path().string(), what));
    }
    void demand(AAX_Result result, const std::string& what) const {
        if (result != AAX_SUCCESS) fail(fmt::format("{}: error {}", what, result));
    }
    std::int64_t outputLength() const { return result_.inputFrames + job_.tailSamples; }

    std::size_t read(AudioReader& reader, std::span<float* const> channels, StreamLevels& levels) const {
        const auto wanted = static_cast<std::size_t>(job_.blockSamples);
        const std::size_t frames = reader.read(channels, wanted);
        noteLevels({channels.data(), channels.size()}, frames, levels);
        for (float* channel : channels) std::fill(channel + frames, channel + wanted, 0.0f);
        return frames;
    }

    /// False if whoever waits wants no more.
    bool write(const std::vector<float*>& channels, std::int64_t from, std::int64_t frames) {
        if (frames > 0) {
            std::vector<const float*> block;
            for (const float* channel : channels) block.push_back(channel + from);
            noteLevels(block, static_cast<std::size_t>(frames), result_.output);
            job_.output.write(block, static_cast<std::size_t>(frames));
            result_.outputFrames += frames;
        }
        return !job_.progress || job_.progress(result_.outputFrames);
    }

    void noteMeter() {
        const auto gain = 1.0 - static_cast<double>(instance_->meter());
        result_.largestReductionDb = std::max(result_.largestReductionDb, -dbFromGain(gain));
    }

    const AaxModule& module_;
    const RenderJob& job_;
    const std::vector<std::size_t> hostChannel_;
    std::optional<AaxInstance> instance_;
    RenderResult result_;
};

}  // namespace

RenderResult renderByAax(const AaxModule& module, const RenderJob& job, bool offline) {
    const auto start = std::chrono::steady_clock::now();
    if (job.sideChain && job.sideChain->channelCount() != 1) {
        throw Failure(fmt::format("the side chain has {} channels: the host's has one, so use a mono file",
                                  job.sideChain->channelCount()));
    }
    Render render(module, job, offline);
    RenderResult result = offline ? render.asSelection() : render.inBlocks();
    result.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    return result;
}

}  // namespace vanta
