// A new element is a function that builds it and a row in the table below.

#include "tests/dsp/element_table.hpp"

#include <cmath>
#include <cstdlib>
#include <memory>

#include <fmt/format.h>

#include "dsp/convolver/convolver.hpp"
#include "dsp/convolver/smoothing_kernel.hpp"
#include "dsp/delay/averaging_filter.hpp"
#include "dsp/delay/delay_line.hpp"
#include "dsp/detector/db_converter.hpp"
#include "dsp/detector/detector.hpp"
#include "dsp/detector/peak_hold.hpp"
#include "dsp/detector/rms_filter.hpp"
#include "dsp/detector/transfer_curve_processor.hpp"
#include "dsp/dither/dither_filter.hpp"
#include "dsp/dither/dither_seed.hpp"
#include "dsp/envelope/capacitor.hpp"
#include "dsp/filter/crossover_filter.hpp"
#include "dsp/filter/eq_filter.hpp"
#include "dsp/metering/loudness_meter.hpp"
#include "dsp/mixer/effect_mixer.hpp"
#include "dsp/mixer/mixer.hpp"
#include "dsp/mixer/static_mixer.hpp"
#include "dsp/saturator/saturator.hpp"
#include "dsp/sr/converter_filter.hpp"
#include "dsp/sr/iir_converter_style.hpp"
#include "dsp/sr/true_peak_exposer.hpp"
#include "limiter/clippers/overshoot_limiter.hpp"
#include "limiter/clippers/smart_clipper.hpp"
#include "limiter/engine/band_splitter.hpp"
#include "wave/delay.hpp"
#include "wave/router.hpp"
#include "wave/volume_filter.hpp"

