#pragma once

#include "dsp/filter/tuned_filter.hpp"

namespace vanta {

/// Low-pass, high-pass and high shelf of up to 96 dB an octave. Shapes that AnalogFilterPrototype does not
/// support leave the signal as it is.
class EQFilter final : public TunedFilter {
public:
    /// How coefficients come about. There is one way; other values act alike.
    enum CoefficientCalculation { Bilinear = 1 };
    /// Orders of 1 to 6, 8, 12 and 16, that is, 6 dB an octave each.
    enum Slope { Order1, Order2, Order3, Order4, Order5, Order6, Order8, Order12, Order16 };

    explicit EQFilter(wave::Environment& owner);

    wave::FloatParameterBus frequency;  ///< log2 of hertz, 0 to 15
    wave::FloatParameterBus gain;       ///< dB, -30 to 30, of the shelf
    wave::FloatParameterBus q;          ///< 0.025 to 40; 1 gives the plain Butterworth response

    Property<int> coefficientCalculation;  ///< a CoefficientCalculation
    Property<int> shape;                   ///< an AnalogFilterPrototype::Shape
    Property<int> slope;                   ///< a Slope

protected:
    bool takeKind() override;
    int sectionsInUse() const override { return sectionCount_; }
    float design(const Values& values, std::span<BiquadCoefficients> sections) override;

private:
    AnalogFilterPrototype prototype_;
    int shapeInUse_ = -1;
    int slopeInUse_ = -1;
    int order_ = 0;
    int sectionCount_ = 1;
};

}  // namespace vanta
