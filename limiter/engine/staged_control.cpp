#include "limiter/engine/staged_control.hpp"

#include <algorithm>

namespace vanta {

StagedControl::StagedControl(wave::Environment& owner, Role role, int target, wave::Producer& control)
    : Filter(owner), role_(role), target_(target) {
    source = &control;
}

void StagedControl::follow(const LookAheadCourse* course) {
    if (course != course_) expectedPosition_ = -1;
    course_ = course;
}

void StagedControl::process(const wave::BasicBlock<float>& in, wave::BasicBlock<float>* out, int samples,
                            int) {
    const std::int64_t position = environment().position();
    if (expectedPosition_ != position || position == environment().resetPosition()) old_ = new_ = in[0];
    expectedPosition_ = position + samples;
    if (!course_ || (source->isConstant() && in[0] == new_ && old_ == new_)) {
        publishInput();
        return;
    }
    auto phase = static_cast<int>(position % course_->period);
    bool constant = true;
    for (int i = 0; i < samples; ++i) {
        if (phase == 0) {
            old_ = new_;
            new_ = in[i];
        }
        (*out)[i] = valueAt(phase);
        constant = constant && (*out)[i] == (*out)[0];
        if (++phase == course_->period) phase = 0;
    }
    setConstant(constant);
}

float StagedControl::valueAt(int phase) const {
    switch (role_) {
        case Window:
            return std::min(old_, new_);
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
    const auto between = [&](float from, float to, int place) {
        return from + (to - from) * static_cast<float>(place) / static_cast<float>(course_->fade);
    };
    const int leadArrived = course_->turn + course_->fade;
    if (phase >= leadArrived) return between(longer, new_, phase - leadArrived);
    return phase < course_->fade ? between(old_, longer, phase) : longer;
}

}  // namespace vanta
