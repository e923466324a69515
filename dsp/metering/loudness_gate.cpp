#include "dsp/metering/loudness_gate.hpp"

#include <algorithm>
#include <cmath>

#include "dsp/metering/loudness.hpp"
#include "foundation/numbers.hpp"

namespace vanta {

namespace {

constexpr double kStrideSeconds = 0.1;
constexpr float kLowest = -70.0f;
constexpr float kBinsPerLu = 100.0f;

int binOf(float loudness) { return static_cast<int>(std::floor((loudness - kLowest) * kBinsPerLu)); }
double binLevel(int index) { return index * 0.01 + static_cast<double>(kLowest); }

}  // namespace

LoudnessGate::LoudnessGate(int strideCount) : blocks(strideCount), bins(kBins) { reset(44100.0); }

void LoudnessGate::reset(double sampleRate) {
    size = std::max(samplesInSeconds(kStrideSeconds, sampleRate), 1);
    untilNext = blocks * size;
    cleared = 0;
}

void LoudnessGate::clearUpTo(int end) {
    for (; cleared < end; ++cleared) at(cleared) = {};
}

void LoudnessGate::feed(const float* meanSquares, int count) {
    if (cleared < kBins) clearUpTo(count < kBins - cleared ? cleared + count : kBins);
    while (untilNext < count) {
        // At low rates a window fills before the clearing is through.
        clearUpTo(kBins);
        take(meanSquares[untilNext]);
        untilNext += size;
    }
    untilNext -= count;
}

void LoudnessGate::take(float meanSquare) {
    const int bin = std::min(binOf(loudnessOf(meanSquare)), kBins - 1);
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
    if (cleared < kBins) return total;
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
