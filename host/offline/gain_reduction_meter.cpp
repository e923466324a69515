#include "host/offline/gain_reduction_meter.hpp"

#include <algorithm>
#include <cmath>

#include "foundation/numbers.hpp"

namespace vanta {

GainReductionMeter::GainReductionMeter(wave::Producer& gain)
    : Filter(gain.environment(), wave::OwnBlock::No) {
    source = &gain;
    setScheduled(wave::Environment::kBackGroup);
}

void GainReductionMeter::start(std::int64_t samples) {
    toSkip_ = samples;
    smallest_ = 1.0f;
    end_ = std::numeric_limits<std::int64_t>::max();
    measured_ = 0;
    reduced_ = 0;
    decibels_ = 0.0;
}

double GainReductionMeter::meanReductionDb() const {
    return measured_ == 0 ? 0.0 : std::max(0.0, -decibels_ / static_cast<double>(measured_));
}

double GainReductionMeter::reducedShare() const {
    return measured_ == 0 ? 0.0 : static_cast<double>(reduced_) / static_cast<double>(measured_);
}

void GainReductionMeter::process(const wave::BasicBlock<float>& in, wave::BasicBlock<float>*, int samples,
                                 int) {
    const auto first = static_cast<int>(std::min<std::int64_t>(toSkip_, samples));
    toSkip_ -= first;
    const auto count = static_cast<int>(
        std::min<std::int64_t>(samples - first, std::max<std::int64_t>(end_ - measured_, 0)));
    measure(in.data() + first, count);
    publishInput();
}

// The mean of gains in dB is the logarithm of their product: one logarithm serves several samples.
void GainReductionMeter::measure(const float* gains, int count) {
    constexpr int kFactors = 16;  // of at least 1e-15 each: their product is a double
    static const auto turnedDown = static_cast<float>(gainFromDb(-kReducedDb));
    for (int i = 0; i < count; i += kFactors) {
        double product = 1.0;
        for (int k = i; k < std::min(count, i + kFactors); ++k) {
            smallest_ = std::min(smallest_, gains[k]);
            reduced_ += gains[k] < turnedDown ? 1 : 0;
            product *= std::max(static_cast<double>(gains[k]), 1e-15);
        }
        decibels_ += 20.0 * std::log10(product);
    }
    measured_ += count;
}

}  // namespace vanta
