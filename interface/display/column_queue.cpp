#include "interface/display/column_queue.hpp"

#include <algorithm>
#include <cmath>

namespace vanta::interface {
namespace {

constexpr std::size_t kBatches = 4;

}  // namespace

void ColumnQueue::restart(const ColumnRule& rule) {
    rule_ = rule;
    extreme_ = released_ = rule.restLevel;
    collected_ = 0;
    columns_.clear();
    batches_.clear();
    jitter_ = 0;
}

void ColumnQueue::collect(const wave::AudioSource& source, int samplesPerColumn) {
    const int length = source.blockLength();
    int made = 0;
    for (int frame = 0; frame < source.frameCount(); ++frame) {
        for (int done = 0; done < length;) {
            const int run = std::min(std::max(samplesPerColumn - collected_, 1), length - done);
            for (int c = 0; c < source.channelCount(); ++c) fold(source.block(frame, c) + done, run);
            done += run;
            collected_ += run;
            if (collected_ < samplesPerColumn) continue;
            finishColumn();
            ++made;
        }
    }
    if (made > 0) noteBatch(made);
}

/// What is not a number is beyond nothing.
void ColumnQueue::fold(const float* samples, int count) {
    for (int i = 0; i < count; ++i) {
        const float level = rule_.magnitudes ? std::abs(samples[i]) : samples[i];
        if (isMoreExtreme(rule_.operation, level, extreme_)) extreme_ = level;
    }
}

void ColumnQueue::finishColumn() {
    released_ = (1.0f - rule_.release) * extreme_ + rule_.release * released_;
    if (isBeyond(rule_.operation, extreme_, released_)) released_ = extreme_;
    columns_.push_back(released_);
    extreme_ = rule_.restLevel;
    collected_ = 0;
}

void ColumnQueue::noteBatch(int columns) {
    batches_.push_back(columns);
    if (batches_.size() > kBatches) batches_.pop_front();
    jitter_ = *std::max_element(batches_.begin(), batches_.end());
}

void ColumnQueue::cutTo(int most) {
    const int excess = size() - std::max(most, 1);
    if (excess <= 0) return;
    float extreme = columns_.front();
    for (int i = 0; i < excess; ++i) {
        if (isMoreExtreme(rule_.operation, columns_.front(), extreme)) extreme = columns_.front();
        columns_.pop_front();
    }
    if (isMoreExtreme(rule_.operation, extreme, columns_.front())) columns_.front() = extreme;
}

bool ColumnQueue::take(float& level) {
    if (columns_.empty()) return false;
    level = columns_.front();
    columns_.pop_front();
    return true;
}

}  // namespace vanta::interface
