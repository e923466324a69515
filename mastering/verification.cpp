#include "mastering/verification.hpp"

#include <cmath>

namespace vanta {

std::optional<double> writtenTruePeak(const RenderedFile& file) {
    const auto& peak = file.after->figures.total.truePeak;
    return peak ? std::optional(peak->level) : std::nullopt;
}

double excessDb(const RenderedFile& file, double limitDb) {
    const auto peak = writtenTruePeak(file);
    return peak ? *peak - limitDb : -HUGE_VAL;
}

std::optional<double> marginDb(const RenderedFile& file, double limitDb) {
    const auto peak = writtenTruePeak(file);
    return peak ? std::optional(std::floor(1000.0 * (limitDb - *peak)) / 1000.0) : std::nullopt;
}

}  // namespace vanta
