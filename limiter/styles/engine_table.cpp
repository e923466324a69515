#include "limiter/styles/engine_table.hpp"

#include "limiter/styles/engine_layout.hpp"

// What a style record and the code that reads it count on.
namespace vanta {
namespace {

constexpr bool rowsStandInTheOrderOfTheirKinds() {
    ElementKind kind = kFirstElement;
    for (const ElementDescription& element : EngineTable::elements()) {
        if (element.kind != kind) return false;
        kind = next(kind);
    }
    return kind == ElementKind::Output;
}
static_assert(rowsStandInTheOrderOfTheirKinds());

constexpr bool everyFloatSetsAnInputThatExists() {
    for (const ElementDescription& element : EngineTable::elements()) {
        for (const ParameterDescription& parameter : element.parameters) {
            if (!parameter.input.empty() && indexByName(element.inputs, parameter.input) < 0) return false;
        }
    }
    return true;
}
static_assert(everyFloatSetsAnInputThatExists());

struct Sums {
    int values;
    int sources;
    int targets;
    constexpr bool operator==(const Sums&) const = default;
};

/// Of everything in front of the elements of `kind`.
constexpr Sums sumsBefore(ElementKind kind) {
    Sums sums{kOutputSmartClippersPosition + 1, kFirstMainSource + kOutputTarget, kOutputTarget + 1};
    for (const ElementDescription& element : EngineTable::elements()) {
        if (element.kind == kind) break;
        sums.values += 1 + element.capacity * static_cast<int>(element.parameters.size());
        sums.sources += element.capacity * element.outputCount;
        sums.targets += element.capacity * static_cast<int>(element.inputs.size());
    }
    return sums;
}

// Positions are the file format: a parameter more or less in any set breaks every stored style.
static_assert(sumsBefore(ElementKind::Filter) == Sums{11, 8, 7});
static_assert(sumsBefore(ElementKind::Saturator).values == 36);
static_assert(sumsBefore(ElementKind::Crossover).values == 49);
static_assert(sumsBefore(ElementKind::Detector).values == 68);
static_assert(sumsBefore(ElementKind::Converter).values == 135);
static_assert(sumsBefore(ElementKind::PeakHold).values == 142);
static_assert(sumsBefore(ElementKind::AveragingFilter).values == 149);
static_assert(sumsBefore(ElementKind::Convolver).values == 162);
static_assert(sumsBefore(ElementKind::Capacitor).values == 193);
static_assert(sumsBefore(ElementKind::TransferCurve).values == 278);
static_assert(sumsBefore(ElementKind::Mixer).values == 291);
static_assert(sumsBefore(ElementKind::Operator).values == 296);
static_assert(sumsBefore(ElementKind::Delay).values == 303);
static_assert(sumsBefore(ElementKind::Constant).values == 310);
static_assert(sumsBefore(ElementKind::Vca).values == 317);
static_assert(sumsBefore(ElementKind::Slot) == Sums{348, 108, 325});
static_assert(sumsBefore(ElementKind::Output) == Sums{kStyleValueCount, 108, 405});

// The switch over a slot's fields is by this order.
static_assert(parameterIndex(ElementKind::Slot, "Source") == static_cast<int>(SlotField::Source));
static_assert(parameterIndex(ElementKind::Slot, "Level") == static_cast<int>(SlotField::Level));
static_assert(parameterIndex(ElementKind::Slot, "Bypassed") == static_cast<int>(SlotField::Bypassed));
static_assert(parameterIndex(ElementKind::Slot, "Inverted") == static_cast<int>(SlotField::Inverted));
static_assert(parameterIndex(ElementKind::Slot, "Target") == static_cast<int>(SlotField::Target));

}  // namespace
}  // namespace vanta
