#pragma once

#include <cstdint>

#include "wave/producer.hpp"
#include "wave/stream_watch.hpp"

namespace vanta {

class StagedControl;

/// The course of a change of look-ahead, in samples of the engine. Reduction meets its peak in full only as
/// long as the smoothing window is not longer than the time by which the gain leads the audio, and the hold
/// not shorter. So where a change makes a window shorter or a hold longer, that comes first; then the lead
/// moves; a hold that gets shorter follows, and with the next course a window that gets longer. Courses begin
/// at multiples of their period in the stream, by which all that must keep the order agree on it.
///
/// A long hold in front of a short window lets go of its peaks in steps, so one course at most halves or
/// doubles the lead, and all else goes the same share of its way; a large change takes several courses.
class LookAheadCourse {
public:
    int fade = 0;    ///< length of every crossfade and ramp
    int turn = 0;    ///< where the lead begins to crossfade: windows and holds have made room
    int period = 1;  ///< a fade after the lead has arrived; no shorter than a block
    const StagedControl* lead = nullptr;  ///< that sets the pace

    /// Which share of its way everything goes in the course that begins at sample `index` of a block.
    VANTA_REALTIME float shareAt(int index, int samples);

private:
    std::int64_t begin_ = -1;  ///< of the newest course, a position
    float share_ = 1.0f;
};

/// A control on which look-ahead depends, in its place of the course. At rest, or without a course, it is
/// handed on as it is.
class StagedControl final : public wave::Filter {
public:
    enum Role {
        Window,   ///< the shorter of the old and the new value, all along
        Average,  ///< the same for a window that follows at once, along a ramp
        Hold,     ///< the longer one, but for a ramp at either end
        Delay,    ///< the new value from the beginning: in front of a delay whose old place goes on to count
        Lead      ///< the old value until the turn
    };

    /// `target` is what it controls, in the modulation matrix.
    StagedControl(wave::Environment& owner, Role role, int target, wave::Producer& control);

    int target() const { return target_; }
    /// Null to hand the control on.
    VANTA_REALTIME void follow(LookAheadCourse* course);
    const LookAheadCourse* course() const { return course_; }
    /// Where it is, or is on its way to in this course.
    float aim() const { return new_; }

protected:
    /// Without a course, or where the last one has led to, the control alone decides.
    bool settled() const override { return !course_ || &current() != ownBlock(); }
    void process(const wave::BasicBlock<float>& in, wave::BasicBlock<float>* out, int samples,
                 int flags) override;

private:
    void beginCourse(float wanted, float share);
    float valueAt(int phase) const;
    float holdAt(int phase) const;
    float ramp(float from, float to, int place) const;

    Role role_;
    int target_;
    LookAheadCourse* course_ = nullptr;
    wave::StreamWatch stream_;
    float old_ = 0.0f;
    float new_ = 0.0f;
    float window_ = 0.0f;  ///< the shorter one of the course before
};

}  // namespace vanta
