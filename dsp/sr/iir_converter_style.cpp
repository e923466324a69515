#include "dsp/sr/iir_converter_style.hpp"

#include <algorithm>

#include "dsp/sr/elliptic_half_band.hpp"
#include "dsp/sr/iir_converter.hpp"
#include "foundation/numbers.hpp"

namespace vanta::sr {

namespace {

/// Hz, with room for a rate that is not quite round.
constexpr double kHighestRate = 384001.0;

/// How a stage is designed whose higher rate is at most `upTo` Hz.
struct StageForm {
    double upTo;
    int order;
    double passbandEdge;  ///< radians per sample of the higher rate
};

// Next to the base rate the pass band reaches up to about 20 kHz and the aliases come close; above there is
// room. A long chain has more stages behind that sharp one, which leaves it less of the delay.
constexpr StageForm kLongChain[] = {
    {88201.0, 13, 1.4891149}, {96001.0, 11, 1.3948672}, {kHighestRate, 7, 1.0367255}};
constexpr StageForm kShortChain[] = {{96001.0, 13, 1.3823007}, {kHighestRate, 7, 1.0367255}};

std::vector<float> designStage(std::span<const StageForm> forms, double higherRate) {
    for (const StageForm& form : forms) {
        if (higherRate <= form.upTo) return designEllipticHalfBand(form.order, form.passbandEdge);
    }
    return {};
}

}  // namespace

IIRConverterStyle::IIRConverterStyle(wave::SubEnvironment& oversampled)
    : IIRConverterStyle(oversampled.parent()) {
    subEnvironment_ = &oversampled;
}

std::unique_ptr<ConverterBase> IIRConverterStyle::createDecimator() {
    return std::make_unique<IIRDecimator>(*this);
}

std::unique_ptr<ConverterBase> IIRConverterStyle::createInterpolator() {
    return std::make_unique<IIRInterpolator>(*this);
}

// By the low frequencies, rounded: the delay grows toward the edge of the pass band.
int IIRConverterStyle::latency(int factor) const {
    const double rate = static_cast<double>(environment().sampleRate());
    if (factor != 2 && factor != 4 && factor != 8) return 0;
    if (rate > 192001.0) return 0;
    if (factor == 2) return rate <= 48001.0 ? 3 : 2;
    return rate <= 48001.0 ? 4 : rate <= 96001.0 ? 3 : 2;
}

void IIRConverterStyle::setFactor(int factor) {
    const int before = this->factor();
    wantedFactor_ = factor;
    if (this->factor() == before) return;
    environment().prepareNodes();
    environment().resetGraph(wave::ResetMode::ResetActiveLocal);
}

int IIRConverterStyle::stageCount() const {
    const int wanted = std::min(subEnvironment_ ? subEnvironment_->factor() : wantedFactor_, kMaxFactor);
    const double rate = static_cast<double>(environment().sampleRate());
    int count = 0;
    for (int factor = 2; factor <= wanted && factor * rate <= kHighestRate; factor *= 2) ++count;
    return count;
}

std::span<const float> IIRConverterStyle::stage(int index) const {
    const Chain& chain = stageCount() == kMaxStages ? longChain_ : shortChain_;
    return chain[static_cast<std::size_t>(index)];
}

void IIRConverterStyle::update() {
    const float rate = environment().sampleRate();
    if (nearlyEqual(rate, designRate_)) return;
    designRate_ = rate;
    for (std::size_t i = 0; i < kMaxStages; ++i) {
        const double higherRate = static_cast<double>(rate) * (2 << i);
        longChain_[i] = designStage(kLongChain, higherRate);
        shortChain_[i] = designStage(kShortChain, higherRate);
    }
}

}  // namespace vanta::sr
