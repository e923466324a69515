#pragma once

#include <array>

#include "limiter/styles/engine_table.hpp"

namespace vanta {

/// How many elements the engine's tables describe and how many each channel really builds. The capacities
/// fix the parameter table and with it the style record; what is built fixes a channel's memory and time.
/// All limits are in milliseconds and set the longest delay line or window of their elements.
struct DynamicsEngineConfiguration {
    using Counts = std::array<int, kElementKindCount>;

    static constexpr Counts tableCapacity() {
        Counts counts{};
        counts[indexOf(ElementKind::Input)] = 1;
        for (const MainControlDescription& control : EngineTable::kMainControls) {
            ++counts[indexOf(control.kind)];
        }
        for (ElementKind kind = kFirstElement; kind <= kLastElement; kind = next(kind)) {
            counts[indexOf(kind)] = EngineTable::element(kind).capacity;
        }
        return counts;
    }

    int maxConvolversInGainPath = 6;     ///< the most that a VCA's Num Convolvers In Gain Path counts
    int maxSmartClippersInGainPath = 6;  ///< likewise
    int maxOutputSmartClippers = 6;      ///< Detectors from the first that can clip
    Counts capacity = tableCapacity();   ///< by ElementKind
    Counts built = tableCapacity();      ///< by ElementKind
    int slotCount = EngineTable::element(ElementKind::Slot).capacity;
    /// Whether every input takes what is not finite for silence and limits absurd magnitudes. A style that
    /// nobody has listened to can amplify without end; those that come with the program need no check.
    bool limitsSignals = true;
    float lookAheadLimit = 50.0f;
    float peakHoldLimit = 50.0f;
    float rmsWindowLimit = 50.0f;
    float averagingLimit = 50.0f;
    float delayLimit = 50.0f;
    float convolverLimit = 50.0f;
};

/// What a limiter's channel needs: the elements that its styles use, and no more.
constexpr DynamicsEngineConfiguration limiterConfiguration() {
    DynamicsEngineConfiguration result;
    result.limitsSignals = false;
    result.maxConvolversInGainPath = 1;
    result.maxSmartClippersInGainPath = 1;
    result.maxOutputSmartClippers = 1;
    const auto build = [&](ElementKind kind, int count) { result.built[indexOf(kind)] = count; };
    build(ElementKind::Filter, 2);
    build(ElementKind::Saturator, 0);
    build(ElementKind::Crossover, 0);
    build(ElementKind::Detector, 4);
    build(ElementKind::Converter, 0);
    build(ElementKind::PeakHold, 4);
    build(ElementKind::AveragingFilter, 2);
    build(ElementKind::Convolver, 2);
    build(ElementKind::Capacitor, 5);
    build(ElementKind::TransferCurve, 1);
    build(ElementKind::Mixer, 1);
    build(ElementKind::Operator, 3);
    build(ElementKind::Delay, 4);
    build(ElementKind::Constant, 1);
    build(ElementKind::Vca, 3);
    result.lookAheadLimit = 5.0f;
    result.rmsWindowLimit = 5.0f;
    result.convolverLimit = 5.0f;
    return result;
}

}  // namespace vanta
