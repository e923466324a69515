#include "dsp/metering/true_peak_judge.hpp"

#include <algorithm>
#include <cmath>
#include <numbers>

#include "kernel/fir_kernels.hpp"
#include "kernel/scan.hpp"

namespace vanta {

namespace {

/// Of the short filter and the scales of the tail, in samples.
constexpr std::array kReaches{64.0, 2048.0, 131072.0};

/// What can lie between points of a signal oversampled by two, four or eight: 1 / cos(pi / (2 n)), and a
/// little more.
constexpr double kMostBetweenHalves = 1.5;
constexpr double kMostBetweenQuarters = 1.1;
constexpr double kMostBetweenPoints = 1.021;

/// Where the points of a block begin to be decided, at twice the rate and among the points.
constexpr std::size_t kFirstDoubled = 12;
constexpr std::size_t kFirstPoint = 4 * kFirstDoubled - 6 * (HalfBand::kReach - 1);

constexpr std::size_t kShortBranch = 128;
using Branch = std::array<float, kShortBranch>;

const Branch& shortFilter() {
    static const Branch filter = [] {
        Branch made{};
        double sum = 0.0;
        std::array<double, kShortBranch> exact{};
        for (std::size_t i = 0; i < exact.size(); ++i) {
            const double t = static_cast<double>(i) - (static_cast<double>(kShortBranch) - 1.0) / 2.0;
            exact[i] =
                std::sin(std::numbers::pi * t) / (std::numbers::pi * t) * kaiserWindow(t / kReaches[0]);
            sum += exact[i];
        }
        // A constant keeps its level to the last digit.
        for (std::size_t i = 0; i < made.size(); ++i) made[i] = static_cast<float>(exact[i] / sum);
        return made;
    }();
    return filter;
}

}  // namespace

TruePeakJudge::TruePeakJudge(std::int64_t segment)
    : segment_(segment),
      tail_(kReaches),
      delay_(tail_.delay() + HalfBand::kReach),
      recent_(delay_ + kBranch),
      decided_(-static_cast<std::int64_t>(delay_)) {
    static_assert(kShortBranch == kBranch);
}

void TruePeakJudge::process(const float* samples, std::size_t count) {
    received_ += static_cast<std::int64_t>(count);
    feed(samples, count);
}

void TruePeakJudge::feed(const float* samples, std::size_t count) {
    while (count > 0) {
        const std::size_t taken = std::min(count, kBlock - pending_);
        std::copy_n(samples, taken, waiting_.begin() + static_cast<std::ptrdiff_t>(pending_));
        samples += taken;
        count -= taken;
        pending_ += taken;
        if (pending_ == kBlock) runBlock();
    }
}

void TruePeakJudge::finish() {
    constexpr std::array<float, kBlock> silence{};
    while (decided_ < received_ + static_cast<std::int64_t>(kBlock)) feed(silence.data(), silence.size());
    segments_.resize(segmentAt(static_cast<double>(received_)) + 1);
}

double TruePeakJudge::position() const {
    return std::clamp(position_, 0.0, static_cast<double>(std::max<std::int64_t>(received_ - 1, 0)));
}

void TruePeakJudge::runBlock() {
    pending_ = 0;
    std::copy(waiting_.begin(), waiting_.end(), recent_.append(kBlock));
    interpolateHalves();
    look();
    std::copy_n(doubled_.end() - kContext, kContext, doubled_.begin());
    decided_ += kBlock;
}

// The samples as they are, and the points between them: what the short filter sees, and what lies beyond.
void TruePeakJudge::interpolateHalves() {
    float* doubled = doubled_.data() + kContext;
    const float* window = recent_.before(delay_ + kBlock - 1 + kBranch / 2 - 1);
    kernel::interpolateHalfBand(window, shortFilter().data(), kBranch, doubled, kBlock);

    std::array<float, kBlock> turned;
    for (std::size_t i = 0; i < kBlock; ++i) turned[i] = i % 2 == 0 ? waiting_[i] : -waiting_[i];
    std::array<float, kBlock> far;
    tail_.process(turned, far.data());
    std::array<float, kDoubled> between;
    halves_.process(far, between.data());
    // The delay is even, as is a block: the signs turn in step with the samples.
    for (std::size_t i = 0; i < kBlock; ++i) {
        const float correction = between[2 * i + 1];
        doubled[2 * i + 1] += i % 2 == 0 ? correction : -correction;
    }
}

// Most blocks hold nothing higher, which a scan of fewer points shows.
void TruePeakJudge::look() {
    const double least = leastOfInterest();
    const auto isBelow = [&](std::span<const float> points, double mostBetween) {
        return static_cast<double>(kernel::highestMagnitude(points.data(), points.size())) * mostBetween <=
               least;
    };
    if (isBelow(doubled_, kMostBetweenHalves)) return;
    const float* branch = HalfBand::get().branch.data();
    kernel::interpolateHalfBand(doubled_.data(), branch, HalfBand::kBranch, quadrupled_.data(),
                                quadrupled_.size() / 2);
    if (isBelow(quadrupled_, kMostBetweenQuarters)) return;
    kernel::interpolateHalfBand(quadrupled_.data(), branch, HalfBand::kBranch, points_.data(),
                                points_.size() / 2);
    for (std::size_t i = kFirstPoint; i < kFirstPoint + kPerSample * kBlock; ++i) {
        const double magnitude = std::abs(static_cast<double>(points_[i]));
        if (magnitude * kMostBetweenPoints <= least) continue;
        if (magnitude >= std::abs(static_cast<double>(points_[i - 1])) &&
            magnitude >= std::abs(static_cast<double>(points_[i + 1]))) {
            weigh(i);
        }
    }
}

// The vertex of the parabola through a point and its neighbours, none of which is higher.
void TruePeakJudge::weigh(std::size_t point) {
    const double sign = points_[point] < 0.0f ? -1.0 : 1.0;
    const double before = sign * static_cast<double>(points_[point - 1]);
    const double here = sign * static_cast<double>(points_[point]);
    const double behind = sign * static_cast<double>(points_[point + 1]);
    const double bend = before - 2.0 * here + behind;
    const double shift = bend < 0.0 ? 0.5 * (before - behind) / bend : 0.0;
    const double height = here - 0.25 * (before - behind) * shift;
    // Points 0 of a block lie kContext back at twice the rate, and what the two steps need ahead.
    const double atTwiceTheRate =
        (static_cast<double>(point) + shift + 6.0 * (HalfBand::kReach - 1)) / 4.0 - kContext;
    const double position = static_cast<double>(decided_) + atTwiceTheRate / 2.0;
    float& segmentPeak = segments_[segmentAt(position)];
    segmentPeak = std::max(segmentPeak, static_cast<float>(height));
    if (height <= peak_) return;
    peak_ = height;
    position_ = position;
}

// The least that counts as higher in one of the segments that a block lies in.
double TruePeakJudge::leastOfInterest() {
    constexpr double kMargin = static_cast<double>(kContext) / 2.0;
    const std::size_t first = segmentAt(static_cast<double>(decided_) - kMargin);
    const std::size_t last = segmentAt(static_cast<double>(decided_) + static_cast<double>(kBlock));
    if (segments_.size() <= last) segments_.resize(last + 1);
    const auto at = [&](std::size_t index) { return segments_.begin() + static_cast<std::ptrdiff_t>(index); };
    return static_cast<double>(*std::min_element(at(first), at(last + 1)));
}

std::size_t TruePeakJudge::segmentAt(double position) const {
    const auto sample = static_cast<std::int64_t>(std::max(position, 0.0));
    return static_cast<std::size_t>(std::min(sample, std::max<std::int64_t>(received_ - 1, 0)) / segment_);
}

}  // namespace vanta
