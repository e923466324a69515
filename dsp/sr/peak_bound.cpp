#include "dsp/sr/peak_bound.hpp"

#include <algorithm>
#include <cmath>

namespace vanta::sr {

namespace {

constexpr int groupsIn(int samples) {
    return (samples + PeakBound::kGroup - 1) / PeakBound::kGroup;
}

constexpr std::size_t size(int count) {
    return static_cast<std::size_t>(count);
}

}  // namespace

void PeakBound::prepare(const std::vector<double>& filter, int factor, int delay, int reach,
                        int mostSamples) {
    delay_ = delay;
    past_ = reach - 2;
    magnitudes_.resize(size(groupsIn(mostSamples)));
    bounds_.resize(size(groupsIn(mostSamples)));
    bends_.resize(size(groupsIn(past_ + mostSamples)));
    derive(filter, factor);
}

// Between samples 0 and 1 the interpolated signal is a sum h * x, and h is that of a straight line through
// both, up to the filter's ripple, plus a rest. The rest sums to 0 and so does its first moment: twice summed
// up it is a filter g of finite length, and rest * x is g * x'', the second difference. Hence
//   |h * x| <= (|a| + |b|) max(|x0|, |x1|) + sum |g| max |x''|,
// a x0 + b x1 being the line.
void PeakBound::derive(const std::vector<double>& filter, int factor) {
    // Far more than the roundings of single precision amount to.
    constexpr double kMargin = 1e-4;
    const int centre = static_cast<int>(filter.size() / 2);
    const int longest = centre / factor + 2;
    double straight = 1.0, bent = 0.0;
    for (int phase = 1; phase < factor; ++phase) {
        std::vector<double> rest;
        double sum = 0.0, moment = 0.0;
        for (int k = -longest; k <= longest; ++k) {
            const int at = centre + phase - k * factor;
            const bool inside = at >= 0 && at < static_cast<int>(filter.size());
            rest.push_back(inside ? filter[size(at)] : 0.0);
            sum += rest.back();
            moment += rest.back() * k;
        }
        rest[size(longest)] -= sum - moment;
        rest[size(longest) + 1] -= moment;
        double once = 0.0, twice = 0.0, total = 0.0;
        for (const double value : rest) {
            once += value;
            twice += once;
            total += std::abs(twice);
        }
        straight = std::max(straight, std::abs(sum - moment) + std::abs(moment));
        bent = std::max(bent, total);
    }
    straight_ = static_cast<float>(straight * (1.0 + kMargin));
    bent_ = static_cast<float>(bent * (1.0 + kMargin));
}

void PeakBound::look(const float* in, int count) {
    const float* delayed = in - delay_;
    kernel::highestMagnitudeOfGroups(delayed, size(count), magnitudes_.data());
    kernel::sharpestBendOfGroups(in - past_, size(past_ + count), bends_.data());
    const int groups = groupsIn(count);
    // So many groups of bends, the first ones in front of it, count for one of peaks.
    const int span = (kGroup - 1 + past_) / kGroup + 1;
    const int last = groupsIn(past_ + count);
    for (int group = 0; group < groups; ++group) {
        // The last peak of a group lies in front of the next one's first sample.
        const float next = std::abs(delayed[std::min((group + 1) * kGroup, count)]);
        const float magnitude = std::max(magnitudes_[size(group)], next);
        const float bend =
            *std::max_element(bends_.begin() + group, bends_.begin() + std::min(group + span, last));
        bounds_[size(group)] = magnitude * straight_ + bend * bent_;
    }
}

}  // namespace vanta::sr
