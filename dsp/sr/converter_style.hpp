#pragma once

#include <array>

#include "dsp/sr/converter_style_base.hpp"
#include "dsp/sr/half_band_design.hpp"
#include "dsp/sr/stage_lines.hpp"
#include "foundation/property.hpp"

namespace vanta::sr {

/// A cascade of linear-phase half-band filters, designed for the sample rate of the environment. The long,
/// sharp one stands next to the base rate, where a sample costs least.
class ConverterStyle : public ConverterStyleBase {
public:
    static constexpr int kMaxFactor = 32;

    enum SetIndex {
        WideFull,      ///< decimator, all stages but the one next to the base rate
        NarrowFull,    ///< decimator, the stage next to the base rate
        NarrowBranch,  ///< interpolator, the stage next to the base rate
        WideBranch,    ///< interpolator, all other stages
        SetCount
    };

    /// `factor` is a power of two up to kMaxFactor; attenuation in dB, passband in Hz.
    ConverterStyle(wave::Environment& base, int factor, float stopAttenuation = 90.0f,
                   float passbandEdge = 20000.0f);
    /// The factor is that of the sub-environment; its parent runs at the base rate.
    explicit ConverterStyle(wave::SubEnvironment& oversampled);

    std::unique_ptr<ConverterBase> createDecimator() override;
    std::unique_ptr<ConverterBase> createInterpolator() override;
    int latency(int factor) const override;
    int maxFactor() const override { return kMaxFactor; }
    int factor() const override { return subEnvironment_ ? subEnvironment_->factor() : factor_; }
    void setFactor(int factor) override;

    /// Designs the tables unless they are made for the present sample rate, and makes room for the present
    /// factor and block size. Allocates when it does. No other thread may convert meanwhile.
    void update();
    /// Where the converters compute, one after the other.
    StageLines& lines() { return lines_; }
    const CoefficientSet& set(int index) const { return sets_[static_cast<std::size_t>(index)]; }
    /// The length beyond which no sample rate makes this set grow.
    int longestLength(int index) const;

    Property<float> attenuation;  ///< dB, in the stop band
    Property<float> passband;     ///< Hz, the edge that is kept at the base rate

protected:
    /// Without notice to anybody, for converters that are about to be rebuilt anyway.
    void replaceFactor(int factor) { factor_ = factor; }

private:
    /// Who converts in whole vectors goes a little beyond a block.
    static constexpr int kRoundingRoom = 64;

    bool designed() const;
    void design();

    wave::SubEnvironment* subEnvironment_ = nullptr;
    int factor_ = 1;
    std::array<CoefficientSet, SetCount> sets_;
    StageLines lines_;
    float designRate_ = 0.0f;
    float designAttenuation_ = 0.0f;
    float designPassband_ = 0.0f;
};

}  // namespace vanta::sr
