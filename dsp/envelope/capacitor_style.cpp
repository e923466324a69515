#include "dsp/envelope/capacitor_style.hpp"

#include <cmath>

namespace vanta {

double CapacitorStyle::ExpFunction::operator()(double x) const {
    return std::exp(x);
}

CapacitorStyle::CapacitorStyle() {
    const ExpFunction function;
    table_.reserve(kPoints + 1);
    for (int i = 0; i < kPoints; ++i) table_.push_back(function(i / kPointsPerUnit - kSpan));
    table_.push_back(table_.back());
}

}  // namespace vanta
