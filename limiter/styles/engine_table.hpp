#pragma once

#include <array>
#include <initializer_list>

#include "limiter/styles/name_list.hpp"
#include "limiter/styles/parameter_forms.hpp"

namespace vanta {

/// What the engine consists of: each kind of element once, with its names, its inputs and its parameters.
/// The order of everything here is the format of a style record, and the names are those of a style source.
/// Code finds inputs and parameters by these names too; a name that is not here does not compile.
class EngineTable : private ParameterForms {
    using Parameter = ParameterDescription;
    using Input = InputDescription;

    static constexpr Input kSignal{"Input", RangeId::Audio};

    static constexpr int kSlopes[] = {0, 1, 3, 6};  // EQFilter's 6, 12, 24 and 48 dB per octave
    static constexpr Input kFilterInputs[] = {
        kSignal, {"High Pass Freq", RangeId::Frequency}, {"Low Pass Freq", RangeId::Frequency}};
    static constexpr Parameter kFilter[] = {frequency("Low Pass Freq", 1), frequency("High Pass Freq", 0),
                                            choice("Slope", "6,12,24,48", 1, kSlopes),
                                            choice("Solo", "Off,On")};

    static constexpr Input kSaturatorInputs[] = {kSignal, {"Drive", RangeId::Drive}};
    static constexpr Parameter kSaturator[] = {
        number("Drive", -36, 36, 0, "dB"),
        choice("Transfer Function",
               "ArcTan,Exp,DivAbs,DivRootSquare,TanHyperbolic,ErrorFunction,Sine,PolynomeOrder2,"
               "PolynomeOrder3,PolynomeOrder4,PolynomeOrder5,Tube,Triode,Rectify")};

    static constexpr Input kCrossoverInputs[] = {kSignal, {"Frequency", RangeId::Frequency}};
    static constexpr Parameter kCrossover[] = {frequency("Frequency", 1),
                                               choice("Processing Mode", "Filters,Subtract"),
                                               choice("Filter Slope", "6 dB/oct,12 dB/oct,24 dB/oct")};

    static constexpr Input kDetectorInputs[] = {kSignal,
                                                {"RMS Window", RangeId::RmsWindow},
                                                {"Knee", RangeId::Knee},
                                                {"Link", RangeId::Bipolar},
                                                {"Threshold", RangeId::Threshold},
                                                {"Hysteresis", RangeId::DecibelSpan},
                                                {"Ratio", RangeId::DetectorRatio},
                                                {"Limit", RangeId::DecibelSpan}};
    static constexpr Parameter kDetector[] = {choice("Mode", "Peak,RMS,Smart Clipping"),
                                              milliseconds("RMS Window"),
                                              choice("Purpose", "Compress,Expand Down,Expand Up"),
                                              choice("Domain", "Amplitude,dB"),
                                              number("Knee", 0, 30, 0, "dB"),
                                              choice("Knee Style", "Normal,Clipping"),
                                              withInput("Link", stereoLink("Stereo Link")),
                                              number("Threshold", -60, 60, 0, "dB"),
                                              number("Hysteresis", 0, 30, 0, "dB"),
                                              ratio("Ratio", 1),
                                              number("Limit", 0, 180, 180, "dB")};

    static constexpr Input kConverterInputs[] = {kSignal};
    static constexpr Parameter kConverter[] = {
        choice("Conversion", "Ampl to dB,dB to Ampl,Ampl GC to dB,dB to Ampl GC")};

    static constexpr Input kPeakHoldInputs[] = {kSignal, {"Hold", RangeId::PeakHold}};
    static constexpr Parameter kPeakHold[] = {milliseconds("Hold")};

    static constexpr Input kAveragingInputs[] = {kSignal, {"Window Size", RangeId::Averaging}};
    static constexpr Parameter kAveraging[] = {withInput("", number("Power", 0.1f, 10, 1)),
                                               milliseconds("Window Size")};

    static constexpr Input kConvolverInputs[] = {kSignal,
                                                 {"Window Size", RangeId::ConvolverWindow},
                                                 {"Smoothing", RangeId::Fraction},
                                                 {"Offset", RangeId::Fraction},
                                                 {"Power", RangeId::Fraction}};
    static constexpr Parameter kConvolver[] = {choice("Shape", "Triangle,Polynome,Sine,Classic"),
                                               milliseconds("Window Size"), fraction("Smoothing", 1),
                                               fraction("Offset", 0.5f), fraction("Power", 0)};

