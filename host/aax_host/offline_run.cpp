#include "host/aax_host/offline_run.hpp"

#include <memory>
#include <vector>

namespace vanta {
namespace {

/// Channels of a window's length.
struct Buffers {
    Buffers(int channels, std::int32_t samples)
        : data(static_cast<std::size_t>(channels), std::vector<float>(static_cast<std::size_t>(samples))) {
        for (auto& channel : data) pointers.push_back(channel.data());
    }
    std::vector<std::vector<float>> data;
    std::vector<float*> pointers;
};

}  // namespace

AAX_Result runOffline(const OfflineRun& run) {
    const AaxEffect& effect = run.instance.component().effect;
    if (!effect.newHostProcessor) return AAX_ERROR_UNIMPLEMENTED;
    const std::unique_ptr<AAX_IHostProcessor> processor(effect.newHostProcessor());
    if (!processor) return AAX_ERROR_NULL_OBJECT;
    const std::int32_t inputs = AAX_StemChannelCount(run.instance.component().inputStem());
    const std::int32_t outputs = AAX_StemChannelCount(run.instance.component().outputStem());
    Buffers in(inputs, run.windowSize);
    Buffers out(outputs, run.windowSize);
    AAX_Result result = processor->Initialize(&run.instance.parameters(), &run.selection);
    if (result == AAX_SUCCESS)
        result = run.analyzes ? processor->PreAnalyze(inputs, run.windowSize)
                              : processor->PreRender(inputs, outputs, run.windowSize);
    std::int64_t location = 0;
    while (result == AAX_SUCCESS) {
        const std::int32_t samples = run.next(location);
        if (samples <= 0) break;
        std::int32_t came = samples;
        result = processor->SetLocation(location);
        // The window itself, as hosts hand it over.
        if (result == AAX_SUCCESS)
            result = run.selection.GetAudio(in.pointers.data(), inputs, location, &came);
        if (result != AAX_SUCCESS) break;
        result = run.analyzes ? processor->AnalyzeAudio(in.pointers.data(), inputs, &samples)
                              : processor->RenderAudio(in.pointers.data(), inputs, out.pointers.data(),
                                                       outputs, &samples);
        const std::span<const float* const> made(out.pointers.data(), out.pointers.size());
        if (result == AAX_SUCCESS && !run.take(made, samples)) break;
        location += samples;
    }
    return result;
}

}  // namespace vanta
