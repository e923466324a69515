#pragma once

#include <array>
#include <span>
#include <vector>

#include "dsp/sr/converter_style_base.hpp"

namespace vanta::sr {

/// A cascade of recursive half-band stages: cheap, and with a few samples of delay where linear phase costs
/// dozens. The phase bends, which does no harm around a curve, where only aliases count.
class IIRConverterStyle final : public ConverterStyleBase {
public:
    static constexpr int kMaxFactor = 8;
    static constexpr int kMaxStages = 3;

    /// A factor is a wish: a power of two, of which as much counts as keeps the higher rate at or below 384
    /// kHz.
    explicit IIRConverterStyle(wave::Environment& base, int factor = 1)
        : ConverterStyleBase(base), wantedFactor_(factor) {}
    /// The wish is the factor of the sub-environment, whose parent runs at the base rate. For converters that
    /// are nodes of the graph, it must be one that counts whole.
    explicit IIRConverterStyle(wave::SubEnvironment& oversampled);

    std::unique_ptr<ConverterBase> createDecimator() override;
    std::unique_ptr<ConverterBase> createInterpolator() override;
    int latency(int factor) const override;
    int maxFactor() const override { return kMaxFactor; }
    int factor() const override { return 1 << stageCount(); }
    void setFactor(int factor) override;

    /// Designs the stages unless that is done for the present sample rate. Allocates when it does.
    void update();
    int stageCount() const;
    /// The all-passes of a stage of the present factor, 0 being that next to the base rate, in the order of
    /// designEllipticHalfBand.
    std::span<const float> stage(int index) const;

private:
    using Chain = std::array<std::vector<float>, kMaxStages>;

    const wave::SubEnvironment* subEnvironment_ = nullptr;
    int wantedFactor_;
    float designRate_ = 0.0f;
    Chain longChain_;   ///< of factor 8
    Chain shortChain_;  ///< of factors 2 and 4
};

}  // namespace vanta::sr
