#pragma once

namespace vanta {

/// In what form levels and gain changes travel between the elements. An index, so that a parameter can
/// select it.
struct GainChangeDomain {
    enum Value : int {
        Amplitude,  ///< linear level; a gain change is the fraction to take away, 0 when nothing is done
        Decibels    ///< level in dB; a gain change is in dB, 0 when nothing is done, never negative
    };
};

}  // namespace vanta
