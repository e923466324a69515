#include "dsp/saturator/function_table_clipper.hpp"

#include <algorithm>

#include "foundation/numbers.hpp"
#include "kernel/mix.hpp"
#include "kernel/wave_shaper_kernels.hpp"

namespace vanta {

class FunctionTableClipper::Style::PreScaleFunction final : public FunctionTableFunction {
public:
    explicit PreScaleFunction(const Style& style) : style_(style) {}
    double operator()(double place) const override { return style_.driveFactor(place); }

private:
    const Style& style_;
};

/// The inverse of what a small signal gains from the curve's input to its output, on average of both signs. A
/// negative half that is folded up or gives nothing does not count.
class FunctionTableClipper::Style::PostScaleFunction final : public FunctionTableFunction {
public:
    explicit PostScaleFunction(const Style& style) : style_(style) {}
    double operator()(double place) const override {
        const double level = gainFromDb(double{style_.testLevel_});
        const double driven = style_.driveFactor(place) * level;
        const double above = style_.shaper_->curve(driven);
        const double below = style_.shaper_->curve(-driven);
        const double mean = (above - std::min(below, 0.0)) / 2;
        return level / mean * gainFromDb(double{style_.outputGain_});
    }

private:
    const Style& style_;
};

FunctionTableClipper::Style::Style(int transferFunction, float lowDb, float highDb)
    : low_(lowDb),
      high_(highDb),
      shaper_(makeWaveShaper(transferFunction)),
      preScale_(PreScaleFunction(*this)),
      postScale_(PostScaleFunction(*this)) {}

double FunctionTableClipper::Style::driveFactor(double place) const {
    return gainFromDb(double{low_} + (double{high_} - double{low_}) * place);
}

FunctionTableClipper::FunctionTableClipper(wave::Environment& owner, sr::ConverterStyleBase& converterStyle)
    : Filter(owner),
      drive(owner, 0.5f, 0.0f, 1.0f),
      converterStyle_(converterStyle),
      interpolator_(converterStyle.createInterpolator()),
      decimator_(converterStyle.createDecimator()) {
    makeResettable();
}

void FunctionTableClipper::prepare() {
    interpolator_->update();
    decimator_->update();
    const int factor = converterStyle_.factor();
    oversampled_.resize(factor > 1 ? environment().maxBlockSize() * factor : 0);
}

void FunctionTableClipper::reset() {
    interpolator_->reset();
    decimator_->reset();
}

void FunctionTableClipper::shape(float* block, int samples) {
    const int factor = converterStyle_.factor();
    if (factor < 2) return style->shaper().shape(block, block, samples);
    interpolator_->convert(block, oversampled_.data(), samples);
    style->shaper().shape(oversampled_.data(), oversampled_.data(), samples * factor);
    decimator_->convert(oversampled_.data(), block, samples);
}

void FunctionTableClipper::process(const wave::BasicBlock<float>& in, wave::BasicBlock<float>* out,
                                   int samples, int) {
    if (!stream_.follows(environment(), samples)) reset();
    const float* place = drive.pullData(samples);
    const bool steady = drive.isConstant();
    // What is constant goes through the curve once; converters ring, and need it all.
    const bool constant = steady && source->isConstant() && converterStyle_.factor() < 2;
    const auto count = static_cast<std::size_t>(constant ? 1 : samples);
    const auto scale = [&](const float* from, const FunctionTable& table) {
        if (steady) {
            kernel::scale(from, table.lookUp(place[0]), out->data(), count);
        } else {
            kernel::scaleByTable(from, place, table.values().data(), FunctionTable::kPoints, out->data(),
                                 count);
        }
    };
    scale(in.data(), style->preScale());
    shape(out->data(), static_cast<int>(count));
    scale(out->data(), style->postScale());
    if (!constant) return;
    kernel::fill((*out)[0], out->data(), static_cast<std::size_t>(samples));
    setConstant(true);
}

}  // namespace vanta
