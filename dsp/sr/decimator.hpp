#pragma once

#include "dsp/sr/fir_converter.hpp"

namespace vanta::sr {

/// Lowers the rate by the factor of its style. Output j belongs to input j times the factor.
class Decimator final : public FIRConverter {
public:
    explicit Decimator(ConverterStyle& style);

    bool convert(const float* in, float* out, int count) override;
};

}  // namespace vanta::sr
