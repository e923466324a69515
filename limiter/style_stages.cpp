#include "limiter/style_stages.hpp"

#include <vector>

#include "limiter/styles/engine_layout.hpp"
#include "limiter/styles/style_record.hpp"
#include "limiter/styles/style_resources.hpp"

namespace vanta {
namespace {

StageCounts stagesOf(const Resource& style) {
    const std::vector<float> values = readStyleRecord(style.bytes);
    const auto count = [&](int position) {
        return static_cast<int>(values[static_cast<std::size_t>(position)]);
    };
    return {count(kLookAheadStagesPosition), count(kOutputConvolversPosition),
            count(kOutputSmartClippersPosition)};
}

std::vector<StageCounts> stagesOfAll() {
    std::vector<StageCounts> all;
    for (const Resource& style : styleResources()) all.push_back(stagesOf(style));
    return all;
}

}  // namespace

StageCounts styleStages(VantaParameters::LimitingStyle style) {
    static const std::vector<StageCounts> stages = stagesOfAll();
    return stages[static_cast<std::size_t>(style)];
}

}  // namespace vanta
