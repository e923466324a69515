#pragma once

#include <memory>

#include "dsp/convolver/convolver.hpp"
#include "dsp/convolver/convolver_plan.hpp"
#include "dsp/convolver/smoothing_kernel.hpp"
#include "dsp/detector/peak_hold.hpp"
#include "foundation/property.hpp"
#include "wave/producer.hpp"

namespace vanta {

/// The last guard of the ceiling: turns peaks into a gain that holds them at it, whatever the rate conversion
/// and saturation before have left above. The output is that gain, not audio.
class OvershootLimiter final : public wave::Filter, public PropertyOwner {
public:
    enum LimitingMode : int {
        Smooth,  ///< each reduction rises before its peak and falls after it; late by `delaySamples`
        Hard,    ///< sample by sample, without delay
        Off      ///< a gain of 1
    };

    /// The smoothing window, for all channels of one rate.
    class Style {
    public:
        explicit Style(wave::Environment& owner);

        SmoothingKernel& kernel() { return kernel_; }

    private:
        ConvolverPlan plan_;
        SmoothingKernel kernel_;
    };

    /// The style outlives the limiter, or its replacement by `setStyle`.
    OvershootLimiter(wave::Environment& owner, Style& style);
    ~OvershootLimiter() override;

    /// How much later than its input the gain of mode Smooth acts at its full height.
    static int delaySamples(double sampleRate);
    /// Goes over to the style of another rate. Allocates.
    void setStyle(Style& style);

    Property<float> ceiling;  ///< dB
    Property<int> mode;       ///< LimitingMode
    /// While this signal moves, each sample is held at its own ceiling, as a factor, so that a ceiling that
    /// falls comes down together with the level of the audio and not ahead of it. At rest, and if null,
    /// `ceiling` counts.
    wave::Producer* movingCeiling = nullptr;

protected:
    /// Whatever is remembered, the smoothing chain remembers.
    bool settled() const override { return true; }
    void propertyChanged(AbstractProperty& property) override;
    VANTA_REALTIME void process(const wave::BasicBlock<float>& in, wave::BasicBlock<float>* out, int samples,
                                int flags) override;

private:
    /// The head of the smoothing chain: how much of each sample must go.
    class Reduction;

    VANTA_REALTIME void limitSmoothly(float* out, int samples);
    VANTA_REALTIME void limitHard(const float* in, float* out, int samples);
    /// The ceilings of a block on their way, or null.
    VANTA_REALTIME const float* pullMovingCeilings(int samples) const;

    float linearCeiling_ = 1.0f;
    const float* movingCeilings_ = nullptr;  ///< of this block; null at rest
    wave::ConstValueBlock unity_;
    std::unique_ptr<Reduction> reduction_;
    PeakHold hold_;
    std::unique_ptr<Convolver> smoother_;
};

}  // namespace vanta
