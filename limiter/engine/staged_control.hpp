#pragma once

#include <cstdint>

#include "wave/producer.hpp"

namespace vanta {

/// The course of a change of look-ahead, in samples of the engine. Reduction meets its peak in full only as
/// long as the smoothing window is not longer than the time by which the gain leads the audio, and the hold
/// not shorter. So where a change makes a window shorter or a hold longer, that comes first; then the lead
/// moves; a hold that gets shorter follows, and with the next course a window that gets longer. Courses begin
/// at multiples of their period in the stream, by which all that must keep the order agree on it.
struct LookAheadCourse {
    int fade = 0;    ///< length of every crossfade and ramp
    int turn = 0;    ///< where the lead begins to crossfade: windows and holds have made room
    int period = 1;  ///< a fade after the lead has arrived, when the next course may begin
};

/// A control on which look-ahead depends, in its place of the course. At rest, or without a course, it is
/// handed on as it is.
class StagedControl final : public wave::Filter {
public:
    enum Role {
        Window,  ///< the shorter of the old and the new value, all along
        Hold,    ///< the longer one, but for a ramp at either end
        Delay,   ///< the new value from the beginning: in front of a delay whose old place goes on to count
        Lead     ///< the old value until the turn
    };

    /// `target` is what it controls, in the modulation matrix.
    StagedControl(wave::Environment& owner, Role role, int target, wave::Producer& control);

    int target() const { return target_; }
    /// Null to hand the control on.
    VANTA_REALTIME void follow(const LookAheadCourse* course);
    const LookAheadCourse* course() const { return course_; }

protected:
    void process(const wave::BasicBlock<float>& in, wave::BasicBlock<float>* out, int samples,
                 int flags) override;

private:
    float valueAt(int phase) const;
    float holdAt(int phase) const;

    Role role_;
    int target_;
    const LookAheadCourse* course_ = nullptr;
    std::int64_t expectedPosition_ = -1;
    float old_ = 0.0f;
    float new_ = 0.0f;
};

}  // namespace vanta
