#pragma once

#include "dsp/delay/delay_line_base.hpp"
#include "foundation/property.hpp"
#include "wave/float_parameter_source.hpp"

namespace vanta {

/// A delay whose length is a signal. A length that stands still costs one plain read. Before enough has been
/// written since the last reset the output is 0.
class DelayLine final : public DelayLineBase, public PropertyOwner {
public:
    enum DelayInterpretation : int { Milliseconds, Samples };
    enum ReadType : int {
        Interpolated,  ///< glides, with linear interpolation: the pitch bends on the way
        TwoTaps,       ///< crossfades between whole delays, 85 ms each: the pitch stays
        Switched,      ///< crossfades between whole delays and takes the next one when it has arrived
        Overlapped     ///< the same, but both places count for a while, whichever holds the larger magnitude
    };

    DelayLine(wave::Environment& owner, float largestMs);

    void reset() override;

    wave::FloatParameterBus delay;      ///< 0 to the largest, in its unit
    Property<int> delayInterpretation;  ///< DelayInterpretation; a change empties the line
    Property<int> readType;             ///< ReadType
    Property<bool> smooth;              ///< the delay follows its input through a low-pass at 5 Hz

protected:
    /// A read that does not move, of nothing but one value.
    bool settled() const override { return readsAtRest_ && holdsOneValue(); }
    void propertyChanged(AbstractProperty& property) override;
    void streamInterrupted() override;
    VANTA_REALTIME void process(const wave::BasicBlock<float>& in, wave::BasicBlock<float>* out, int samples,
                                int flags) override;

private:
    double inSamples(float value) const;
    int limited(double samples) const;
    int firstDelay(float value) const;
    bool settledAt(double delaySamples) const;
    void restart();
    VANTA_REALTIME void readInTurns(const float* values, float* out, int samples);
    VANTA_REALTIME void readSettled(int delaySamples, float* out, int samples);
    VANTA_REALTIME void fillDelays(const float* values, int samples);
    VANTA_REALTIME void readInterpolated(float* out, int samples) const;
    VANTA_REALTIME void readTaps(float* out, int samples);

    double low_ = 0.0;  ///< the smoother's two states, in samples
    double band_ = 0.0;
    double coefficient_ = 0.0;
    bool firstBlock_ = true;
    bool readsAtRest_ = false;  ///< in the newest block

    /// Two taps at places in the ring; between fades the first alone counts.
    int current_ = 0;
    int next_ = 0;
    int tapFade_ = -1;    ///< samples into the fade; below 0 the taps do not run
    int restDelay_ = -1;  ///< where the last plain read stood, for the taps to start from; below 0 nowhere
};

}  // namespace vanta