namespace vanta::test {
namespace {

void buildDelay(Patch& p, int samples) {
    auto& delay = p.filter<wave::DelayFilter>();
    delay.setMaxDelay(1000);
    delay.setDelay(samples);
}

void buildVolume(Patch& p, int moving) {
    auto& volume = p.filter<wave::VolumeFilter>();
    if (moving) p.move(volume.gain, 0.0f, 1.0f), volume.secondGain = &p.input();
    if (!moving) p.midway = [&] { volume.gain.parameter().setValue(0.3f, 40.0f); };
}

void buildRouter(Patch& p, int) {
    auto& router = p.end<wave::Router>(p.environment, 2);
    router.setInput(0, p.input());
    router.setInput(1, p.input());
    p.midway = [&] { router.selected = 1; };
}

void buildParameter(Patch& p, int) {
    auto& value = p.end<wave::FloatParameterSource>(p.environment, 0.2f);
    p.midway = [&] { value.parameter().setValue(0.9f, -1.0f); };
}

void buildRms(Patch& p, int domain) {
    auto& rms = p.filter<RMSFilter>(20.0f);
    rms.domain = domain;
    Patch::set(rms.window, 7.0f);
}

void buildConverter(Patch& p, int conversion) {
    p.filter<DBConverter>().conversion = conversion;
}

void buildCurve(Patch& p, int function) {
    auto& curve = p.filter<TransferCurveProcessor>();
    curve.function = function;
    p.move(curve.strength, 0.0f, 1.0f);
}

/// Variants: domain, purpose and knee style, two bits each from the lowest up, and moving controls.
void buildDetector(Patch& p, int variant) {
    auto& detector = p.filter<Detector>();
    detector.domain = variant & 3;
    detector.purpose = variant >> 2 & 3;
    detector.kneeStyle = variant >> 4 & 3;
    Patch::set(detector.knee, 6.0f);
    Patch::set(detector.hysteresis, 9.0f);
    Patch::set(detector.threshold, -30.0f);
    Patch::set(detector.ratio, 4.0f);
    Patch::set(detector.limit, 60.0f);
    if (variant & 64) p.move(detector.threshold, -60.0f, 0.0f), p.move(detector.ratio, 1.0f, 5.0f);
}

void buildPeakHold(Patch& p, int course) {
    auto& hold = p.filter<PeakHold>(20.0f);
    Patch::set(hold.hold, course == 2 ? 18.0f : 1.0f);
    if (course == 1) p.move(hold.hold, 0.0f, 5.0f);
}

void buildAverage(Patch& p, int variant) {
    auto& average = p.filter<AveragingFilter>(5.0f);
    average.power = variant == 4 ? 10.0f : variant == 2 ? 2.0f : 1.0f;
    average.conversion = variant == 3 ? AveragingFilter::GainReduction : AveragingFilter::Plain;
    Patch::set(average.window, 4.0f);
    if (variant == 1) p.move(average.window, 0.0f, 5.0f);
}

/// A course per sample is what only the interpolating line reads wherever a block is cut.
void buildDelayLine(Patch& p, int readType) {
    auto& line = p.filter<DelayLine>(10.0f);
    line.readType = readType;
    line.smooth = false;
    Patch::set(line.delay, 7.3f);
    if (readType == DelayLine::Interpolated) p.move(line.delay, 0.0f, 10.0f);
}

/// Glides, or hands over time and again.
void buildMovingDelayLine(Patch& p, int readType) {
    auto& line = p.filter<DelayLine>(10.0f);
    line.readType = readType;
    line.setHandover({300, 700});
    Patch::set(line.delay, 7.3f);
    p.midway = [&] { Patch::set(line.delay, 7.2f); };
    if (readType != DelayLine::Interpolated) p.move(line.delay, 0.0f, 10.0f);
}

/// A set of Modifiers, and a partner on the other channel.
void buildCapacitor(Patch& p, int variant) {
    auto& style = p.make<Capacitor::Style>();
    auto& left = p.filter<Capacitor>(style);
    if (variant & 32) left.setPartner(&p.filter<Capacitor>(style));
    for (wave::Producer* end : p.ends) {
        auto& capacitor = static_cast<Capacitor&>(*end);
        Patch::set(capacitor.attack, 0.004f);
        Patch::set(capacitor.release, 0.06f);
        Patch::set(capacitor.attackCurve, variant & 1 ? 0.3f : 1.0f);
        Patch::set(capacitor.attackSmoothing, variant & 2 ? 0.01f : 0.0f);
        Patch::set(capacitor.releaseCurve, variant & 4 ? 0.0f : 1.0f);
        Patch::set(capacitor.releaseSmoothing, variant & 8 ? 0.2f : 0.0f);
        Patch::set(capacitor.hold, variant & 16 ? 0.05f : 0.0f);
    }
}

void buildMovingCapacitor(Patch& p, int) {
    auto& capacitor = p.filter<Capacitor>(p.make<Capacitor::Style>());
    p.move(capacitor.attack, 0.001f, 0.01f);
    p.move(capacitor.release, 0.01f, 0.2f);
}

void buildEq(Patch& p, int slope) {
    auto& eq = p.filter<EQFilter>();
    eq.shape = AnalogFilterPrototype::HighPass;
    eq.slope = slope;
    Patch::set(eq.frequency, 9.0f);
    p.midway = [&] { eq.slope = EQFilter::Order8; };
}

void buildSwitchedEq(Patch& p, int) {
    buildEq(p, EQFilter::Order3);
    auto& eq = static_cast<EQFilter&>(*p.ends[0]);
    p.midway = [&] { eq.enabled = false; };
}

void buildCrossover(Patch& p, int variant) {
    auto& crossover = p.filter<CrossoverFilter>();
    crossover.response = variant % 3;
    crossover.slope = variant / 3;
    Patch::set(crossover.frequency, 10.0f);
}

/// From end to end of the scale, many times a second.
void buildRacing(Patch& p, int slope) {
    auto& crossover = p.filter<CrossoverFilter>();
    crossover.slope = slope;
    p.move(crossover.frequency, 2.0f, 15.0f);
}

/// Variants: slope, and 3 more for the difference. Both bands, one after the other.
void buildSplitter(Patch& p, int variant) {
    auto& octaves = p.make<wave::FloatParameterSource>(p.environment, 9.0f);
    auto& splitter = p.make<DynamicsEngine::BandSplitter>(p.environment, p.input(), octaves);
    splitter.low.slope = variant % 3;
    splitter.high.slope = variant % 3;
    splitter.processingMode = variant / 3;
    p.ends = {&splitter.output(0), &splitter.output(1)};
    p.midway = [&] { splitter.processingMode = 1 - splitter.processingMode; };
}

/// Variants: transfer function; 32 more with a drive that moves, and 64 for each doubling of the rate.
void buildSaturator(Patch& p, int variant) {
    auto& saturator = p.filter<Saturator>();
    saturator.transferFunction = variant % 32;
    saturator.converterStyle.setFactor(1 << variant / 64);
    Patch::set(saturator.drive, 11.0f);
    if (variant & 32) p.move(saturator.drive, -36.0f, 36.0f);
    p.midway = [&] { saturator.transferFunction = WaveShaper::Triode; };
}

void buildDither(Patch& p, int shaping) {
    setDitherSeed(4711);
    auto& dither = p.filter<DitherFilter>();
    dither.bits = 16;
    dither.noiseShaping = shaping;
    dither.noiseType = shaping < 0 ? DitherFilter::Rounding : DitherFilter::Triangular;
}

/// A kernel of that many taps, after partitions of 256 samples or, if negative, without latency.
void buildConvolver(Patch& p, int taps) {
    auto& plan = p.make<ConvolverPlan>(std::abs(taps), taps < 0 ? 0 : 256);
    auto& kernel = p.make<SmoothingKernel>(p.environment, plan);
    kernel.windowSize.parameter().setValue(4.0f, 0.0f);
    p.filter<Convolver>(kernel);
    p.midway = [&] { kernel.windowSize.parameter().setValue(1.5f, 0.0f); };
}

void buildMovingConvolver(Patch& p, int taps) {
    auto& kernel = p.make<SmoothingKernel>(p.environment, p.make<ConvolverPlan>(taps, 256));
    p.move(kernel.windowSize, 0.5f, 5.0f);
    p.move(kernel.offset, 0.0f, 1.0f);
    p.filter<Convolver>(kernel);
}

template <typename Style>
void buildUp(Patch& p, int factor) {
    p.oversampled.setFactor(factor);
    auto& up = p.end<sr::InterpolatorFilter>(p.oversampled, p.make<Style>(p.oversampled));
    up.source = &p.input();
}

template <typename Style>
void buildDown(Patch& p, int factor) {
    buildUp<Style>(p, factor);
    auto& down = p.make<sr::DecimatorFilter>(p.make<Style>(p.oversampled));
    down.source = p.ends[0];
    p.ends = {&down};
}

void buildSkip(Patch& p, int mode) {
    buildUp<sr::ConverterStyle>(p, 4);
    auto& skip = p.make<sr::SkipDecimatorFilter>(p.make<sr::ConverterStyle>(p.oversampled),
                                                 static_cast<sr::SkipDecimator::Mode>(mode));
    skip.source = p.ends[0];
    p.ends = {&skip};
}

void buildExposer(Patch& p, int) {
    p.filter<sr::TruePeakExposer>(p.make<sr::TruePeakExposer::Style>(p.environment));
}

void buildMixer(Patch& p, int operation) {
    auto& mixer = p.end<Mixer>(p.environment, 3);
    mixer.operation = operation;
    for (int i = 0; i < 3; ++i) mixer.setInput(i, &p.input());
    p.move(mixer.gain(1), 0.1f, 1.0f);
}

void buildEffectMixer(Patch& p, int law) {
    auto& mixer = p.end<EffectMixer>(p.environment, p.input(), p.input());
    mixer.panningLaw = law;
    p.move(mixer.mix, -1.0f, 1.0f);
}

void buildStaticMixer(Patch& p, int) {
    p.end<StaticMixer>(p.environment,
                       std::vector<StaticMixer::Input>{{0.5f, &p.input()}, {-1.0f, &p.input()}});
}

void buildClipper(Patch& p, int domain) {
    auto& clipper = p.filter<SmartClipper>();
    clipper.domain = domain;
    Patch::set(clipper.threshold, -12.0f);
}

void buildOvershoot(Patch& p, int mode) {
    auto& limiter = p.filter<OvershootLimiter>(p.make<OvershootLimiter::Style>(p.environment));
    limiter.mode = mode;
    limiter.ceiling = -6.0f;
}

// Sums and logarithms of one value and of many round differently.
const Bounds ring{.gap = true}, rounded{.constant = 4e-7}, roundedDb{.constant = 2e-5}, tail{.tail = true},
    steered{.constant = kAny, .gap = true}, ringing{.gap = true, .tail = true};

std::vector<Element> singleElements() {
    return {
        {"Forwarder", Feed::Audio, [](Patch& p, int) { p.filter<wave::Forwarder>(); }},
        {"DelayFilter", Feed::Audio, buildDelay, ring, 700},
        {"DelayFilter_off", Feed::Audio, buildDelay, {}, 0},
        {"VolumeFilter", Feed::Audio, buildVolume, {}, 0},
        {"VolumeFilter_moving", Feed::Audio, buildVolume, {}, 1},
        {"Router", Feed::Audio, buildRouter},
        {"FloatParameterSource", Feed::Audio, buildParameter},
        {"RMSFilter_power", Feed::Audio, buildRms, {}, RMSFilter::Power},
        {"RMSFilter_amplitude", Feed::Audio, buildRms, {}, RMSFilter::Amplitude},
        {"PeakHold", Feed::Audio, buildPeakHold, {}, 0},
        {"PeakHold_moving", Feed::Audio, buildPeakHold, {}, 1},
        {"PeakHold_long", Feed::Audio, buildPeakHold, {}, 2},
        {"AveragingFilter", Feed::Audio, buildAverage, {}, 0},
        {"AveragingFilter_moving", Feed::Audio, buildAverage, {}, 1},
        {"AveragingFilter_of_powers", Feed::Audio, buildAverage, {}, 2},
        {"AveragingFilter_of_tenth_powers", Feed::Audio, buildAverage, {.split = 2e-6}, 4},
        {"AveragingFilter_of_gains", Feed::Reduction, buildAverage, {}, 3},
        {"DelayLine_interpolated", Feed::Audio, buildDelayLine, steered, DelayLine::Interpolated},
        {"DelayLine_taps", Feed::Audio, buildDelayLine, ring, DelayLine::TwoTaps},
        {"DelayLine_switched", Feed::Audio, buildDelayLine, ring, DelayLine::Switched},
        {"DelayLine_gliding", Feed::Audio, buildMovingDelayLine, ring, DelayLine::Interpolated},
        {"DelayLine_switching", Feed::Audio, buildMovingDelayLine, ring, DelayLine::Switched},
        {"DelayLine_overlapping", Feed::Audio, buildMovingDelayLine, ring, DelayLine::Overlapped},
        {"Capacitor_moving", Feed::Reduction, buildMovingCapacitor, {.constant = 2e-6}},
        {"EQFilter_first_order", Feed::Audio, buildEq, tail, EQFilter::Order1},
        {"EQFilter_steep", Feed::Audio, buildEq, tail, EQFilter::Order12},
        {"EQFilter_switched_off", Feed::Audio, buildSwitchedEq},
        {"ChannelFilter", Feed::Audio, [](Patch& p, int) { p.filter<LoudnessMeter::ChannelFilter>(); }, tail},
        {"DitherFilter_rounding", Feed::Audio, buildDither, {}, -1},
        {"Convolver", Feed::Audio, buildConvolver, {.split = 1e-7, .gap = true}, 221},
        {"Convolver_of_stages", Feed::Audio, buildConvolver, ring, 9000},
        {"Convolver_moving", Feed::Audio, buildMovingConvolver, {.split = 1e-7, .gap = true}, 221},
        {"Convolver_without_latency", Feed::Audio, buildConvolver, {.split = 2e-7, .gap = true}, -700},
        {"TruePeakExposer", Feed::Audio, buildExposer, ring},
        {"StaticMixer", Feed::Audio, buildStaticMixer},
        {"SmartClipper_decibels", Feed::Level, buildClipper, {}, GainChangeDomain::Decibels},
        {"SmartClipper_amplitude", Feed::Audio, buildClipper, {}, GainChangeDomain::Amplitude},
        {"OvershootLimiter_smooth", Feed::Audio, buildOvershoot, {}, OvershootLimiter::Smooth},
        {"OvershootLimiter_hard", Feed::Audio, buildOvershoot, {}, OvershootLimiter::Hard},
        {"OvershootLimiter_off", Feed::Audio, buildOvershoot, {}, OvershootLimiter::Off},
    };
}

}  // namespace

std::vector<Element> elements() {
    std::vector<Element> all = singleElements();
    const auto add = [&](const char* name, Feed feed, auto* build, int variant, Bounds bounds = {}) {
        all.push_back({fmt::format("{}_{}", name, variant), feed, build, bounds, variant});
    };
    for (int variant = 0; variant < 128; ++variant) {
        const int domain = variant & 3, purpose = variant >> 2 & 3, style = variant >> 4 & 3;
        if (domain > 1 || purpose > Detector::ExpandUp || style > Detector::Clipping) continue;
        const bool decibels = domain == GainChangeDomain::Decibels;
        add("Detector", decibels ? Feed::Level : Feed::Audio, buildDetector, variant,
            decibels ? roundedDb : rounded);
    }
    for (int variant = 0; variant < 64; ++variant) {
        // A pair rests when both do, and what is left then is below 1e-9 dB. A release in proportion to the
        // step ends within samples of the rest: what is left is another number for other blocks, and the next
        // levels may be rounded to the other side.
        const bool ramp = (variant & 4) != 0 && (variant & 16) == 0;
        add("Capacitor", Feed::Reduction, buildCapacitor, variant,
            {.split = ramp           ? 2e-6
                      : variant & 32 ? 2e-9
                                     : 0.0});
    }
    for (int operation = Mixer::Add; operation <= Mixer::Minimize; ++operation) {
        add("Mixer", Feed::Audio, buildMixer, operation);
    }
    for (int i = 0; i < 15; ++i) add("CrossoverFilter", Feed::Audio, buildCrossover, i, tail);
    for (int slope = 0; slope < 5; ++slope) {
        // Coefficients follow in steps from the beginning of a block on.
        add("CrossoverFilter_racing", Feed::Audio, buildRacing, slope,
            {.split = kAny, .constant = kAny, .tail = true});
    }
    for (int shaping = 0; shaping < 4; ++shaping) {
        // The generator goes on through a reset.
        add("DitherFilter", Feed::Audio, buildDither, shaping, {.reset = 60 * 0x1p-15});
    }
    for (int factor = 1; factor <= 32; factor *= 2) {
        add("InterpolatorFilter", Feed::Audio, buildUp<sr::ConverterStyle>, factor, ring);
        add("DecimatorFilter", Feed::Audio, buildDown<sr::ConverterStyle>, factor, ring);
        // The recursive ones go up to 8, of which as much counts whole as the rate allows, also when it
        // changes.
        if (factor > 4) continue;
        add("IIRInterpolator", Feed::Audio, buildUp<sr::IIRConverterStyle>, factor, ringing);
        add("IIRDecimator", Feed::Audio, buildDown<sr::IIRConverterStyle>, factor, ringing);
    }
    for (int function = 0; function < WaveShaper::kCurveCount; ++function) {
        add("Saturator", Feed::Audio, buildSaturator, function);
    }
    for (const int variant : {32, 43, 64 + 2, 64 + 32, 128 + 11, 192 + 13}) {
        add("Saturator", Feed::Audio, buildSaturator, variant, variant > 64 ? ringing : rounded);
    }
    for (int variant = 0; variant < 6; ++variant)
        add("BandSplitter", Feed::Audio, buildSplitter, variant, tail);
    for (int i = 0; i < 3; ++i) {
        add("SkipDecimatorFilter", Feed::Audio, buildSkip, i, ring);
        add("EffectMixer", Feed::Audio, buildEffectMixer, i, rounded);
    }
    for (int i = 0; i < 4; ++i) {
        add("DBConverter", i % 2 ? Feed::Level : Feed::Share, buildConverter, i, i % 2 ? rounded : roundedDb);
        if (i < 2) add("TransferCurveProcessor", Feed::Share, buildCurve, i);
    }
    return all;
}

}  // namespace vanta::test
