#include "dsp/sr/converter_style.hpp"

#include "dsp/sr/decimator.hpp"
#include "dsp/sr/interpolator.hpp"
#include "foundation/numbers.hpp"

namespace vanta::sr {

ConverterStyle::ConverterStyle(wave::Environment& base, int factor, float stopAttenuation, float passbandEdge)
    : ConverterStyleBase(base),
      attenuation(nullptr, stopAttenuation),
      passband(nullptr, passbandEdge),
      factor_(factor) {}

ConverterStyle::ConverterStyle(wave::SubEnvironment& oversampled) : ConverterStyle(oversampled.parent(), 1) {
    subEnvironment_ = &oversampled;
}

std::unique_ptr<ConverterBase> ConverterStyle::createDecimator() {
    return std::make_unique<Decimator>(*this);
}

std::unique_ptr<ConverterBase> ConverterStyle::createInterpolator() {
    return std::make_unique<Interpolator>(*this);
}

int ConverterStyle::latency(int factor) const {
    return filterLatency(factor, static_cast<double>(environment().sampleRate()),
                         static_cast<double>(attenuation.value()), static_cast<double>(passband.value()));
}

void ConverterStyle::setFactor(int factor) {
    const int before = this->factor();
    factor_ = factor;
    if (this->factor() == before) return;
    environment().prepareNodes();
    environment().resetGraph(wave::ResetMode::ResetActiveLocal);
}

bool ConverterStyle::designed() const {
    return sets_[WideFull].length > 0 && nearlyEqual(environment().sampleRate(), designRate_) &&
           attenuation == designAttenuation_ && passband == designPassband_;
}

void ConverterStyle::update() {
    if (!designed()) design();
    lines_.resize(FIRStage::mostPast(factor(), longestLength(NarrowFull)),
                  environment().maxBlockSize() * factor() + kRoundingRoom);
}

void ConverterStyle::design() {
    designRate_ = environment().sampleRate();
    designAttenuation_ = attenuation;
    designPassband_ = passband;
    const double stop = static_cast<double>(designAttenuation_);
    const float narrow = narrowTransition(designRate_, designPassband_);
    sets_[WideFull] = designHalfBand(halfBandLength(kWideTransition, stop), stop);
    sets_[NarrowFull] = designHalfBand(halfBandLength(narrow, stop), stop);
    sets_[NarrowBranch] = polyphaseBranch(sets_[NarrowFull]);
    sets_[WideBranch] = polyphaseBranch(sets_[WideFull]);
}

int ConverterStyle::longestLength(int index) const {
    const bool wide = index == WideFull || index == WideBranch;
    const bool branch = index == NarrowBranch || index == WideBranch;
    const int full = halfBandLength(wide ? kWideTransition : kNarrowestTransition,
                                    static_cast<double>(attenuation.value()));
    return branch ? (full - 1) / 2 : full;
}

}  // namespace vanta::sr
