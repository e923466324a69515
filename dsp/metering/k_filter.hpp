#pragma once

#include <array>

#include "dsp/filter/biquad_filter.hpp"

namespace vanta {

/// The K-weighting of ITU-R BS.1770-4, designed for any sample rate from its analog prototype: a shelf of 4
/// dB above 1.7 kHz and a high-pass at 38 Hz.
class KFilter final : public BiquadFilter {
public:
    explicit KFilter(wave::Environment& owner);

    /// Designs the weighting for the sample rate.
    void prepare() override;

protected:
    void updateCoefficients(int samples, BiquadProcessor& target) override {
        target.queue(samples, sections_);
    }

private:
    std::array<BiquadCoefficients, 2> sections_;
};

}  // namespace vanta
