#include "dsp/filter/biquad_section.hpp"

#include <algorithm>
#include <cmath>

namespace vanta {

namespace {

double step(const BiquadCoefficients& c, kernel::BiquadHistory& s, double x) {
    // The newest output comes last: only two operations wait for it.
    const double y = (c.b0 * x + c.b1 * s.x1 + c.b2 * s.x2 - c.a2 * s.y2) - c.a1 * s.y1;
    s = {x, s.x1, y, s.y1};
    return y;
}

}  // namespace

void BiquadSection::start(double value) {
    atGroup_ = {value, value, value, value};
    pendingCount_ = age_ = 0;
}

void BiquadSection::run(const BiquadCoefficients& coefficients, const float* in, float* out, int count) {
    if (coefficients != coefficients_) {
        atGroup_ = history();
        coefficients_ = coefficients;
        pendingCount_ = age_ = 0;
    }
    int done = age_ < kGroup ? runSingly(in, out, count) : 0;
    if (pendingCount_ > 0) done += runPart(in + done, out + done, count - done);
    const int groups = (count - done) / kGroup;
    kernel::biquadGroups(in + done, group_, atGroup_, out + done, static_cast<std::size_t>(groups));
    done += groups * kGroup;
    if (done < count) runPart(in + done, out + done, count - done);
}

// Coefficients on the move may change again before a group would have paid for itself.
int BiquadSection::runSingly(const float* in, float* out, int count) {
    const int done = std::min(kGroup - age_, count);
    for (int i = 0; i < done; ++i) {
        out[i] = static_cast<float>(step(coefficients_, atGroup_, static_cast<double>(in[i])));
    }
    age_ += done;
    const BiquadCoefficients& c = coefficients_;
    if (age_ == kGroup) group_ = kernel::BiquadGroup(c.b0, c.b1, c.b2, c.a1, c.a2);
    return done;
}

// A group of which a part has come is computed as far as it has, and once more with the rest: inputs still to
// come do nothing to the outputs in front of them.
int BiquadSection::runPart(const float* in, float* out, int count) {
    const int before = pendingCount_;
    pendingCount_ = std::min(before + count, kGroup);
    std::copy_n(in, pendingCount_ - before, pending_.begin() + before);
    std::fill(pending_.begin() + pendingCount_, pending_.end(), 0.0f);
    std::array<float, kGroup> group;
    kernel::BiquadHistory after = atGroup_;
    kernel::biquadGroups(pending_.data(), group_, after, group.data(), 1);
    std::copy(group.begin() + before, group.begin() + pendingCount_, out);
    const int done = pendingCount_ - before;
    if (pendingCount_ == kGroup) {
        atGroup_ = after;
        pendingCount_ = 0;
    }
    return done;
}

kernel::BiquadHistory BiquadSection::history() const {
    kernel::BiquadHistory now = atGroup_;
    for (int i = 0; i < pendingCount_; ++i) {
        step(coefficients_, now, static_cast<double>(pending_[static_cast<std::size_t>(i)]));
    }
    return now;
}

bool BiquadSection::isSilent() const {
    const kernel::BiquadHistory now = history();
    return now.x1 == 0.0 && now.x2 == 0.0 && now.y1 == 0.0 && now.y2 == 0.0;
}

bool BiquadSection::ranAway() const {
    // Far above what any resonance makes of the largest sample, and far below what a float can hold.
    constexpr double kLargest = 0x1p50;
    const kernel::BiquadHistory now = history();
    return !(std::abs(now.y1) <= kLargest && std::abs(now.y2) <= kLargest);
}

}  // namespace vanta
