#pragma once

#include <algorithm>
#include <cstdint>

#include "foundation/property.hpp"
#include "wave/producer.hpp"

namespace vanta::wave {

/// A smoothed control value: it takes a target from the control side and hands out blocks that never step
/// while somebody listens, marked as constant when nothing moves. A value that nobody reads jumps.
class FloatParameter final : public ValueAssignable<float>, public Component {
public:
    /// Range: 0 and 1, widened to hold the value.
    FloatParameter(Environment& owner, float initial);
    /// Copies times, range and target, on the other's environment.
    FloatParameter(const FloatParameter& other);

    void assign(float value, void* sender) override;
    /// Starts a ramp of `timeMs`, or with a negative time of a length that depends on the distance. The value
    /// is clamped to the range; a NaN is ignored. Called where the stream is at a seam. The ramp begins
    /// `delaySamples` after it.
    VANTA_REALTIME void setValue(float value, float timeMs, int delaySamples = 0);
    /// The next `samples` values. Time that passed unread does not count, nor does a discontinuity.
    VANTA_REALTIME const BasicBlock<float>& read(int samples, bool* constant);
    /// The same, but a ramp does not wait for its reader: unread time counts, and after a discontinuity the
    /// ramp has ended.
    VANTA_REALTIME const BasicBlock<float>& readInStream(int samples, bool* constant);
    /// Ends a ramp at once.
    VANTA_REALTIME void jumpToTarget() {
        rampPosition_ = rampLength_;
        environment().noteChange();
    }

    float target() const { return target_; }
    /// Where the value stands at the end of what was read.
    float value() const { return rampPosition_ < rampLength_ ? valueAt(rampPosition_) : target_; }
    bool isMoving() const { return rampPosition_ < rampLength_; }
    /// From the end of what was read, if that is where the stream stands.
    int samplesToTarget() const { return std::max(rampLength_ - rampPosition_, 0); }
    float minimum() const { return minimum_; }
    float maximum() const { return maximum_; }
    /// Sets the range and `range`, its width, by which the default ramp time is measured. The target stays.
    void setRange(float minimum, float maximum);

    Property<float> period;    ///< above 0 the value is cyclic, and ramps take the shorter way round
    Property<float> slowTime;  ///< ms, the default time of a tiny change
    Property<float> fastTime;  ///< ms, the default time of a change by 30 % of the range or more

private:
    class ValueBlock final : public BasicBlock<float> {
    public:
        using BasicBlock<float>::BasicBlock;
        void maxBlockSizeChanged() override {
            BasicBlock<float>::maxBlockSizeChanged();
            filled = 0;
        }
        int filled = 0;  ///< how many samples at the start hold the target
    };

    std::int64_t lastPosition() const;
    std::int64_t unreadSamples() const;
    void unwrapStart(float value);
    float defaultTimeMs(float value) const;
    float valueAt(int rampPosition) const;

    ValueBlock block_;
    int rampPosition_ = 0;  ///< below 0 the ramp has yet to begin
    int rampLength_ = 0;
    float rampStart_;
    float rampStep_ = 0.0f;
    float maximum_;
    float minimum_;
    float range_;
    std::int64_t lastPosition_ = 0;
    std::uint32_t restEpoch_ = 0;  ///< in which the value was last read at rest; 0 for none
    float target_;
};

}  // namespace vanta::wave
