#pragma once

#include "dsp/sr/converter_style.hpp"
#include "dsp/sr/peak_finder.hpp"
#include "foundation/property.hpp"
#include "wave/producer.hpp"
#include "wave/silence_watch.hpp"
#include "wave/stream_watch.hpp"

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
        /// How many samples before the newest one the output depends on. The filters are symmetrical.
        int reach() const { return 2 * delay(); }

    private:
        float factorRate_;
    };

    TruePeakExposer(wave::Environment& owner, Style& style);

    /// Chooses the factor for the sample rate, and designs the filters.
    void prepare() override;
    void reset() override;

    /// When false the input passes as it is, without delay. What is enabled again in the middle of a signal
    /// goes on as if it had never rested.
    Property<bool> enabled;
    /// After a missed block: samples that the path in front needs to fill with signal again. Until it has,
    /// and the filters have, the output is silent, for the edge at which the signal comes back is no peak of
    /// it. 0: what comes is a stream of its own, which begins there.
    Property<int> warmUpSamples;
    /// Readers that ask for less than the whole envelope save most of the work.
    enum Detail : int {
        Whole,
        Highest  ///< the highest value of each block; no other exceeds it, or is below its sample
    };
    Property<int> detail;
    /// An amplitude that readers do not look below, while it stands still: what does not exceed it comes out
    /// as anything that does not either. Null: they look at everything.
    wave::Producer* floor = nullptr;

protected:
    bool settled() const override { return silence_.outlasting(); }
    void process(const wave::BasicBlock<float>& in, wave::BasicBlock<float>* out, int samples,
                 int flags) override;

private:
    VANTA_REALTIME void noteBlock(int samples);
    VANTA_REALTIME bool outlastedBySilence(int samples);
    VANTA_REALTIME void expose(float* out, int samples);
    VANTA_REALTIME float silentUpTo(int samples) const;

    float* newest() { return line_.data() + front_; }

    Style& style_;
    PeakFinder finder_;
    wave::AlignedBuffer<float> line_;  ///< the block, and in front of it what the filters reach of the past
    int front_ = 0;
    int warmUpLeft_ = 0;
    wave::StreamWatch stream_;
    wave::SilenceWatch silence_;
};

}  // namespace vanta::sr
