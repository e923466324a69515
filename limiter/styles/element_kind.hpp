#pragma once

#include <cstddef>

namespace vanta {

/// What the dynamics engine is made of. The values 0 to 20 are also the source types by which a target
/// range scales what arrives; styles store no kind, so only the order matters to them.
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
    Slot,    ///< a connection: it has a level, which is a target, but it is no source
    Output,  ///< the engine's output: a target only
};

/// The kinds that are sources: Input to Vca.
inline constexpr int kElementKindCount = 21;
inline constexpr ElementKind kFirstElement = ElementKind::Filter;
inline constexpr ElementKind kLastElement = ElementKind::Vca;

constexpr std::size_t indexOf(ElementKind kind) {
    return static_cast<std::size_t>(kind);
}
constexpr ElementKind next(ElementKind kind) {
    return static_cast<ElementKind>(static_cast<int>(kind) + 1);
}

}  // namespace vanta
