#pragma once

#include <cstddef>

namespace vanta {

/// What the dynamics engine is made of, in the order of EngineTable. Up to Vca the values are also the
/// source types by which a target range scales what arrives.
enum class ElementKind : int {
    Input = 0,
    MainThreshold,
    MainRatio,
    MainAttack,
    MainRelease,
    Custom,
    Filter,
    Saturator,
    Crossover,
    Detector,
    Converter,
    PeakHold,
    AveragingFilter,
    Convolver,
    Capacitor,
    TransferCurve,
    Mixer,
    Operator,
    Delay,
    Constant,
    Vca,
    Slot,    ///< a connection: it has a level, which is a target, but is not a source
    Output,  ///< the engine's output: a target only
};

inline constexpr ElementKind kFirstElement = ElementKind::Filter;
inline constexpr ElementKind kLastElement = ElementKind::Vca;

constexpr std::size_t indexOf(ElementKind kind) {
    return static_cast<std::size_t>(kind);
}

/// The kinds that are sources: Input to Vca.
inline constexpr int kElementKindCount = static_cast<int>(indexOf(kLastElement)) + 1;

constexpr ElementKind next(ElementKind kind) {
    return static_cast<ElementKind>(static_cast<int>(kind) + 1);
}

}  // namespace vanta
