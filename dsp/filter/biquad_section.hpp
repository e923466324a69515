#pragma once

#include <array>

#include "dsp/filter/biquad_coefficients.hpp"
#include "foundation/realtime.hpp"
#include "kernel/biquad.hpp"

namespace vanta {

/// One second-order section with coefficients that may change at any sample. Direct form I in double
/// precision, in groups of samples where coefficients stand still for a while. Groups are counted from the
/// sample at which the coefficients or the state were set, so it does not matter how a stream is cut into
/// calls.
class BiquadSection {
public:
    /// As if input and output had always been `value`.
    VANTA_REALTIME void start(double value);
    /// `out` may be `in`.
    VANTA_REALTIME void run(const BiquadCoefficients& coefficients, const float* in, float* out, int count);
    /// Whether the state is what music can make of it.
    VANTA_REALTIME bool ranAway() const;
    /// Whether silence leaves it as it is.
    bool isSilent() const;

private:
    static constexpr int kGroup = kernel::BiquadGroup::kLength;

    kernel::BiquadHistory history() const;
    VANTA_REALTIME int runSingly(const float* in, float* out, int count);
    VANTA_REALTIME int runPart(const float* in, float* out, int count);

    BiquadCoefficients coefficients_;
    kernel::BiquadGroup group_;
    kernel::BiquadHistory atGroup_;        ///< when the present group began
    std::array<float, kGroup> pending_{};  ///< its inputs so far
    int pendingCount_ = 0;
    int age_ = 0;  ///< samples since the coefficients or the state were set, up to a group
};

}  // namespace vanta
