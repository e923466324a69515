#pragma once

#include "dsp/sr/converter_style_base.hpp"
#include "dsp/sr/skip_decimator.hpp"
#include "wave/producer.hpp"
#include "wave/silence_watch.hpp"
#include "wave/stream_watch.hpp"

namespace vanta::sr {

/// A converter as a node of the graph. It lives in the environment of its output and pulls a source of
/// another rate. With a factor of 1 it hands on the block of its source. A stream that was interrupted starts
/// anew from silence.
class ConverterFilterBase : public wave::Filter {
public:
    void prepare() override;
    void reset() override;

protected:
    /// With a factor of 1 there is nothing to remember.
    bool settled() const override { return silence_.outlasting() || style_.factor() == 1; }
    ConverterFilterBase(wave::Environment& owner, ConverterStyleBase& style,
                        std::unique_ptr<ConverterBase> converter);

    ConverterStyleBase& style() const { return style_; }
    ConverterBase& converter() const { return *converter_; }
    /// `count` in samples of the lower rate.
    VANTA_REALTIME void convert(const wave::BasicBlock<float>& in, wave::BasicBlock<float>* out, int count);
    VANTA_REALTIME void noteBlock(int samples);

private:
    ConverterStyleBase& style_;
    std::unique_ptr<ConverterBase> converter_;
    wave::StreamWatch stream_;
    wave::SilenceWatch silence_;
};

/// Pulls its source for one sample in `factor` samples of its own.
class InterpolatorFilterBase : public ConverterFilterBase {
protected:
    using ConverterFilterBase::ConverterFilterBase;
    void produce(wave::BasicBlock<float>* block, int samples, int flags) override;
    void process(const wave::BasicBlock<float>& in, wave::BasicBlock<float>* out, int samples,
                 int flags) override;
};

/// Pulls its source for `factor` samples in one sample of its own.
class DecimatorFilterBase : public ConverterFilterBase {
protected:
    using ConverterFilterBase::ConverterFilterBase;
    void produce(wave::BasicBlock<float>* block, int samples, int flags) override;
    void process(const wave::BasicBlock<float>& in, wave::BasicBlock<float>* out, int samples,
                 int flags) override;
};

class InterpolatorFilter final : public InterpolatorFilterBase {
public:
    /// `oversampled` runs at the style's factor times the rate of the source.
    InterpolatorFilter(wave::Environment& oversampled, ConverterStyleBase& style)
        : InterpolatorFilterBase(oversampled, style, style.createInterpolator()) {}
};

class DecimatorFilter final : public DecimatorFilterBase {
public:
    /// Lives in the style's own environment.
    explicit DecimatorFilter(ConverterStyleBase& style)
        : DecimatorFilterBase(style.environment(), style, style.createDecimator()) {}
};

/// Takes one sample of each group, see SkipDecimator. A constant source makes a constant result.
class SkipDecimatorFilter final : public DecimatorFilterBase {
public:
    explicit SkipDecimatorFilter(ConverterStyleBase& style,
                                 SkipDecimator::Mode initialMode = SkipDecimator::First);

    Property<int>& mode;  ///< a SkipDecimator::Mode

protected:
    bool settled() const override { return true; }
    void process(const wave::BasicBlock<float>& in, wave::BasicBlock<float>* out, int samples,
                 int flags) override;
};

}  // namespace vanta::sr
