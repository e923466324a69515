#include "dsp/metering/loudness_gate.hpp"

#include <algorithm>
#include <cmath>

#include "foundation/numbers.hpp"

namespace vanta {

namespace {

constexpr double kStrideSeconds = 0.1;
constexpr float kLowest = -70.0f;
constexpr float kBinsPerLu = 100.0f;

constexpr double kRelativeGate = -10.0;  ///< LU, of the gated mean
constexpr double kRangeGate = -20.0;     ///< LU, of the range

int binOf(float loudness) {
    const float bin = std::floor((loudness - kLowest) * kBinsPerLu);
    return static_cast<int>(std::min(bin, static_cast<float>(LoudnessGate::kBins - 1)));
}
double binLevel(int index) {
    return index * 0.01 + static_cast<double>(kLowest);
}

}  // namespace

LoudnessGate::LoudnessGate(int strideCount) : blocks_(strideCount), bins_(kBins) {
    reset(44100.0);
}

void LoudnessGate::reset(double sampleRate) {
    size_ = std::max(samplesInSeconds(kStrideSeconds, sampleRate), 1);
    untilNext_ = blocks_ * size_;
    cleared_ = 0;
}

void LoudnessGate::clearUpTo(int end) {
    for (; cleared_ < end; ++cleared_) at(cleared_) = {};
}

bool LoudnessGate::feed(const float* meanSquares, int count) {
    if (cleared_ < kBins) clearUpTo(count < kBins - cleared_ ? cleared_ + count : kBins);
    const bool due = untilNext_ < count;
    while (untilNext_ < count) {
        // At low rates a window fills before the clearing is through.
        clearUpTo(kBins);
        take(meanSquares[untilNext_]);
        untilNext_ += size_;
    }
    untilNext_ -= count;
    return due;
}

void LoudnessGate::take(float meanSquare) {
    const int bin = binOf(loudnessOf(meanSquare));
    if (bin < 0) return;  // the absolute gate
    int node = kRoot;
    int span = kRoot;
    while (span > 0) {
        at(node).subtreeCount += 1;
        at(node).subtreeSum += meanSquare;
        if (bin < node && span == 1) break;
        const bool right = bin >= node;
        span /= 2;
        node += right ? span : -span;
    }
    at(bin).leafCount += 1;
}

// The right parts of the walk bring exact sums; the few bins along it count with their lower edge.
void LoudnessGate::addBin(int index, Total& total) const {
    const int count = at(index).leafCount;
    total.count += count;
    total.sum += count * meanSquareOf(binLevel(index));
}

LoudnessGate::Total LoudnessGate::query(double relativeThreshold) const {
    Total total;
    if (cleared_ < kBins) return total;
    const double mean = at(kRoot).subtreeSum / std::max(at(kRoot).subtreeCount, 1);
    const int threshold = binOf(loudnessOf(mean) + static_cast<float>(relativeThreshold));
    int node = kRoot;
    int span = kRoot;
    while (span > 0) {
        if (node > threshold) {
            if (span == 1) {
                addBin(node, total);
                node -= 1;
                break;
            }
            const LoudnessBin& right = at(node + span / 2);
            total.sum += right.subtreeSum;
            total.count += right.subtreeCount;
            span /= 2;
            node -= span;
        } else {
            span /= 2;
            node += span;
        }
    }
    if (node >= threshold && node >= 0) addBin(node, total);
    return total;
}

double LoudnessGate::gatedMeanSquare() const {
    const auto [sum, count] = query(kRelativeGate);
    return sum / std::max(count, 1);
}

// From the level that 10 % of the values lie below to the one that 5 % lie above; ranks count from the top.
LoudnessRange LoudnessGate::range() const {
    const int count = query(kRangeGate).count;
    if (count == 0) return {};
    return {levelAtRank(static_cast<int>(9LL * count / 10)), levelAtRank(count / 20)};
}

void LoudnessGate::merge(const LoudnessGate& other) {
    clearUpTo(kBins);
    for (int i = 0; i < other.cleared_; ++i) {
        at(i).leafCount += other.at(i).leafCount;
        at(i).subtreeCount += other.at(i).subtreeCount;
        at(i).subtreeSum += other.at(i).subtreeSum;
    }
}

float LoudnessGate::levelAtRank(int rank) const {
    int node = kRoot;
    int span = kRoot;
    while (span > 0) {
        const int above = span > 1 ? at(node + span / 2).subtreeCount : at(node).leafCount;
        if (rank < above) {
            span /= 2;
            node += span;
            continue;
        }
        rank -= above;
        if (span == 1) {
            node -= 1;
            break;
        }
        span /= 2;
        node -= span;
    }
    return static_cast<float>(binLevel(node));
}

}  // namespace vanta
