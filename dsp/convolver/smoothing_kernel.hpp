#pragma once

#include "dsp/convolver/convolver_kernel.hpp"
#include "dsp/convolver/smoothing_shape.hpp"
#include "foundation/property.hpp"
#include "wave/float_parameter_source.hpp"

namespace vanta {

/// A window of non-negative taps with a sum of 1 that the user forms while it is heard. It looks at its
/// inputs once a partition.
class SmoothingKernel final : public ConvolverKernel, public PropertyOwner {
public:
    enum Shape { Triangle, Polynome, Sine, Classic };

    SmoothingKernel(wave::Environment& owner, ConvolverPlan& plan);

    bool unitSum() const override { return true; }
    void propertyChanged(AbstractProperty& property) override;

    Property<int> shape{this, Triangle};
    /// Milliseconds, 0 to 50. The kernel has 1 tap more than the samples in it, at most the plan's length.
    wave::FloatParameterBus windowSize;
    wave::FloatParameterBus offset;     ///< 0 to 1
    wave::FloatParameterBus power;      ///< 0 to 1
    wave::FloatParameterBus smoothing;  ///< 0 to 1

protected:
    void update(int samples) override;

private:
    class ShapeTask;
    class NormalizeTask;

    int lengthFor(float windowMs) const;
    VANTA_REALTIME void lookAt(int sample, int samples);

    SmoothingShape wanted_;
};

}  // namespace vanta
