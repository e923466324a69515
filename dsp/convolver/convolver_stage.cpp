#include "dsp/convolver/convolver_stage.hpp"

#include <algorithm>
#include <memory>

#include "kernel/convolver_kernels.hpp"
#include "kernel/mix.hpp"

namespace vanta {

ConvolverStretch ConvolverStretch::part(int first, int partCount) const {
    return {time + first,
            partCount,
            in + first,
            constant,
            out + first,
            fade + first,
            std::clamp(fadeCount - first, 0, partCount),
            add};
}

ConvolverStage::ConvolverStage(const ConvolverPlan& node, int stage)
    : node_(node),
      stage_(stage),
      period_(node.partitionSize()),
      work_(node.fftSize()),
      halves_{InputHalf(period_), InputHalf(period_), InputHalf(period_)},
      slots_(static_cast<std::size_t>(node.partitionCount())),
      spectra_(node.partitionCount() * node.fftSize()),
      transform_(&schedule_.add(std::make_unique<FFTCalculateTask>(node.fft(), work_))),
      rows_{Row{nullptr, nullptr, {Result(node.fftSize()), Result(node.fftSize())}},
            Row{nullptr, nullptr, {Result(node.fftSize()), Result(node.fftSize())}}} {
    for (Row& row : rows_) {
        row.multiply = &schedule_.add(std::make_unique<FFTMultiplyTask>(node.fft(), node.partitionCount()));
    }
    for (Row& row : rows_) {
        row.inverse = &schedule_.add(std::make_unique<FFTCalculateInverseTask>(node.fft(), work_));
    }
    schedule_.setDuration(period_);
    reset();
}

void ConvolverStage::reset() {
    for (InputHalf& each : halves_) each.setConstant(0.0f);
    std::fill(slots_.begin(), slots_.end(), Slot());
    transform_->skip();
    for (Row& row : rows_) {
        row.multiply->clear();
        row.inverse->skip();
        for (Result& result : row.results) {
            result.constant = true;
            result.value = 0.0f;
        }
    }
    schedule_.restart();
}

void ConvolverStage::process(const ConvolverStretch& stretch, const KernelTransition& transition) {
    int count = 0;
    for (int done = 0; done < stretch.count; done += count) {
        const std::int64_t time = stretch.time + done;
        const auto phase = static_cast<int>(time & (period_ - 1));
        if (phase == 0 && time > 0) turn(time, transition);
        count = std::min(stretch.count - done, period_ - phase);
        const ConvolverStretch part = stretch.part(done, count);
        half(0).take(phase, part.in, count, part.constant);
        schedule_.advance(count);
        play(rows_[kMain], phase, part.out, count, part.add);
        if (part.fadeCount > 0) play(rows_[kFading], phase, part.fade, part.fadeCount, part.add);
    }
}

// The end of a period: what was computed in it plays next, and the partition that came in is worked on.
void ConvolverStage::turn(std::int64_t time, const KernelTransition& transition) {
    playing_ = 1 - playing_;
    head_ = (head_ + node_.partitionCount() - 1) % node_.partitionCount();
    planTransform();
    const std::int64_t played = time + period_;
    planRow(rows_[kMain], transition.main(played), computed(rows_[kMain]));
    planRow(rows_[kFading], transition.fading(played), computed(rows_[kFading]));
    schedule_.restart();
    half_ = (half_ + 2) % 3;
}

// A turn at this very time is yet to come.
void ConvolverStage::wake(std::int64_t time, const KernelTransition& transition) {
    const std::int64_t playing = (time - 1) / period_ * period_;
    for (const std::int64_t played : {playing, playing + period_}) {
        const auto place = static_cast<std::size_t>(played == playing ? playing_ : 1 - playing_);
        planRow(rows_[kMain], transition.main(played), rows_[kMain].results[place]);
        planRow(rows_[kFading], transition.fading(played), rows_[kFading].results[place]);
    }
}

void ConvolverStage::planTransform() {
    InputHalf& newest = half(0);
    InputHalf& before = half(1);
    Slot& slot = slots_[static_cast<std::size_t>(head_)];
    slot.value = newest.value();
    slot.constant = newest.constant() && before.constant() && newest.value() == before.value();
    if (slot.constant) {
        transform_->skip();
    } else {
        transform_->set(before.data(), newest.data(), spectra_.data() + head_ * node_.fftSize());
    }
}

void ConvolverStage::planRow(Row& row, const KernelVersion* version, Result& result) {
    row.multiply->clear();
    const int partitions = version ? node_.partitionsFor(version->length) : 0;
    for (int j = 0; j < partitions; ++j) {
        const int index = slotIndex(j);
        const Slot& slot = slots_[static_cast<std::size_t>(index)];
        const float* kernel = version->spectrum(stage_, j);
        if (slot.constant) {
            row.multiply->addConstant(slot.value, kernel);
        } else {
            row.multiply->add(spectra_.data() + index * node_.fftSize(), kernel);
        }
    }
    result.constant = row.multiply->constant();
    result.value = row.multiply->constantValue();
    if (result.constant) {
        row.inverse->skip();
    } else {
        row.inverse->set(row.multiply->sum(), result.block.data());
    }
}

void ConvolverStage::play(const Row& row, int phase, float* out, int count, bool add) const {
    const Result& result = row.results[static_cast<std::size_t>(playing_)];
    const auto n = static_cast<std::size_t>(count);
    const float* block = result.block.data() + period_ + phase;
    const float scale = 1.0f / static_cast<float>(node_.fftSize());
    if (!add) {
        if (result.constant) {
            kernel::fill(result.value, out, n);
        } else {
            kernel::scale(block, scale, out, n);
        }
    } else if (!result.constant) {
        kernel::addScaled(out, block, scale, out, n);
    } else if (result.value != 0.0f) {
        kernel::addConstant(out, result.value, out, n);
    }
}

}  // namespace vanta
