#include "limiter/clippers/overshoot_limiter.hpp"

#include <algorithm>
#include <cmath>

#include "foundation/numbers.hpp"
#include "kernel/mix.hpp"
#include "kernel/scan.hpp"

namespace vanta {
namespace {

/// Reductions are held for as long as the smoothing window, so that each is whole when its peak arrives.
constexpr float kWindowMs = 1.33f;
/// Transform size of the smoother, and its latency in samples.
constexpr int kConvolverBase = 128;
/// What is taken beyond the exact gain, at most.
constexpr float kMargin = 0.004f;

/// What brings a sample down to the ceiling.
float hardGain(float sample, float ceiling) {
    // A gain that was rounded up may lift the product one step above the ceiling.
    constexpr float kStepDown = 1.0f - 0x1p-23f;
    const float magnitude = std::max(std::abs(sample), ceiling);
    const float gain = ceiling / magnitude;
    return magnitude * gain > ceiling ? gain * kStepDown : gain;
}

/// The share of a sample that must go.
float reduction(float sample, float ceiling) {
    const float excess = std::max(std::abs(sample) - ceiling, 0.0f);
    return 1.0f - ceiling / (ceiling + excess) * (1.0f - std::min(excess, kMargin));
}

int windowSamples(double sampleRate) {
    return samplesInMs(double{kWindowMs}, sampleRate);
}

}  // namespace

OvershootLimiter::Style::Style(wave::Environment& owner)
    : plan_(1 + windowSamples(owner.sampleRate()), kConvolverBase), kernel_(owner, plan_) {
    kernel_.shape = SmoothingKernel::Classic;
    kernel_.smoothing.parameter().setValue(1.0f, 0.0f);
    kernel_.windowSize.parameter().setRange(0.0f, kWindowMs);
    kernel_.windowSize.parameter().setValue(kWindowMs, 0.0f);
}

class OvershootLimiter::Reduction final : public wave::Source {
public:
    explicit Reduction(const OvershootLimiter& limiter) : Source(limiter.environment()), limiter_(limiter) {}

protected:
    bool settled() const override { return true; }
    void produce(wave::BasicBlock<float>* block, int samples, int) override {
        const float* in = limiter_.source->pullData(samples);
        float* out = block->data();
        if (const float* ceilings = limiter_.movingCeilings_) {
            environment().noteRead(false);
            for (int i = 0; i < samples; ++i) out[i] = reduction(in[i], ceilings[i]);
            return;
        }
        const float ceiling = limiter_.linearCeiling_;
        if (kernel::highestMagnitude(in, static_cast<std::size_t>(samples)) <= ceiling) {
            publishSilence();
            return;
        }
        for (int i = 0; i < samples; ++i) out[i] = reduction(in[i], ceiling);
    }

private:
    const OvershootLimiter& limiter_;
};

OvershootLimiter::OvershootLimiter(wave::Environment& owner, Style& style)
    : Filter(owner),
      ceiling(this, 0.0f),
      mode(this, Smooth),
      unity_(owner, 1.0f),
      reduction_(std::make_unique<Reduction>(*this)),
      hold_(owner, kWindowMs) {
    hold_.source = reduction_.get();
    hold_.hold.parameter().setValue(kWindowMs, 0.0f);
    setStyle(style);
}

OvershootLimiter::~OvershootLimiter() = default;

int OvershootLimiter::delaySamples(double sampleRate) {
    return kConvolverBase + windowSamples(sampleRate);
}

void OvershootLimiter::setStyle(Style& style) {
    smoother_ = std::make_unique<Convolver>(environment(), style.kernel());
    smoother_->source = &hold_;
}

void OvershootLimiter::propertyChanged(AbstractProperty& property) {
    environment().noteChange();
    if (&property == &ceiling) linearCeiling_ = static_cast<float>(gainFromDb(double{ceiling}));
}

void OvershootLimiter::process(const wave::BasicBlock<float>& in, wave::BasicBlock<float>* out, int samples,
                               int) {
    movingCeilings_ = pullMovingCeilings(samples);
    switch (mode) {
        case Smooth:
            limitSmoothly(out->data(), samples);
            break;
        case Hard:
            limitHard(in.data(), out->data(), samples);
            break;
        default:
            publish(unity_, kConstant);
    }
}

void OvershootLimiter::limitSmoothly(float* out, int samples) {
    const float* reduced = smoother_->pullData(samples);
    kernel::subtract(unity_.data(), reduced, out, static_cast<std::size_t>(samples));
    setConstant(smoother_->isConstant());
}

void OvershootLimiter::limitHard(const float* in, float* out, int samples) {
    for (int i = 0; i < samples; ++i) {
        out[i] = hardGain(in[i], movingCeilings_ ? movingCeilings_[i] : linearCeiling_);
    }
}

const float* OvershootLimiter::pullMovingCeilings(int samples) const {
    if (!movingCeiling) return nullptr;
    const float* ceilings = movingCeiling->pullData(samples);
    return movingCeiling->isConstant() ? nullptr : ceilings;
}

}  // namespace vanta
