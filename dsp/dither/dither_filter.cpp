#include "dsp/dither/dither_filter.hpp"

#include <algorithm>
#include <array>
#include <cmath>

#include "dsp/dither/dither_seed.hpp"
#include "foundation/numbers.hpp"

namespace vanta {

namespace {

/// The range of a ceiling.
constexpr float kLowestCeilingDb = -60.0f;
constexpr double kLowestCeiling = 0.001;

constexpr int kMostBits = 24;  // what a float carries

constexpr std::array<double, 2> kBasic = {-0.5, 1.0};
constexpr std::array<double, 12> kOptimized = {0.003067,  -0.00616555, 0.00123066, 0.0285161,
                                               -0.106726, 0.267859,    -0.557931,  0.926704,
                                               -1.36613,  1.64436,     -1.59032,   1.47933};
constexpr std::array<double, 9> kWeighted = {0.0847, -0.569, 1.281, -2.205, 3.353,
                                             -4.174, 3.937,  -3.37, 2.412};

std::span<const double> coefficientsOf(int shaping) {
    switch (shaping) {
        case DitherFilter::Basic:
            return kBasic;
        case DitherFilter::Optimized:
            return kOptimized;
        case DitherFilter::Weighted:
            return kWeighted;
        default:
            return {};
    }
}

}  // namespace

DitherFilter::DitherFilter(wave::Environment& owner)
    : Filter(owner),
      bits(this, kMostBits),
      ceiling(this, kLowestCeilingDb, 0.0f, 0.0f),
      noiseShaping(this, Optimized),
      noiseType(this, Triangular),
      errors_(kHistory),
      generator_(nextDitherSeed() + 1),
      movingGains_(owner) {
    makeResettable();
    derive();
}

void DitherFilter::derive() {
    shaping_ = coefficientsOf(noiseShaping);
    gain_ = 1.0;
    margin_ = 0.0;
    lsb_ = 0.0f;
    if (bits < 1) return;
    scale_ = std::ldexp(1.0, std::min<int>(bits, kMostBits) - 1);
    lsb_ = static_cast<float>(1.0 / scale_);
    const auto step = static_cast<double>(lsb_);
    margin_ = step / 2.0;
    if (noiseType == Triangular) {
        // Dither and rounding err by at most 1.5 steps, and each error comes back through the set.
        const double worst = 1.5 * step;
        margin_ = worst;
        for (const double c : shaping_) margin_ += std::abs(c * worst);
    }
    gain_ = gainBelow(gainFromDb(static_cast<double>(ceiling.value())));
}

double DitherFilter::gainBelow(double limit) const {
    return std::max(limit - margin_, 0.0) / limit;
}

const float* DitherFilter::pullMovingGains(int samples) {
    if (!movingCeiling) return nullptr;
    const float* ceilings = movingCeiling->pullData(samples);
    if (movingCeiling->isConstant()) return nullptr;
    for (int i = 0; i < samples; ++i) {
        movingGains_[i] = static_cast<float>(gainBelow(std::clamp<double>(ceilings[i], kLowestCeiling, 1.0)));
    }
    return movingGains_.data();
}

void DitherFilter::process(const wave::BasicBlock<float>& in, wave::BasicBlock<float>* out, int samples,
                           int) {
    const float* gains = pullMovingGains(samples);
    if (bits < 1) {
        publishInput();
    } else if (noiseType == Triangular) {
        dither(in.data(), out->data(), samples, gains);
    } else {
        round(in.data(), out->data(), samples, gains);
    }
}

void DitherFilter::round(const float* in, float* out, int samples, const float* gains) const {
    const auto step = static_cast<double>(lsb_);
    for (int i = 0; i < samples; ++i) {
        const double factor = (gains ? double{gains[i]} : gain_) * scale_;
        out[i] = static_cast<float>(std::floor(static_cast<double>(in[i]) * factor + 0.5) * step);
    }
}

void DitherFilter::dither(const float* in, float* out, int samples, const float* gains) {
    const auto step = static_cast<double>(lsb_);
    const auto taps = static_cast<int>(shaping_.size());
    for (int i = 0; i < samples; ++i) {
        const float* errors = errors_.newest(taps);
        double fedBack = 0.0;
        for (int k = 0; k < taps; ++k) {
            fedBack += shaping_[static_cast<std::size_t>(k)] * static_cast<double>(errors[k]);
        }
        const double gain = gains ? double{gains[i]} : gain_;
        const double value = (static_cast<double>(in[i]) - fedBack) * gain;
        const double noisy = value + static_cast<double>(triangularNoise());
        const auto result = static_cast<float>(std::floor(noisy * scale_ + 0.5) * step);
        errors_.push(static_cast<float>(static_cast<double>(result) - value));
        out[i] = result;
    }
}

}  // namespace vanta