    static constexpr Input kCapacitorInputs[] = {kSignal,
                                                 {"Attack", RangeId::TimeConstant},
                                                 {"Attack Curve", RangeId::Fraction},
                                                 {"Attack Smoothing", RangeId::Smoothing},
                                                 {"Release", RangeId::TimeConstant},
                                                 {"Release Curve", RangeId::Fraction},
                                                 {"Release Smoothing", RangeId::Smoothing},
                                                 {"Hold", RangeId::CapacitorHold}};
    static constexpr Parameter kCapacitor[] = {curved("Attack", EngineCurve::Attack, 10, "sec"),
                                               withInput("Attack Curve", shape("Attack Shape")),
                                               smoothing("Attack Smoothing"),
                                               curved("Release", EngineCurve::Release, 10, "sec"),
                                               withInput("Release Curve", shape("Release Shape")),
                                               smoothing("Release Smoothing"),
                                               curved("Hold", EngineCurve::Attack, 0.1f, "sec")};

    static constexpr Input kTransferInputs[] = {kSignal, {"Strength", RangeId::Fraction}};
    static constexpr Parameter kTransfer[] = {choice("Function", "Exp,Power"), fraction("Strength", 0)};

    static constexpr Input kMixerInputs[] = {
        {"Input 1", RangeId::Audio}, {"Input 2", RangeId::Audio}, {"Mix", RangeId::Bipolar}};
    static constexpr Parameter kMixer[] = {number("Mix", -1, 1, 0)};

    static constexpr int kOperations[] = {7, 8, 3, 5};  // as Mixer numbers them
    static constexpr Input kOperatorInputs[] = {{"Input 1", RangeId::Audio}, {"Input 2", RangeId::Audio}};
    static constexpr Parameter kOperator[] = {
        choice("Operation", "Maximize,Minimize,Multiply,Divide", 0, kOperations)};

    static constexpr Input kDelayInputs[] = {kSignal, {"Delay", RangeId::Delay}};
    static constexpr Parameter kDelay[] = {withInput("Delay", milliseconds(""))};

    static constexpr Input kConstantInputs[] = {{"Value", RangeId::ConstantValue}};
    static constexpr Parameter kConstant[] = {withInput("Value", precise(number("", -60, 60, 0)))};

    static constexpr Input kVcaInputs[] = {
        kSignal, {"Gain Change", RangeId::Audio}, {"Look-ahead", RangeId::LookAhead}};
    static constexpr Parameter kVca[] = {
        milliseconds("Look-ahead"), choice("Look-ahead Enabled", "Disabled,Enabled", 1),
        choice("Domain", "Amplitude,dB,Amplitude Inverse"), integer("Num Convolvers In Gain Path", 6),
        integer("Num SmartClippers In Gain Path", 6)};

    // The engine's layout sets the maxima of Source and Target, which count what the configuration holds.
    static constexpr Input kSlotInputs[] = {{"Level", RangeId::SlotLevel}};
    static constexpr Parameter kSlot[] = {
        integer("Source", 0), curved("Level", EngineCurve::SlotLevel, 1, {}, 0.5f),
        choice("Bypassed", "Normal,Bypassed"), choice("Inverted", "Normal,Inverted"), integer("Target", 0)};

