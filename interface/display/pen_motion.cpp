#include "interface/display/pen_motion.hpp"

#include <algorithm>

namespace vanta::interface {
namespace {

constexpr float kLeastDrift = 0.25f;
constexpr float kJumpShare = 0.7f;  ///< of the width
constexpr float kJumpMs = 600.0f;

}  // namespace

void PenMotion::reset(float width) {
    rest(width);
    state_ = State::Fresh;
}

void PenMotion::rest(float width) {
    easeFrames_ = easeCount_ = 1;
    lastEase_ = 1.0f;
    pen_ = width;
    state_ = State::Resting;
}

bool PenMotion::advance(const Frame& frame) {
    if (frame.drift <= kLeastDrift) {
        // Should it drift later on, it leaves a full picture, which must not jump at once.
        state_ = State::Running;
        pen_ = std::min(pen_ + frame.step, frame.width);
        return false;
    }
    ++easeCount_;
    const float t = std::min(static_cast<float>(easeCount_ - 1) / static_cast<float>(easeFrames_), 1.0f);
    const float eased = ease_.valueAt(t);
    pen_ += frame.drift * frame.step - (eased - lastEase_) * kJumpShare * frame.width;
    lastEase_ = eased;
    return easeCount_ >= easeFrames_ && isAtEdge(frame.width) && jumpBack(frame);
}

bool PenMotion::jumpBack(const Frame& frame) {
    easeFrames_ = std::max(static_cast<int>(kJumpMs / frame.frameMs), 1);
    if (state_ == State::Running) {
        easeCount_ = 0;
        lastEase_ = 0.0f;
        return false;
    }
    easeCount_ = easeFrames_;
    lastEase_ = 1.0f;
    pen_ -= kJumpShare * frame.width;
    const bool wasResting = state_ == State::Resting;
    state_ = State::Running;
    return wasResting;
}

}  // namespace vanta::interface
