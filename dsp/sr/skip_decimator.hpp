#pragma once

#include "dsp/sr/converter_style_base.hpp"
#include "foundation/property.hpp"

namespace vanta::sr {

/// Lowers the rate without a filter: of each group of samples it takes one. Group n begins with the sample
/// that stands at the time of output n.
class SkipDecimator final : public ConverterBase {
public:
    enum Mode { First, LargestMagnitude, Smallest };

    explicit SkipDecimator(ConverterStyleBase& style, Mode initialMode = First)
        : ConverterBase(style.environment()), mode(nullptr, initialMode), style_(style) {}

    bool convert(const float* in, float* out, int count) override;
    void update() override {}
    void reset() override {}
    int memory() const override { return 0; }

    Property<int> mode;  ///< a Mode

private:
    ConverterStyleBase& style_;
};

}  // namespace vanta::sr
