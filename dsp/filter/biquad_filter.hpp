#pragma once

#include "dsp/filter/biquad_processor.hpp"
#include "foundation/property.hpp"
#include "wave/producer.hpp"
#include "wave/stream_watch.hpp"

namespace vanta {

/// A recursive filter as a node of the graph. What it filters with is up to a derived class. A stream that
/// was interrupted starts anew.
class BiquadFilter : public wave::Filter, public PropertyOwner {
public:
    /// Starts from silence.
    void reset() override;

    Property<bool> enabled;  ///< fades within 20 ms; when off, the input block is handed on
    BiquadProcessor processor;

protected:
    /// Off, or silent with nothing left to ring.
    bool settled() const override { return processor.off() || processor.silent(); }
    static constexpr int kGranularity = 4;

    BiquadFilter(wave::Environment& owner, int maxSections, int granularity = kGranularity);

    /// Queues coefficients for exactly `samples` samples.
    VANTA_REALTIME virtual void updateCoefficients(int samples, BiquadProcessor& target) = 0;

    void process(const wave::BasicBlock<float>& in, wave::BasicBlock<float>* out, int samples,
                 int flags) override;
    void propertyChanged(AbstractProperty& property) override;

private:
    wave::StreamWatch stream_;
};

}  // namespace vanta
