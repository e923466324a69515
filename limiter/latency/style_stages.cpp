#include "limiter/latency/style_stages.hpp"

#include <vector>

#include "limiter/styles/engine_layout.hpp"
#include "limiter/styles/name_list.hpp"
#include "limiter/styles/style_names.hpp"
#include "limiter/styles/style_record.hpp"
#include "limiter/styles/style_resources.hpp"
#include "limiter/styles/style_values.hpp"

namespace vanta {
namespace {

using LimitingStyle = VantaParameters::LimitingStyle;

constexpr bool isNamed(LimitingStyle style, std::string_view name) {
    return listPosition(kStyleNames, name) == static_cast<int>(style);
}
// The enumerators are positions in the list of styles.
static_assert(isNamed(LimitingStyle::Transparent, "Transparent"));
static_assert(isNamed(LimitingStyle::Punchy, "Punchy"));
static_assert(isNamed(LimitingStyle::Dynamic, "Dynamic"));
static_assert(isNamed(LimitingStyle::Allround, "Allround"));
static_assert(isNamed(LimitingStyle::Aggressive, "Aggressive"));
static_assert(isNamed(LimitingStyle::Modern, "Modern"));
static_assert(isNamed(LimitingStyle::Bus, "Bus"));
static_assert(isNamed(LimitingStyle::Safe, "Safe"));

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
