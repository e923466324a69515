#pragma once

#include <cstdint>
#include <span>

#include "foundation/property.hpp"
#include "wave/mirrored_ring.hpp"
#include "wave/producer.hpp"

namespace vanta {

/// Quantises to a word length with triangular dither and error feedback. The signal is turned down by what
/// dither and shaped error can add at worst, so that no result exceeds `ceiling`.
class DitherFilter final : public wave::Filter, public PropertyOwner {
public:
    enum NoiseShaping { None, Basic, Optimized, Weighted };
    enum NoiseType { Rounding, Triangular };

    /// Takes its seed from `nextDitherSeed`.
    explicit DitherFilter(wave::Environment& owner);

    /// Forgets the errors; the generator goes on.
    void reset() override { errors_.clear(); }

    /// The factor by which the signal is turned down.
    double gain() const { return gain_; }
    /// The step of the grid; 0 when off.
    float lsb() const { return lsb_; }

    Property<int> bits;              ///< word length; 0 or less is off: the input block is handed on
    LimitedProperty<float> ceiling;  ///< dB, -60 to 0
    /// While this signal moves, each sample has its own ceiling, as a factor of at most 1. At rest, and if
    /// null, `ceiling` counts.
    wave::Producer* movingCeiling = nullptr;
    Property<int> noiseShaping;  ///< a NoiseShaping
    Property<int> noiseType;     ///< a NoiseType; Rounding is plain, without dither or shaping

protected:
    /// Off, or the noise goes on.
    bool settled() const override { return lsb_ == 0.0f; }
    void process(const wave::BasicBlock<float>& in, wave::BasicBlock<float>* out, int samples,
                 int flags) override;
    void propertyChanged(AbstractProperty&) override { derive(); }

private:
    void derive();
    double gainBelow(double limit) const;
    /// The gains of a block on their way, or null.
    VANTA_REALTIME const float* pullMovingGains(int samples);
    VANTA_REALTIME void round(const float* in, float* out, int samples, const float* gains) const;
    VANTA_REALTIME void dither(const float* in, float* out, int samples, const float* gains);
    VANTA_REALTIME float triangularNoise() {
        const float first = uniform();
        const float second = uniform();
        return (first - 0.5f + second - 0.5f) * lsb_;
    }
    /// 0 to 1
    VANTA_REALTIME float uniform() {
        generator_ = generator_ * 1103515245u + 12345u;
        return static_cast<float>(generator_ & 0x7FFFFFFFu) * 0x1p-31f;
    }

    static constexpr int kHistory = 12;

    wave::MirroredRing errors_;
    std::uint32_t generator_;
    std::span<const double> shaping_;  ///< oldest error first
    double gain_ = 1.0;
    double margin_ = 0.0;  ///< what dither and error can add
    wave::BasicBlock<float> movingGains_;
    double scale_ = 0.0;
    float lsb_ = 0.0f;
};

}  // namespace vanta
