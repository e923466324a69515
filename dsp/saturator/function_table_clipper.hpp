#pragma once

#include <memory>

#include "dsp/saturator/function_table.hpp"
#include "dsp/saturator/wave_shaper.hpp"
#include "dsp/sr/converter_style_base.hpp"
#include "wave/float_parameter_source.hpp"
#include "wave/producer.hpp"
#include "wave/stream_watch.hpp"

namespace vanta {

/// Scales a signal into a curve and out of it again, by tables: a moving drive costs two lookups a sample, a
/// resting one none. With a factor above 1 the curve runs at a multiple of the rate.
class FunctionTableClipper final : public wave::Filter {
public:
    class Style;

    /// `converterStyle` outlives the clipper.
    FunctionTableClipper(wave::Environment& owner, sr::ConverterStyleBase& converterStyle);

    void prepare() override;
    void reset() override;

    wave::FloatParameterBus drive;  ///< 0 to 1, from the style's low to its high
    const Style* style = nullptr;   ///< not null later than the first block; may change between blocks

protected:
    void process(const wave::BasicBlock<float>& in, wave::BasicBlock<float>* out, int samples,
                 int flags) override;

private:
    void shape(float* block, int samples);

    sr::ConverterStyleBase& converterStyle_;
    std::unique_ptr<sr::ConverterBase> interpolator_;
    std::unique_ptr<sr::ConverterBase> decimator_;
    wave::AlignedBuffer<float> oversampled_;
    wave::StreamWatch stream_;
};

/// A curve with what the drive does to it: how far it scales up, and what scales back so that a small signal
/// keeps its level. Read only once it is made.
class FunctionTableClipper::Style {
public:
    /// Drive runs from `lowDb` to `highDb`.
    Style(int transferFunction, float lowDb, float highDb);

    const WaveShaper& shaper() const { return *shaper_; }
    const FunctionTable& preScale() const { return preScale_; }
    const FunctionTable& postScale() const { return postScale_; }

private:
    class PreScaleFunction;
    class PostScaleFunction;

    double driveFactor(double place) const;

    float low_;                 ///< dB
    float high_;                ///< dB
    float testLevel_ = -60.0f;  ///< dB, of the signal that keeps its level
    float outputGain_ = 0.0f;   ///< dB
    std::unique_ptr<WaveShaper> shaper_;
    FunctionTable preScale_;
    FunctionTable postScale_;
};

}  // namespace vanta
