#pragma once

#include "dsp/sr/converter_style.hpp"
#include "dsp/sr/interpolator.hpp"
#include "dsp/sr/skip_decimator.hpp"

namespace vanta::sr {

/// The inter-sample envelope of a signal: output n is the largest magnitude that the band-limited signal
/// takes from sample n to just before sample n + 1 of the input, delayed by the interpolator, that is by half
/// of the style's latency. It contains the magnitude of the sample itself, exactly. The method of ITU-R
/// BS.1770, annex 2.
class TruePeakExposer final : public wave::Filter {
public:
    /// Short filters that hold the factor which the sample rate asks for.
    class Style final : public ConverterStyle {
    public:
        static constexpr float kAttenuation = 60.0f;
        static constexpr float kPassband = 20000.0f;

        explicit Style(wave::Environment& owner);
        /// Chooses the factor anew if the sample rate has changed.
        void updateFactor();
        /// Delay of an exposer in samples.
        int delay() const { return latency(factor()) / 2; }

    private:
        float factorRate_;
    };

    TruePeakExposer(wave::Environment& owner, Style& style);

    /// Chooses the factor for the sample rate, and designs the filters.
    void prepare() override;
    void reset() override { interpolator_.reset(); }

    Property<bool> enabled;  ///< when false the input passes as it is, without delay

protected:
    void process(const wave::BasicBlock<float>& in, wave::BasicBlock<float>* out, int samples,
                 int flags) override;

private:
    Style& style_;
    Interpolator interpolator_;
    SkipDecimator peaks_;
    wave::AlignedBuffer<float> workBlock_;
    std::int64_t expectedPosition_ = 0;
};

}  // namespace vanta::sr
