#pragma once

#include "dsp/sr/fir_converter.hpp"

namespace vanta::sr {

/// Raises the rate by the factor of its style.
class Interpolator final : public FIRConverter {
public:
    explicit Interpolator(ConverterStyle& style);

    bool convert(const float* in, float* out, int count) override;
    /// out[j] = the largest magnitude from input sample j to just before the next. Leaves the state as
    /// `convert` does. The factor is 2 or more.
    VANTA_REALTIME void convertToPeaks(const float* in, float* out, int count);

private:
    VANTA_REALTIME int convertUpToLast(const float* in, int count);
};

}  // namespace vanta::sr
