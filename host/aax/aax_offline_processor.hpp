#pragma once

#include <array>
#include <vector>

#include "foundation/channel_layout.hpp"
#include "host/aax/standin/aax.hpp"

namespace vanta {

class AaxPluginAdapter;

/// Renders a selection window by window, aligned with what it was made of: it reads ahead of each window as
/// far as the limiter's latency.
class AaxOfflineProcessor final : public AAX_CHostProcessor {
public:
    AAX_Result PreRender(std::int32_t inputs, std::int32_t outputs, std::int32_t windowSize) override;
    AAX_Result RenderAudio(float* const* inputs, std::int32_t inputCount, float* const* outputs,
                           std::int32_t outputCount, const std::int32_t* windowSize) override;
    AAX_Result PreAnalyze(std::int32_t inputs, std::int32_t windowSize) override;
    AAX_Result AnalyzeAudio(float* const* inputs, std::int32_t inputCount,
                            const std::int32_t* windowSize) override;

private:
    /// Buffers of a window, as the host hands them over.
    struct Window {
        float* const* inputs;
        std::int32_t inputCount;
        float* const* outputs;
        std::int32_t outputCount;
        std::int32_t samples;
    };

    AaxPluginAdapter& adapter() const;
    AAX_Result begin(std::int32_t windowSize);
    void prime(const Window& window, std::int32_t latency) const;
    void readAhead(const Window& window, std::int64_t location) const;
    void process(const Window& window, std::int32_t samples) const;

    std::vector<float> scratch_;  ///< where an analysis renders to
    double tempo_ = 120.0;        ///< beats per minute
};

}  // namespace vanta
