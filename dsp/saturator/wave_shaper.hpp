#pragma once

#include <cstddef>
#include <memory>

#include "foundation/realtime.hpp"
#include "kernel/kernel.hpp"

namespace vanta {

/// Bends a waveform by one of fourteen curves. No memory; 0 gives 0.
class WaveShaper {
public:
    enum TransferFunction : int {
        ArcTan,
        Exp,
        DivAbs,
        DivRootSquare,
        TanHyperbolic,
        ErrorFunction,  ///< leaves the signal as it is
        Sine,
        PolynomeOrder2,
        PolynomeOrder3,
        PolynomeOrder4,
        PolynomeOrder5,
        Tube,  ///< this and those that follow are not odd
        Triode,
        Rectify  ///< folds what is negative up
    };
    static constexpr int kCurveCount = Rectify + 1;

    explicit WaveShaper(int function) : transferFunction(function) {}
    virtual ~WaveShaper() = default;

    /// `in` and `out` may be equal.
    VANTA_REALTIME virtual void shape(const float* in, float* out, int count) const;
    /// One sample, in double precision.
    VANTA_REALTIME double curve(double x) const;

    float scale = 1.0f;     ///< of the negative half, before the curve and undone behind it
    float exponent = 1.0f;  ///< of the magnitude, likewise
    const int transferFunction;
};

/// A curve that has a vector kernel, which knows neither scale nor exponent.
template <const kernel::UnaryKernel& f>
class WaveShaperVec final : public WaveShaper {
public:
    using WaveShaper::WaveShaper;

    void shape(const float* in, float* out, int count) const override {
        f(in, out, static_cast<std::size_t>(count));
    }
};

/// The fastest shaper of a WaveShaper::TransferFunction, with scale and exponent at 1.
std::unique_ptr<WaveShaper> makeWaveShaper(int transferFunction);

}  // namespace vanta
