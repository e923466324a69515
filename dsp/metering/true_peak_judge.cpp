#include "dsp/metering/true_peak_judge.hpp"

#include <algorithm>
#include <cmath>
#include <numbers>

#include "kernel/convolver_kernels.hpp"
#include "kernel/scan.hpp"

namespace vanta {

namespace {

/// Side lobes at -80 dB (Kaiser, 1974).
constexpr double kBeta = 7.86;
/// What a parabola can add to the highest of eight points a sample: 1 / cos(pi / 16), and a little more.
constexpr double kMostBetweenPoints = 1.021;

double windowedSinc(double x, double halfWidth) {
    const double place = x / halfWidth;
    if (std::abs(place) >= 1.0) return 0.0;
    const double angle = std::numbers::pi * x;
    const double sinc = x == 0.0 ? 1.0 : std::sin(angle) / angle;
    return sinc * std::cyl_bessel_i(0.0, kBeta * std::sqrt(1.0 - place * place)) /
           std::cyl_bessel_i(0.0, kBeta);
}

}  // namespace

TruePeakJudge::TruePeakJudge() : history_(kTaps - 1 + kChunk) {
    for (int phase = 0; phase < kPoints; ++phase) {
        Taps& row = taps_[static_cast<std::size_t>(phase)];
        for (int j = 0; j < kTaps; ++j) {
            // Tap j meets the sample j before the newest one; the points lie just after the middle.
            const double distance = j - kHalfWidth + static_cast<double>(phase) / kPoints;
            row[static_cast<std::size_t>(j)] = static_cast<float>(windowedSinc(distance, kHalfWidth));
        }
        // A constant keeps its level to the last digit.
        double sum = 0.0;
        for (const float tap : row) sum += static_cast<double>(tap);
        for (float& tap : row) tap = static_cast<float>(static_cast<double>(tap) / sum);
    }
    reset();
}

void TruePeakJudge::reset() {
    history_.clear();
    points_.fill(0.0f);
    firstPoint_ = -kHalfWidth * kPoints - kCarried;
    peak_ = latest_ = position_ = 0.0;
}

void TruePeakJudge::process(const float* samples, std::size_t count) {
    for (std::size_t done = 0; done < count; done += kChunk) {
        processChunk(samples + done, static_cast<int>(std::min<std::size_t>(kChunk, count - done)));
    }
}

void TruePeakJudge::finish() {
    const std::array<float, kTaps + 1> silence{};
    process(silence.data(), silence.size());
}

void TruePeakJudge::processChunk(const float* samples, int count) {
    const auto length = static_cast<std::size_t>(count);
    float* newest = history_.data() + kTaps - 1;
    std::copy_n(samples, length, newest);
    // The first phase falls on the samples themselves.
    std::copy_n(newest - kHalfWidth, length, rows_[0].data());
    for (std::size_t phase = 1; phase < rows_.size(); ++phase) {
        kernel::fir(newest, taps_[phase].data(), kTaps, rows_[phase].data(), length);
    }
    std::copy_n(history_.data() + count, kTaps - 1, history_.data());
    interleave(count);
    if (isWorthALook(count)) look(count);
    std::copy_n(points_.data() + count * kPoints, kCarried, points_.data());
    firstPoint_ += count * kPoints;
}

void TruePeakJudge::interleave(int count) {
    float* out = points_.data() + kCarried;
    for (std::size_t phase = 0; phase < rows_.size(); ++phase) {
        for (int i = 0; i < count; ++i) {
            out[i * kPoints + static_cast<int>(phase)] = rows_[phase][static_cast<std::size_t>(i)];
        }
    }
}

// One scan shows that most chunks hold nothing higher.
bool TruePeakJudge::isWorthALook(int count) const {
    const auto length = static_cast<std::size_t>(kCarried + count * kPoints);
    return static_cast<double>(kernel::highestMagnitude(points_.data(), length)) * kMostBetweenPoints >
           latest_;
}

void TruePeakJudge::look(int count) {
    for (int i = 1; i < kCarried + count * kPoints - 1; ++i) {
        const auto at = static_cast<std::size_t>(i);
        const double magnitude = std::abs(static_cast<double>(points_[at]));
        if (magnitude * kMostBetweenPoints <= latest_) continue;
        if (magnitude >= std::abs(static_cast<double>(points_[at - 1])) &&
            magnitude >= std::abs(static_cast<double>(points_[at + 1]))) {
            weigh(i);
        }
    }
}

// The vertex of the parabola through a point and its neighbours, none of which is higher.
void TruePeakJudge::weigh(int point) {
    const auto at = static_cast<std::size_t>(point);
    const double sign = points_[at] < 0.0f ? -1.0 : 1.0;
    const double before = sign * static_cast<double>(points_[at - 1]);
    const double here = sign * static_cast<double>(points_[at]);
    const double behind = sign * static_cast<double>(points_[at + 1]);
    const double bend = before - 2.0 * here + behind;
    const double shift = bend < 0.0 ? 0.5 * (before - behind) / bend : 0.0;
    const double height = here - 0.25 * (before - behind) * shift;
    latest_ = std::max(latest_, height);
    if (height <= peak_) return;
    peak_ = height;
    position_ = (static_cast<double>(firstPoint_ + point) + shift) / kPoints;
}

}  // namespace vanta
