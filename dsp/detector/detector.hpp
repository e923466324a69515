#pragma once

#include "dsp/detector/gain_change_domain.hpp"
#include "wave/float_parameter_source.hpp"

namespace vanta {

/// The gain computer: turns a level into a gain change, sample by sample, without time constants or latency.
/// Ratio 1 is neutral: the output is the silent block, or a gain of 1 from an expander in amplitude. A limit
/// bounds every gain change, and none is negative. A block that stays below the threshold gives the silent
/// block, but from an expander in amplitude or downward.
class Detector final : public wave::Source, public wave::Consumer, public PropertyOwner {
public:
    /// What the element does where.
    enum Purpose : int {
        Compress,    ///< gain falls above the threshold; output in amplitude: the fraction to take away
        ExpandDown,  ///< gain falls below the threshold, with hysteresis; output in amplitude: a gain
        ExpandUp     ///< gain rises above the threshold; output in amplitude: a gain
    };
    enum KneeStyle : int {
        Normal,   ///< threshold, knee and ratio
        Clipping  ///< a saturating curve of threshold and limit alone; always compresses
    };

    explicit Detector(wave::Environment& owner);

    Property<int> domain;     ///< a GainChangeDomain
    Property<int> purpose;    ///< a Purpose
    Property<int> kneeStyle;  ///< a KneeStyle

    wave::FloatParameterBus knee;       ///< dB, full width, 0 to 30
    wave::FloatParameterBus threshold;  ///< dB, -180 to 180
    wave::FloatParameterBus
        hysteresis;                 ///< dB, 0 to 30: how far below the threshold downward expansion begins
    wave::FloatParameterBus ratio;  ///< n of n:1, 1 to 100; a compressor's 100 is infinite
    wave::FloatParameterBus limit;  ///< dB, 0 to 180, the largest gain change

    /// The level as an amplitude, where the source is a conversion of that to dB: as long as it stays below
    /// the threshold the conversion is not asked for. May be null.
    wave::Producer* amplitude = nullptr;

    void reset() override { open_ = false; }

protected:
    /// Only a gate remembers.
    bool settled() const override { return purpose != ExpandDown; }
    void produce(wave::BasicBlock<float>* block, int samples, int flags) override;
    void propertyChanged(AbstractProperty&) override {}

private:
    struct Control;
    struct Controls;

    VANTA_REALTIME void publishNeutral(wave::BasicBlock<float>& out, int samples);
    VANTA_REALTIME bool staysBelow(const Controls& c, int samples);
    VANTA_REALTIME bool compress(const Controls& c, const float* in, float* out, std::size_t count) const;
    VANTA_REALTIME bool expandDown(const Controls& c, const float* in, float* out, std::size_t count);
    VANTA_REALTIME bool expandUp(const Controls& c, const float* in, float* out, std::size_t count) const;
    VANTA_REALTIME bool clip(const Controls& c, const float* in, float* out, std::size_t count) const;
    VANTA_REALTIME void computeEach(const Controls& c, const float* in, float* out, std::size_t count);

    bool open_ = false;  ///< downward expansion waits: the level has not yet fallen by the hysteresis
};

}  // namespace vanta
