#include "dsp/saturator/function_table.hpp"

#include <algorithm>

namespace vanta {

FunctionTable::FunctionTable(const FunctionTableFunction& function) {
    for (int i = 0; i < kPoints; ++i) {
        values_.push_back(static_cast<float>(function(static_cast<double>(i) / (kPoints - 1))));
    }
    values_.push_back(values_.back());
}

float FunctionTable::lookUp(float place) const {
    constexpr float kSteps = kPoints - 1;
    const float position = std::clamp(place * kSteps, 0.0f, kSteps);
    const auto point = static_cast<std::size_t>(position);
    const float low = values_[point];
    return low + (position - static_cast<float>(point)) * (values_[point + 1] - low);
}

}  // namespace vanta
