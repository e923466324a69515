#include "limiter/styles/engine_elements.hpp"

#include <array>

namespace vanta {
namespace {

using Description = ParameterDescription;

constexpr float kLog2Of5 = 2.321928094887362f;
constexpr float kLog2Of30000 = 14.872674880270605f;
constexpr float kLongestMs = 50.0f;

// ---- the forms that parameters take ----

constexpr Description number(std::string_view suffix, float minimum, float maximum, float defaultValue,
                             int input, std::string_view unit = {}) {
    Description result;
    result.suffix = suffix;
    result.minimum = minimum;
    result.maximum = maximum;
    result.defaultValue = defaultValue;
    result.input = input;
    result.unit = unit;
    return result;
}

constexpr Description fraction(std::string_view suffix, float defaultValue, int input) {
    return number(suffix, 0, 1, defaultValue, input);
}

constexpr Description curved(std::string_view suffix, EngineCurve curve, float scale, int input,
                             std::string_view unit) {
    Description result = fraction(suffix, 0, input);
    result.curve = curve;
    result.curveScale = scale;
    result.unit = unit;
    return result;
}

constexpr Description milliseconds(std::string_view suffix, int input) {
    return curved(suffix, EngineCurve::Time, kLongestMs, input, "ms");
}

constexpr Description smoothing(std::string_view suffix, int input) {
    Description result = curved(suffix, EngineCurve::Time, 1, input, "sec");
    result.minimum = -1;
    return result;
}

constexpr Description shape(std::string_view suffix, int input) {
    Description result = fraction(suffix, 1, input);
    result.unit = "% Exponential";
    result.displayScale = 100;
    return result;
}

/// The engine value is log2 of the frequency.
constexpr Description frequency(std::string_view suffix, float defaultValue, int input) {
    Description result = fraction(suffix, defaultValue, input);
    result.curveOffset = kLog2Of5;
    result.curveScale = kLog2Of30000 - kLog2Of5;
    return result;
}

/// The engine value is the ratio, or what it has above 1.
constexpr Description ratio(std::string_view suffix, float offset, int input) {
    Description result = curved(suffix, EngineCurve::Ratio, 99, input, ":1");
    result.curveOffset = offset;
    result.displayOffset = 1 - offset;
    result.format = "%.2f";
    return result;
}

constexpr Description stereoLink(std::string_view suffix, int input) {
    Description result = fraction(suffix, 1, input);
    result.curveOffset = -1;
    result.curveScale = 2;
    result.displayOffset = 50;
    result.displayScale = 50;
    result.unit = "%";
    return result;
}

constexpr Description precise(Description result) {
    result.format = "%.5f";
    return result;
}

constexpr Description integer(std::string_view suffix, float maximum) {
    Description result;
    result.suffix = suffix;
    result.type = Description::Type::Indexed;
    result.maximum = maximum;
    return result;
}

constexpr Description choice(std::string_view suffix, std::string_view labels, float defaultIndex = 0,
                             std::span<const int> mappedValues = {}) {
    float maximum = 0;
    for (const char c : labels) maximum += c == ',' ? 1.0f : 0.0f;
    Description result = integer(suffix, maximum);
    result.labels = labels;
    result.defaultValue = defaultIndex;
    result.mappedValues = mappedValues;
    return result;
}

// ---- the main controls ----

constexpr std::array<MainControlDescription, 6> kMainControls{{
    {number("Main Threshold", -60, 0, -18, 0, "dB"), ElementKind::MainThreshold, RangeId::Threshold},
    {ratio("Main Ratio", 0, 0), ElementKind::MainRatio, RangeId::MainRatio},
    {curved("Main Attack", EngineCurve::Attack, 10, 0, "sec"), ElementKind::MainAttack,
     RangeId::TimeConstant},
    {curved("Main Release", EngineCurve::Release, 10, 0, "sec"), ElementKind::MainRelease,
     RangeId::TimeConstant},
    {precise(fraction("Custom 1", 0, 0)), ElementKind::Custom, RangeId::Fraction},
    {precise(fraction("Custom 2", 0, 0)), ElementKind::Custom, RangeId::Fraction},
}};

constexpr std::array<Description, 3> kStageCounts{integer("Num Look-ahead Stages", 6),
                                                  integer("Num Output Convolvers", 6),
                                                  integer("Num Output SmartClippers", 6)};

// ---- the elements: inputs in the order of their targets, parameters in file order ----

constexpr InputDescription kSignal{"Input", RangeId::Audio};

constexpr std::array<int, 4> kSlopes{0, 1, 3, 6};  // EQFilter's 6, 12, 24 and 48 dB per octave
constexpr std::array<InputDescription, 3> kFilterInputs{
    kSignal, {"High Pass Freq", RangeId::Frequency}, {"Low Pass Freq", RangeId::Frequency}};
constexpr std::array<Description, 4> kFilter{
    frequency(" Low Pass Freq", 1, 2), frequency(" High Pass Freq", 0, 1),
    choice(" Slope", "6,12,24,48", 1, kSlopes), choice(" Solo", "Off,On")};

constexpr std::array<InputDescription, 2> kSaturatorInputs{kSignal, {"Drive", RangeId::Drive}};
constexpr std::array<Description, 2> kSaturator{
    number(" Drive", -36, 36, 0, 1, "dB"),
    choice(" Transfer Function",
           "ArcTan,Exp,DivAbs,DivRootSquare,TanHyperbolic,ErrorFunction,Sine,PolynomeOrder2,PolynomeOrder3,"
           "PolynomeOrder4,PolynomeOrder5,Tube,Triode,Rectify")};

constexpr std::array<InputDescription, 2> kCrossoverInputs{kSignal, {"Frequency", RangeId::Frequency}};
constexpr std::array<Description, 3> kCrossover{frequency(" Frequency", 1, 1),
                                                choice(" Processing Mode", "Filters,Subtract"),
                                                choice(" Filter Slope", "6 dB/oct,12 dB/oct,24 dB/oct")};

constexpr std::array<InputDescription, 8> kDetectorInputs{kSignal,
                                                          {"RMS Window", RangeId::RmsWindow},
                                                          {"Knee", RangeId::Knee},
                                                          {"Link", RangeId::Bipolar},
                                                          {"Threshold", RangeId::Threshold},
                                                          {"Hysteresis", RangeId::DecibelSpan},
                                                          {"Ratio", RangeId::DetectorRatio},
                                                          {"Limit", RangeId::DecibelSpan}};
constexpr std::array<Description, 11> kDetector{choice(" Mode", "Peak,RMS,Smart Clipping"),
                                                milliseconds(" RMS Window", 1),
                                                choice(" Purpose", "Compress,Expand Down,Expand Up"),
                                                choice(" Domain", "Amplitude,dB"),
                                                number(" Knee", 0, 30, 0, 2, "dB"),
                                                choice(" Knee Style", "Normal,Clipping"),
                                                stereoLink(" Stereo Link", 3),
                                                number(" Threshold", -60, 60, 0, 4, "dB"),
                                                number(" Hysteresis", 0, 30, 0, 5, "dB"),
                                                ratio(" Ratio", 1, 6),
                                                number(" Limit", 0, 180, 180, 7, "dB")};

constexpr std::array<InputDescription, 1> kConverterInputs{kSignal};
constexpr std::array<Description, 1> kConverter{
    choice(" Conversion", "Ampl to dB,dB to Ampl,Ampl GC to dB,dB to Ampl GC")};

constexpr std::array<InputDescription, 2> kPeakHoldInputs{kSignal, {"Hold", RangeId::PeakHold}};
constexpr std::array<Description, 1> kPeakHold{milliseconds(" Hold", 1)};

constexpr std::array<InputDescription, 2> kAveragingInputs{kSignal, {"Window Size", RangeId::Averaging}};
constexpr std::array<Description, 2> kAveraging{number(" Power", 0.1f, 10, 1, -1),
                                                milliseconds(" Window Size", 1)};

constexpr std::array<InputDescription, 5> kConvolverInputs{kSignal,
                                                           {"Window Size", RangeId::ConvolverWindow},
                                                           {"Smoothing", RangeId::Fraction},
                                                           {"Offset", RangeId::Fraction},
                                                           {"Power", RangeId::Fraction}};
constexpr std::array<Description, 5> kConvolver{choice(" Shape", "Triangle,Polynome,Sine,Classic"),
                                                milliseconds(" Window Size", 1), fraction(" Smoothing", 1, 2),
                                                fraction(" Offset", 0.5f, 3), fraction(" Power", 0, 4)};

constexpr std::array<InputDescription, 8> kCapacitorInputs{kSignal,
                                                           {"Attack", RangeId::TimeConstant},
                                                           {"Attack Curve", RangeId::Fraction},
                                                           {"Attack Smoothing", RangeId::Smoothing},
                                                           {"Release", RangeId::TimeConstant},
                                                           {"Release Curve", RangeId::Fraction},
                                                           {"Release Smoothing", RangeId::Smoothing},
                                                           {"Hold", RangeId::CapacitorHold}};
constexpr std::array<Description, 7> kCapacitor{curved(" Attack", EngineCurve::Attack, 10, 1, "sec"),
                                                shape(" Attack Shape", 2),
                                                smoothing(" Attack Smoothing", 3),
                                                curved(" Release", EngineCurve::Release, 10, 4, "sec"),
                                                shape(" Release Shape", 5),
                                                smoothing(" Release Smoothing", 6),
                                                curved(" Hold", EngineCurve::Attack, 0.1f, 7, "sec")};

constexpr std::array<InputDescription, 2> kTransferInputs{kSignal, {"Strength", RangeId::Fraction}};
constexpr std::array<Description, 2> kTransfer{choice(" Function", "Exp,Power"), fraction(" Strength", 0, 1)};

constexpr std::array<InputDescription, 3> kMixerInputs{
    {{"Input 1", RangeId::Audio}, {"Input 2", RangeId::Audio}, {"Mix", RangeId::Bipolar}}};
constexpr std::array<Description, 1> kMixer{number(" Mix", -1, 1, 0, 2)};

constexpr std::array<int, 4> kOperations{7, 8, 3, 5};  // as Mixer numbers them
constexpr std::array<InputDescription, 2> kOperatorInputs{
    {{"Input 1", RangeId::Audio}, {"Input 2", RangeId::Audio}}};
constexpr std::array<Description, 1> kOperator{
    choice(" Operation", "Maximize,Minimize,Multiply,Divide", 0, kOperations)};

constexpr std::array<InputDescription, 2> kDelayInputs{kSignal, {"Delay", RangeId::Delay}};
constexpr std::array<Description, 1> kDelay{milliseconds("", 1)};

constexpr std::array<InputDescription, 1> kConstantInputs{{{"Value", RangeId::ConstantValue}}};
constexpr std::array<Description, 1> kConstant{precise(number("", -60, 60, 0, 0))};

constexpr std::array<InputDescription, 3> kVcaInputs{
    kSignal, {"Gain Change", RangeId::Audio}, {"Look-ahead", RangeId::LookAhead}};
constexpr std::array<Description, 5> kVca{
    milliseconds(" Look-ahead", 2), choice(" Look-ahead Enabled", "Disabled,Enabled", 1),
    choice(" Domain", "Amplitude,dB,Amplitude Inverse"), integer(" Num Convolvers In Gain Path", 6),
    integer(" Num SmartClippers In Gain Path", 6)};

constexpr Description slotLevel() {
    Description result = curved(" Level", EngineCurve::SlotLevel, 1, 0, {});
    result.defaultValue = 0.5f;
    return result;
}
// The engine's layout sets the maxima of Source and Target, which count what the configuration holds.
constexpr std::array<InputDescription, 1> kSlotInputs{{{"Level", RangeId::SlotLevel}}};
constexpr std::array<Description, 5> kSlot{integer(" Source", 0), slotLevel(),
                                           choice(" Bypassed", "Normal,Bypassed"),
                                           choice(" Inverted", "Normal,Inverted"), integer(" Target", 0)};

// From Filter on.
constexpr std::array<ElementDescription, 16> kElements{{
    {"Filters", "Filter Set ", "Filter Set ", "Fil ", 1, kFilterInputs, kFilter},
    {"Saturators", "Saturator ", "Saturator ", "Sat ", 1, kSaturatorInputs, kSaturator},
    {"Crossovers", "Crossover ", "Crossover ", "Crs ", 2, kCrossoverInputs, kCrossover},
    {"Detectors", "Detector ", "Detector ", "Det ", 1, kDetectorInputs, kDetector},
    {"Converters", "Converter ", "Converter ", "Cvr ", 1, kConverterInputs, kConverter},
    {"Peak Hold Sources", "Peak Hold ", "PeakHold ", "PkH ", 1, kPeakHoldInputs, kPeakHold},
    {"AveragingFilter Sources", "AveragingFilter ", "AveragingFilter ", "Avg ", 1, kAveragingInputs,
     kAveraging},
    {"Convolver Sources", "Convolver ", "Convolver ", "Cvl ", 1, kConvolverInputs, kConvolver},
    {"Capacitors", "Capacitor ", "Capacitor ", "Cap ", 1, kCapacitorInputs, kCapacitor},
    {"Transfer Curves", "Transfer Curve ", "TransferCurve ", "TrC ", 1, kTransferInputs, kTransfer},
    {"Mixers", "Mixer ", "Mixer ", "Mix ", 1, kMixerInputs, kMixer},
    {"Operators", "Operator ", "Operator ", "Opr ", 1, kOperatorInputs, kOperator},
    {"Delay Sources", "Delay ", "Delay ", "Dly ", 1, kDelayInputs, kDelay},
    {"Constant Sources", "Constant ", "Constant ", "Con ", 1, kConstantInputs, kConstant},
    {"VCAs", "VCA ", "VCA ", "VCA ", 1, kVcaInputs, kVca},
    {"Slots", "Slot ", "Slot ", "Slot ", 0, kSlotInputs, kSlot},
}};

// ---- what a style record counts on ----

struct Sums {
    int values;
    int sources;
    int targets;
};

/// Of everything before the elements of `kind`.
constexpr Sums sumsBefore(ElementKind kind) {
    Sums sums{2 + 6 + 3, 2 + 6, 6 + 1};
    for (ElementKind k = kFirstElement; k != kind; k = next(k)) {
        const ElementDescription& element = kElements[indexOf(k) - indexOf(kFirstElement)];
        const int capacity = k == ElementKind::Slot ? 80 : DynamicsEngineConfiguration::kCapacity[indexOf(k)];
        sums.values += 1 + capacity * static_cast<int>(element.parameters.size());
        sums.sources += capacity * element.outputCount;
        sums.targets += capacity * static_cast<int>(element.inputs.size());
    }
    return sums;
}

// Positions are the file format: a parameter more or less in any set above breaks every stored style.
static_assert(sumsBefore(ElementKind::Filter).values == 11);
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
static_assert(sumsBefore(ElementKind::Slot).values == 348);
static_assert(sumsBefore(ElementKind::Output).values == 749);
static_assert(sumsBefore(ElementKind::Output).sources == 108);
static_assert(sumsBefore(ElementKind::Output).targets == 405);

}  // namespace

const ElementDescription& elementDescription(ElementKind kind) {
    return kElements[indexOf(kind) - indexOf(kFirstElement)];
}

std::span<const MainControlDescription> mainControls() {
    return kMainControls;
}

std::span<const ParameterDescription> stageCounts() {
    return kStageCounts;
}

}  // namespace vanta
