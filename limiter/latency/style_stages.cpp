#include "limiter/latency/style_stages.hpp"

#include <vector>

#include "limiter/resources/style_resources.hpp"
#include "limiter/styles/engine_layout.hpp"
#include "limiter/styles/style_record.hpp"
#include "limiter/styles/style_values.hpp"

namespace vanta {
namespace {

StageCounts stagesOf(const Resource& style) {
    const std::vector<float> record = readStyleRecord(style.bytes);
    const StyleValues values(record);
    return {values.integerAt(kLookAheadStagesPosition), values.integerAt(kOutputConvolversPosition),
            values.integerAt(kOutputSmartClippersPosition)};
}

std::vector<StageCounts> stagesOfAll() {
    std::vector<StageCounts> all;
    for (const Resource& style : styleResources()) all.push_back(stagesOf(style));
    return all;
}

}  // namespace

StageCounts styleStages(LimitingStyle style) {
    static const std::vector<StageCounts> stages = stagesOfAll();
    return stages[static_cast<std::size_t>(style)];
}

}  // namespace vanta
