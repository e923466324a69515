#include "plugin/processor/dry_path.hpp"

#include <algorithm>

#include "kernel/mix.hpp"

namespace vanta {
namespace {

constexpr float kMoveMs = 20.0f;

}  // namespace

DryPath::DryPath(wave::Environment& environment, int channels)
    : move_(environment, 1.0f), scratch_(environment) {
    for (int c = 0; c < channels; ++c) delays_.push_back(std::make_unique<wave::Delay>(environment));
}

void DryPath::prepare(int largest) {
    for (auto& delay : delays_) delay->setMaxDelay(largest);
    latency_ = std::min(latency_, largest);
    move_.jumpToTarget();
}

void DryPath::clear() {
    for (auto& delay : delays_) delay->clear();
    move_.jumpToTarget();
}

void DryPath::beginBlock(int latency, bool heard, int samples) {
    if (latency != latency_ && !(heard && move_.isMoving())) {
        before_ = latency_;
        latency_ = latency;
        move_.setValue(0.0f, 0.0f);
        move_.setValue(1.0f, heard ? kMoveMs : 0.0f);
    }
    bool atRest = false;
    const float* mix = move_.read(samples, &atRest).data();
    mix_ = atRest ? nullptr : mix;
}

void DryPath::write(int channel, const float* input, int samples) {
    if (input) {
        kernel::sanitize(input, scratch_.data(), static_cast<std::size_t>(samples));
    } else {
        std::fill(scratch_.data(), scratch_.data() + samples, 0.0f);
    }
    delays_[static_cast<std::size_t>(channel)]->write(scratch_.data(), samples);
}

void DryPath::read(int channel, float* out, int samples) {
    const wave::Delay& delay = *delays_[static_cast<std::size_t>(channel)];
    delay.read(latency_, out, samples);
    if (!mix_) return;
    delay.read(before_, scratch_.data(), samples);
    kernel::crossfade(scratch_.data(), out, mix_, out, static_cast<std::size_t>(samples));
}

}  // namespace vanta
