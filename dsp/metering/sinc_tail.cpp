#include "dsp/metering/sinc_tail.hpp"

#include <algorithm>
#include <numbers>

#include "kernel/convolver_kernels.hpp"
#include "kernel/mix.hpp"

namespace vanta {

namespace {

/// Flat over the nearer half, then a raised cosine: what a window rounds off far from the middle would be
/// missing from a long tone at half the sample rate.
double outermostWindow(double place) {
    const double fall = std::clamp(2.0 * std::abs(place) - 1.0, 0.0, 1.0);
    return 0.5 + 0.5 * std::cos(std::numbers::pi * fall);
}

}  // namespace

SincTail::SincTail(std::span<const double> reaches, double spacing)
    : halfLength_(static_cast<std::size_t>(reaches[1] / (spacing * kFactor))),
      beyond_(reaches.size() > 2 ? std::make_unique<SincTail>(reaches.subspan(1), spacing * kFactor)
                                 : nullptr),
      taps_(2 * halfLength_ + 1),
      coarse_(innerDelay() + halfLength_ + kMostSamples) {
    const double step = spacing * kFactor;
    for (std::size_t i = 0; i < taps_.size(); ++i) {
        const double t = step * (static_cast<double>(i) - static_cast<double>(halfLength_));
        if (t == 0.0) continue;
        const double outer = beyond_ ? kaiserWindow(t / reaches[1]) : outermostWindow(t / reaches[1]);
        const double ring = outer - kaiserWindow(t / reaches[0]);
        taps_[i] = static_cast<float>(step * ring / (std::numbers::pi * t));
    }
}

void SincTail::process(std::span<const float> in, float* out) {
    std::array<float, kMostSamples> work;
    std::array<float, kMostSamples> stepped;
    std::copy(in.begin(), in.end(), work.begin());
    std::size_t count = in.size();
    for (StepDown& step : down_) {
        step.process({work.data(), count}, stepped.data());
        std::swap(work, stepped);
        count /= 2;
    }
    std::copy_n(work.data(), count, coarse_.append(count));
    // The middle of the kernel lies where the scales beyond have got to.
    const float* newest = coarse_.before(innerDelay() - halfLength_ + count - 1);
    kernel::fir(newest, taps_.data(), taps_.size(), stepped.data(), count);
    if (beyond_) {
        std::array<float, kMostSamples> far;
        beyond_->process({work.data(), count}, far.data());
        kernel::add(stepped.data(), far.data(), stepped.data(), count);
    }
    for (StepUp& step : up_) {
        step.process({stepped.data(), count}, work.data());
        std::swap(work, stepped);
        count *= 2;
    }
    std::copy_n(stepped.data(), count, out);
}

}  // namespace vanta
