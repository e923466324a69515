#include "limiter/engine/staged_control.hpp"

#include <algorithm>

namespace vanta {
namespace {

/// By how much one course changes the lead, and below which time any change is small.
constexpr float kStep = 2.0f;
constexpr float kSmallMs = 0.2f;

float stepTowards(float wanted, float from) {
    if (wanted > from) return std::min(wanted, std::max(from * kStep, kSmallMs));
    return std::max(wanted, from > kSmallMs ? from / kStep : 0.0f);
}

}  // namespace

float LookAheadCourse::shareAt(int index, int samples) {
    if (!lead) return 1.0f;
    const std::int64_t position = lead->environment().position() + index;
    if (position == begin_) return share_;
    begin_ = position;
    const float wanted = lead->source->pullData(samples)[index];
    const float from = lead->aim();
    share_ = wanted == from ? 1.0f : (stepTowards(wanted, from) - from) / (wanted - from);
    return share_;
}

StagedControl::StagedControl(wave::Environment& owner, Role role, int target, wave::Producer& control)
    : Filter(owner), role_(role), target_(target) {
    source = &control;
}

void StagedControl::follow(LookAheadCourse* course) {
    if (course == course_) return;
    environment().noteChange();
    stream_.forget();
    course_ = course;
}

void StagedControl::process(const wave::BasicBlock<float>& in, wave::BasicBlock<float>* out, int samples,
                            int) {
    const std::int64_t position = environment().position();
    if (!stream_.follows(*this, samples) || position == environment().resetPosition()) {
        old_ = new_ = window_ = in[0];
    }
    const bool arrived = old_ == new_ && window_ == new_;
    if (!course_ || (source->isConstant() && in[0] == new_ && arrived)) {
        publishInput();
        return;
    }
    auto phase = static_cast<int>(position % course_->period);
    bool constant = true;
    for (int i = 0; i < samples; ++i) {
        if (phase == 0) beginCourse(in[i], course_->shareAt(i, samples));
        (*out)[i] = valueAt(phase);
        constant = constant && (*out)[i] == (*out)[0];
        if (++phase == course_->period) phase = 0;
    }
    setConstant(constant);
}

void StagedControl::beginCourse(float wanted, float share) {
    window_ = std::min(old_, new_);
    old_ = new_;
    new_ = share < 1.0f ? old_ + (wanted - old_) * share : wanted;
}

float StagedControl::ramp(float from, float to, int place) const {
    if (place >= course_->fade) return to;
    return from + (to - from) * static_cast<float>(place) / static_cast<float>(course_->fade);
}

float StagedControl::valueAt(int phase) const {
    switch (role_) {
        case Window:
            return std::min(old_, new_);
        case Average:
            return ramp(window_, std::min(old_, new_), phase);
        case Hold:
            return holdAt(phase);
        case Delay:
            return new_;
        case Lead:
            return phase < course_->turn ? old_ : new_;
    }
    return new_;
}

// A hold that grew or shrank all at once would catch or lose a peak of the past, which is a step.
float StagedControl::holdAt(int phase) const {
    const float longer = std::max(old_, new_);
    const int leadArrived = course_->turn + course_->fade;
    if (phase >= leadArrived) return ramp(longer, new_, phase - leadArrived);
    return ramp(old_, longer, phase);
}

}  // namespace vanta
