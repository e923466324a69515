#pragma once

#include "dsp/sr/fir_converter.hpp"

namespace vanta::sr {

/// Raises the rate by the factor of its style.
class Interpolator final : public FIRConverter {
public:
    explicit Interpolator(ConverterStyle& style);

    bool convert(const float* in, float* out, int count) override;
};

}  // namespace vanta::sr
