#pragma once

#include <array>

#include "dsp/filter/tuned_filter.hpp"

namespace vanta {

/// One side of a band split. A low-pass and a high-pass of one slope and frequency sum to the all-pass of
/// that slope: even orders are Linkwitz-Riley filters, two Butterworth filters of half the order in a row,
/// with the high-pass inverted where the sum asks for it. At order 1 the sum is flat, and the all-pass is a
/// wire.
class CrossoverFilter final : public TunedFilter {
public:
    enum Response { LowPass, HighPass, AllPass };
    enum Slope { Order1, Order2, Order4, Order6, Order8 };

    explicit CrossoverFilter(wave::Environment& owner);

    wave::FloatParameterBus frequency;  ///< log2 of hertz, 0 to 15

    Property<int> response;  ///< a Response
    Property<int> slope;     ///< a Slope; anything above counts as the steepest

protected:
    bool takeKind() override;
    int sectionsInUse() const override;
    float design(const Values& values, std::span<BiquadCoefficients> sections) override;

private:
    static constexpr int kMaxSections = 4;

    int responseInUse_ = -1;
    int slopeInUse_ = -1;
    bool doubled_ = false;
    bool inverted_ = false;
    bool firstOrderSection_ = false;  ///< after the second-order sections
    int secondOrderSections_ = 0;
    std::array<double, kMaxSections> q_{};  ///< of the sections of the second order
};

}  // namespace vanta
