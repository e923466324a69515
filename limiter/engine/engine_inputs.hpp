#pragma once

namespace vanta {

// The inputs of each kind of element, in the order of the engine's targets. Input 0 is the signal.

namespace FilterInput {
enum { Signal, HighPassFreq, LowPassFreq };
}
namespace DetectorInput {
enum { Signal, RmsWindow, Knee, Link, Threshold, Hysteresis, Ratio, Limit };
}
namespace PeakHoldInput {
enum { Signal, Hold };
}
namespace AveragingFilterInput {
enum { Signal, WindowSize };
}
namespace ConvolverInput {
enum { Signal, WindowSize, Smoothing, Offset, Power };
}
namespace CapacitorInput {
enum { Signal, Attack, AttackCurve, AttackSmoothing, Release, ReleaseCurve, ReleaseSmoothing, Hold };
}
namespace TransferCurveInput {
enum { Signal, Strength };
}
namespace MixerInput {
enum { Signal1, Signal2, Mix };
}
namespace OperatorInput {
enum { Signal1, Signal2 };
}
namespace DelayInput {
enum { Signal, Delay };
}
namespace ConstantInput {
enum { Value };
}
namespace VcaInput {
enum { Signal, GainChange, LookAhead };
}

// Places of the values that drive properties, within their parameter sets.

enum { kFilterLowPassFreq, kFilterHighPassFreq, kFilterSlope, kFilterSolo };
enum {
    kDetectorMode = 0,
    kDetectorPurpose = 2,
    kDetectorDomain = 3,
    kDetectorKneeStyle = 5,
    kDetectorStereoLink = 6
};
enum { kAveragingFilterPower = 0 };
enum { kConvolverShape = 0 };
enum { kTransferCurveFunction = 0 };
enum { kOperatorOperation = 0 };
enum { kVcaLookAheadEnabled = 1, kVcaDomain = 2, kVcaConvolvers = 3, kVcaSmartClippers = 4 };

}  // namespace vanta
