#pragma once

#include "foundation/realtime.hpp"

namespace vanta {

/// What MIDI controllers and program changes move. A controller's target is a parameter's index, or
/// kExtraTargetBase plus the position of an extra target, or kNoTarget.
class MidiControlled {
public:
    static constexpr int kControllerCount = 128;
    static constexpr int kNoTarget = -1;
    static constexpr int kExtraTargetBase = 0x100000;

    virtual ~MidiControlled() = default;

    /// What controller `number` moves from now on. Any thread.
    virtual void setControllerTarget(int number, int target) = 0;
    /// A controller moved to `value`, 0 to 1.
    VANTA_REALTIME virtual void controllerChanged(int number, float value) = 0;
    VANTA_REALTIME virtual void programChanged(int bank, int program) = 0;
};

}  // namespace vanta
