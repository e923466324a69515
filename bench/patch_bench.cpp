// Each element as the engine builds it, with the slots that lead to it and from it. `wire` is the slots
// alone.

#include <benchmark/benchmark.h>

#include <string>

#include "limiter/styles/style_source.hpp"
#include "tests/support/engine_rig.hpp"

namespace vanta::bench {
namespace {

constexpr int kBlock = 256;
constexpr int kSamples = 2 * 44100;

struct Case {
    const char* name;
    const char* input;     ///< the target that the sound goes to
    const char* output;    ///< the source that is heard
    const char* settings;  ///< further lines
    int slots = 2;
};

constexpr Case kCases[] = {
    {"wire", "Output", "Trigger Input", ""},
    {"filter/12", "Fil 1 Input", "Filter Set 1",
     "Num Active Filters = 1\nFilter Set 1 Low Pass Freq = 0.8\nFilter Set 1 High Pass Freq = 0.2"},
    {"filter/48", "Fil 1 Input", "Filter Set 1",
     "Num Active Filters = 1\nFilter Set 1 Low Pass Freq = 0.8\nFilter Set 1 High Pass Freq = 0.2\n"
     "Filter Set 1 Slope = 48"},
    {"saturator/ArcTan", "Sat 1 Input", "Saturator 1",
     "Num Active Saturators = 1\nSaturator 1 Transfer Function = ArcTan"},
    {"saturator/DivAbs", "Sat 1 Input", "Saturator 1",
     "Num Active Saturators = 1\nSaturator 1 Transfer Function = DivAbs"},
    {"saturator/Tube", "Sat 1 Input", "Saturator 1",
     "Num Active Saturators = 1\nSaturator 1 Transfer Function = Tube"},
    {"saturator/TanHyperbolic", "Sat 1 Input", "Saturator 1",
     "Num Active Saturators = 1\nSaturator 1 Transfer Function = TanHyperbolic"},
    {"saturator/moving_drive", "Sat 1 Input", "Saturator 1",
     "Num Active Saturators = 1\nSaturator 1 Transfer Function = DivAbs\nTrigger Input to Sat 1 Drive", 3},
    {"crossover/6", "Crs 1 Input", "Crossover 1 Output 1",
     "Num Active Crossovers = 1\nCrossover 1 Frequency = 0.5"},
    {"crossover/24", "Crs 1 Input", "Crossover 1 Output 1",
     "Num Active Crossovers = 1\nCrossover 1 Frequency = 0.5\nCrossover 1 Filter Slope = 24 dB/oct"},
    {"crossover/24_subtract", "Crs 1 Input", "Crossover 1 Output 2",
     "Num Active Crossovers = 1\nCrossover 1 Frequency = 0.5\nCrossover 1 Filter Slope = 24 dB/oct\n"
     "Crossover 1 Processing Mode = Subtract"},
    {"crossover/24_moving", "Crs 1 Input", "Crossover 1 Output 1",
     "Num Active Crossovers = 1\nCrossover 1 Frequency = 0.5\nCrossover 1 Filter Slope = 24 dB/oct\n"
     "Trigger Input to Crs 1 Frequency (0.2)",
     3},
    {"detector/peak", "Det 1 Input", "Detector 1",
     "Num Active Detectors = 1\nDetector 1 Threshold = -18\nDetector 1 Ratio = 1"},
    {"detector/rms", "Det 1 Input", "Detector 1",
     "Num Active Detectors = 1\nDetector 1 Threshold = -18\nDetector 1 Mode = RMS\nDetector 1 RMS Window = "
     "0.4"},
    {"detector/clipper", "Det 1 Input", "Detector 1",
     "Num Active Detectors = 1\nDetector 1 Threshold = -18\nDetector 1 Mode = Smart Clipping"},
    {"converter/to_db", "Cvr 1 Input", "Converter 1", "Num Active Converters = 1"},
    {"converter/to_gain_change", "Cvr 1 Input", "Converter 1",
     "Num Active Converters = 1\nConverter 1 Conversion = dB to Ampl GC"},
    {"peak_hold", "PkH 1 Input", "PeakHold 1", "Num Active Peak Hold Sources = 1\nPeak Hold 1 Hold = 0.4"},
    {"averaging_filter", "Avg 1 Input", "AveragingFilter 1",
     "Num Active AveragingFilter Sources = 1\nAveragingFilter 1 Window Size = 0.6"},
    {"averaging_filter/power", "Avg 1 Input", "AveragingFilter 1",
     "Num Active AveragingFilter Sources = 1\nAveragingFilter 1 Window Size = 0.6\nAveragingFilter 1 Power = "
     "2"},
    {"convolver", "Cvl 1 Input", "Convolver 1",
     "Num Active Convolver Sources = 1\nConvolver 1 Window Size = 0.35"},
    {"capacitor", "Cap 1 Input", "Capacitor 1",
     "Num Active Capacitors = 1\nCapacitor 1 Attack = 0.2\nCapacitor 1 Release = 0.4"},
    {"transfer_curve", "TrC 1 Input", "TransferCurve 1",
     "Num Active Transfer Curves = 1\nTransfer Curve 1 Strength = 0.5"},
    {"mixer", "Mix 1 Input 1", "Mixer 1", "Num Active Mixers = 1\nTrigger Input to Mix 1 Input 2", 3},
    {"operator/multiply", "Opr 1 Input 1", "Operator 1",
     "Num Active Operators = 1\nOperator 1 Operation = Multiply\nTrigger Input to Opr 1 Input 2", 3},
    {"delay", "Dly 1 Input", "Delay 1", "Num Active Delay Sources = 1\nDelay 1 = 0.6"},
    {"constant", "Slot 2 Level", "Constant 1", "Num Active Constant Sources = 1\nConstant 1 = 1"},
    {"vca", "VCA 1 Input", "VCA 1",
     "Num Look-ahead Stages = 1\nNum Active VCAs = 1\nTrigger Input to VCA 1 Gain Change", 3},
};

void run(benchmark::State& state, const Case& wiring) {
    test::EngineRig rig(DynamicsEngineConfiguration(), {test::pinkNoise(1, kSamples, 0.25)});
    const std::string style = std::string(wiring.settings) +
                              "\nNum Active Slots = " + std::to_string(wiring.slots) + "\nAudio Input to " +
                              wiring.input + "\n" + wiring.output + " to Output\n";
    rig.set(parseStyleSource(rig.layout, style, wiring.name));
    rig.engine.applyPendingParameters();
    int position = kSamples;
    const auto block = [&] {
        if ((position += kBlock) > kSamples) {
            rig.signals.front().rewind();
            position = 0;
        }
        rig.environment.advanceTick();
        rig.ends.front()->pull(kBlock);
        rig.environment.run(kBlock, 0);
    };
    for (int i = 0; i < kSamples / kBlock; ++i) block();
    for (auto _ : state) block();
    state.counters["per_sample"] =
        benchmark::Counter(static_cast<double>(state.iterations()) * kBlock,
                           benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}

const bool kRegistered = [] {
    for (const Case& wiring : kCases) {
        const std::string name = std::string("element/") + wiring.name;
        benchmark::RegisterBenchmark(name.c_str(),
                                     [&wiring](benchmark::State& state) { run(state, wiring); });
    }
    return true;
}();

}  // namespace
}  // namespace vanta::bench
