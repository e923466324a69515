#include "limiter/processor/makeup_gain.hpp"

namespace vanta {
namespace {

constexpr float kRangeDb = 30.0f;
/// The makeup stays this much below the ceiling, so that rounding on the way does not reach it.
constexpr float kMarginDb = 0.001f;

}  // namespace

MakeupGain::MakeupGain(wave::Environment& environment, wave::Producer& mainThreshold)
    : makeupLevel_(environment, 0.0f),
      makeupSum_(environment, {{1.0f, &makeupLevel_}, {-1.0f, &mainThreshold}}),
      makeupConverter_(environment),
      makeupDelay_(environment),
      ceilingConverter_(environment),
      ceilingDelay_(environment, 1.0f) {
    makeupLevel_.parameter().setRange(-kRangeDb - kMarginDb, kRangeDb);
    makeupConverter_.source = &makeupSum_;
    makeupConverter_.conversion = DBConverter::DbToAmplitude;
    makeupDelay_.source = &makeupConverter_;
    ceilingConverter_.source = &makeupLevel_;
    ceilingConverter_.conversion = DBConverter::DbToAmplitude;
    ceilingDelay_.source = &ceilingConverter_;
}

void MakeupGain::setOutputLevel(float db) {
    makeupLevel_.assign(db - kMarginDb, nullptr);
}

void MakeupGain::setDelay(int samples) {
    makeupDelay_.setDelay(samples);
    ceilingDelay_.setDelay(samples);
}

void MakeupGain::setMaxDelay(int samples) {
    makeupDelay_.setMaxDelay(samples);
    ceilingDelay_.setMaxDelay(samples);
}

}  // namespace vanta
