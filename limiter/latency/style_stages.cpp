#include "limiter/latency/style_stages.hpp"

#include <vector>

#include "limiter/resources/style_resources.hpp"
#include "limiter/styles/engine_layout.hpp"
#include "limiter/styles/style_record.hpp"

namespace vanta {
namespace {

std::vector<StageCounts> stagesOfAll() {
    std::vector<StageCounts> all;
    for (const Resource& style : styleResources()) all.push_back(stagesOf(readStyleRecord(style.bytes)));
    return all;
}

}  // namespace

StageCounts stagesOf(StyleValues values) {
    return {values.integerAt(kLookAheadStagesPosition), values.integerAt(kOutputConvolversPosition),
            values.integerAt(kOutputSmartClippersPosition)};
}

StageCounts styleStages(LimitingStyle style) {
    static const std::vector<StageCounts> stages = stagesOfAll();
    return stages[static_cast<std::size_t>(style)];
}

}  // namespace vanta
