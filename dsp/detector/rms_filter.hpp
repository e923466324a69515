#pragma once

#include "kernel/running_mean.hpp"
#include "wave/float_parameter_source.hpp"
#include "wave/silence_watch.hpp"

namespace vanta {

/// The mean square of the last samples, or its root. The mean starts from an empty window: until that has
/// filled, and again after a change of the window or of `scale`, it reads low. Adds no latency.
class RMSFilter final : public wave::Filter, public PropertyOwner {
public:
    enum Domain : int {
        Power,     ///< the mean square
        Amplitude  ///< its root; of a window of one sample the sample itself, with its sign
    };

    /// `largestWindowMs` is the largest window that will be asked for.
    RMSFilter(wave::Environment& owner, float largestWindowMs);

    Property<float> scale;           ///< factor on the output amplitude
    Property<int> domain;            ///< a Domain
    wave::FloatParameterBus window;  ///< ms; its first value counts for the whole block

    void prepare() override;
    void reset() override;

protected:
    void process(const wave::BasicBlock<float>& in, wave::BasicBlock<float>* out, int samples,
                 int flags) override;
    void propertyChanged(AbstractProperty& property) override;

private:
    VANTA_REALTIME void setLength(int samples);
    VANTA_REALTIME bool restsFor(int samples);
    VANTA_REALTIME void slide(const float* in, float* out, int samples);
    VANTA_REALTIME int slidePiece(const float* in, float* out, int samples);
    VANTA_REALTIME void passSingle(const float* in, float* out, int samples);

    float largestWindowMs_;
    wave::AlignedBuffer<float> squares_;  ///< ring of them: a sample leaves the sum with the value it brought
    int position_ = 0;                    ///< of the next square
    kernel::RunningSum sum_;
    int enteredCount_ = 0;  ///< squares since the sum was last made anew
    bool full_ = false;     ///< the window has filled
    wave::SilenceWatch silence_;
    int length_ = 0;  ///< samples; 0 means not yet known
    double norm_ = 0.0;
};

}  // namespace vanta