    static constexpr std::array<ElementDescription, 16> kElements{{
        {ElementKind::Filter, 6, "Filters", "Filter Set", "Filter Set", "Fil", 1, kFilterInputs, kFilter},
        {ElementKind::Saturator, 6, "Saturators", "Saturator", "Saturator", "Sat", 1, kSaturatorInputs,
         kSaturator},
        {ElementKind::Crossover, 6, "Crossovers", "Crossover", "Crossover", "Crs", 2, kCrossoverInputs,
         kCrossover},
        {ElementKind::Detector, 6, "Detectors", "Detector", "Detector", "Det", 1, kDetectorInputs, kDetector},
        {ElementKind::Converter, 6, "Converters", "Converter", "Converter", "Cvr", 1, kConverterInputs,
         kConverter},
        {ElementKind::PeakHold, 6, "Peak Hold Sources", "Peak Hold", "PeakHold", "PkH", 1, kPeakHoldInputs,
         kPeakHold},
        {ElementKind::AveragingFilter, 6, "AveragingFilter Sources", "AveragingFilter", "AveragingFilter",
         "Avg", 1, kAveragingInputs, kAveraging},
        {ElementKind::Convolver, 6, "Convolver Sources", "Convolver", "Convolver", "Cvl", 1, kConvolverInputs,
         kConvolver},
        {ElementKind::Capacitor, 12, "Capacitors", "Capacitor", "Capacitor", "Cap", 1, kCapacitorInputs,
         kCapacitor},
        {ElementKind::TransferCurve, 6, "Transfer Curves", "Transfer Curve", "TransferCurve", "TrC", 1,
         kTransferInputs, kTransfer},
        {ElementKind::Mixer, 4, "Mixers", "Mixer", "Mixer", "Mix", 1, kMixerInputs, kMixer},
        {ElementKind::Operator, 6, "Operators", "Operator", "Operator", "Opr", 1, kOperatorInputs, kOperator},
        {ElementKind::Delay, 6, "Delay Sources", "Delay", "Delay", "Dly", 1, kDelayInputs, kDelay},
        {ElementKind::Constant, 6, "Constant Sources", "Constant", "Constant", "Con", 1, kConstantInputs,
         kConstant},
        {ElementKind::Vca, 6, "VCAs", "VCA", "VCA", "VCA", 1, kVcaInputs, kVca},
        {ElementKind::Slot, 80, "Slots", "Slot", "Slot", "Slot", 0, kSlotInputs, kSlot},
    }};

public:
    /// The six main controls. Control i is target i; as sources they follow the two audio inputs.
    static constexpr std::array<MainControlDescription, 6> kMainControls{{
        {number("Main Threshold", -60, 0, -18, "dB"), ElementKind::MainThreshold, RangeId::Threshold},
        {ratio("Main Ratio", 0), ElementKind::MainRatio, RangeId::MainRatio},
        {curved("Main Attack", EngineCurve::Attack, 10, "sec"), ElementKind::MainAttack,
         RangeId::TimeConstant},
        {curved("Main Release", EngineCurve::Release, 10, "sec"), ElementKind::MainRelease,
         RangeId::TimeConstant},
        {precise(fraction("Custom 1", 0)), ElementKind::Custom, RangeId::Fraction},
        {precise(fraction("Custom 2", 0)), ElementKind::Custom, RangeId::Fraction},
    }};

    /// What the owner of the engine must know ahead of the audio thread: how many look-ahead stages,
    /// Convolvers and SmartClippers a style's output passes through.
    static constexpr std::array<ParameterDescription, 3> kStageCounts{integer("Num Look-ahead Stages", 6),
                                                                      integer("Num Output Convolvers", 6),
                                                                      integer("Num Output SmartClippers", 6)};

    /// `kind` is Filter to Vca, or Slot.
    static constexpr const ElementDescription& element(ElementKind kind) {
        return kElements[indexOf(kind) - indexOf(kFirstElement)];
    }
    static constexpr std::span<const ElementDescription> elements() { return kElements; }
};

/// Position of an input among those of its kind.
consteval int inputIndex(ElementKind kind, std::string_view name) {
    const int index = indexByName(EngineTable::element(kind).inputs, name);
    if (index < 0) throw "EngineTable has no input of this name for this kind";
    return index;
}

/// Position of a parameter within the set of an element of its kind.
consteval int parameterIndex(ElementKind kind, std::string_view name) {
    const int index = indexByName(EngineTable::element(kind).parameters, name);
    if (index < 0) throw "EngineTable has no parameter of this name for this kind";
    return index;
}

struct LabelledChoice {
    std::string_view label;
    int value;  ///< what the choice sets the parameter's property to
};

/// What the choice of this label sets the property of its parameter to.
consteval int choiceValue(ElementKind kind, std::string_view parameter, std::string_view label) {
    const auto index = static_cast<std::size_t>(parameterIndex(kind, parameter));
    const ParameterDescription& description = EngineTable::element(kind).parameters[index];
    const int choice = listPosition(description.labels, label);
    if (choice < 0) throw "EngineTable has no choice of this label for this parameter";
    if (description.mappedValues.empty()) return choice;
    return description.mappedValues[static_cast<std::size_t>(choice)];
}

/// Whether these are choices of a parameter, and those values what they stand for. For the code that acts on
/// the property.
consteval bool choicesAre(ElementKind kind, std::string_view parameter,
                          std::initializer_list<LabelledChoice> choices) {
    for (const LabelledChoice& choice : choices) {
        if (choiceValue(kind, parameter, choice.label) != choice.value) return false;
    }
    return true;
}

}  // namespace vanta
