#include "limiter/processor/level_signals.hpp"

#include <algorithm>

#include "foundation/numbers.hpp"

namespace vanta {
namespace {

constexpr float kRangeDb = 30.0f;
/// The makeup stays this much below the ceiling, so that rounding on the way does not reach it.
constexpr float kMarginDb = 0.001f;
constexpr float kUnityGlideMs = 20.0f;
constexpr auto kFirst = wave::DelayFilter::Past::FirstValue;

}  // namespace

class LevelSignals::Trim final : public wave::Source {
public:
    Trim(wave::Producer& makeupDb, wave::Producer& share)
        : Source(share.environment()), makeupDb_(makeupDb), share_(share) {}

protected:
    bool settled() const override { return true; }
    void produce(wave::BasicBlock<float>* block, int samples, int) override {
        const float* makeup = makeupDb_.pullData(samples);
        const float* share = share_.pullData(samples);
        const auto gain = [&](int i) {
            return static_cast<float>(gainFromDb(-double{makeup[i] + kMarginDb} * double{share[i]}));
        };
        float* out = block->data();
        const bool constant = makeupDb_.isConstant() && share_.isConstant();
        if (constant) {
            std::fill(out, out + samples, gain(0));
        } else {
            for (int i = 0; i < samples; ++i) out[i] = gain(i);
        }
        setConstant(constant);
    }

private:
    wave::Producer& makeupDb_;
    wave::Producer& share_;
};

LevelSignals::LevelSignals(wave::Environment& engine, sr::ConverterStyle& style,
                           wave::Producer& mainThreshold)
    : level_(engine, 0.0f),
      makeupSum_(engine, {{1.0f, &level_}, {-1.0f, &mainThreshold}}),
      makeup_(engine),
      makeupDelay_(engine),
      ceilingLevel_(engine, 0.0f),
      ceiling_(engine),
      enginePathOfCeiling_(engine, kFirst),
      ceilingDecimator_(style),
      ceilingDelay_(style.environment(), kFirst),
      unityShare_(engine, 0.0f),
      trim_(std::make_unique<Trim>(makeupSum_, unityShare_)),
      enginePathOfTrim_(engine, kFirst),
      trimDecimator_(style),
      trimDelay_(style.environment(), kFirst),
      ceilingAtOutput_(style.environment(), kFirst),
      target_(style.environment(), 2) {
    // Of the same range, that is, along the same ramps.
    for (wave::FloatParameterSource* level : {&level_, &ceilingLevel_}) {
        level->parameter().setRange(-kRangeDb - kMarginDb, kRangeDb);
    }
    makeup_.source = &makeupSum_;
    makeup_.conversion = DBConverter::DbToAmplitude;
    makeupDelay_.source = &makeup_;

    ceiling_.source = &ceilingLevel_;
    ceiling_.conversion = DBConverter::DbToAmplitude;
    enginePathOfCeiling_.source = &ceiling_;
    ceilingDecimator_.source = &enginePathOfCeiling_;
    ceilingDelay_.source = &ceilingDecimator_;

    unityShare_.parameter().slowTime = kUnityGlideMs;
    enginePathOfTrim_.source = trim_.get();
    trimDecimator_.source = &enginePathOfTrim_;
    trimDelay_.source = &trimDecimator_;

    ceilingAtOutput_.source = &ceilingDecimator_;
    target_.operation = Mixer::Multiply;
    target_.setInput(0, &ceilingAtOutput_);
    target_.setInput(1, &trimDelay_);
}

LevelSignals::~LevelSignals() = default;

void LevelSignals::setOutputLevel(float db) {
    level_.assign(db - kMarginDb, nullptr);
    ceilingLevel_.assign(db, nullptr);
}

void LevelSignals::setUnityGain(bool on) {
    unityShare_.assign(on ? 1.0f : 0.0f, nullptr);
}

void LevelSignals::setDelays(const SignalPathDelays& delays) {
    makeupDelay_.setDelay(delays.engine);
    enginePathOfCeiling_.setDelay(delays.engine + delays.pad);
    enginePathOfTrim_.setDelay(delays.engine + delays.pad);
    ceilingDelay_.setDelay(delays.detection);
    trimDelay_.setDelay(delays.meter);
    ceilingAtOutput_.setDelay(delays.meter);
}

void LevelSignals::setDelayLimits(const SignalPathLimits& limits) {
    makeupDelay_.setMaxDelay(limits.engine);
    enginePathOfCeiling_.setMaxDelay(limits.engine + limits.pad);
    enginePathOfTrim_.setMaxDelay(limits.engine + limits.pad);
    for (wave::DelayFilter* delay : {&ceilingDelay_, &trimDelay_, &ceilingAtOutput_}) {
        delay->setMaxDelay(limits.meter);
    }
}

}  // namespace vanta
