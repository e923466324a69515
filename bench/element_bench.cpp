#include <benchmark/benchmark.h>

#include <memory>
#include <string>

#include "dsp/convolver/convolver.hpp"
#include "dsp/convolver/fft.hpp"
#include "dsp/convolver/smoothing_kernel.hpp"
#include "dsp/delay/averaging_filter.hpp"
#include "dsp/detector/detector.hpp"
#include "dsp/detector/peak_hold.hpp"
#include "dsp/detector/rms_filter.hpp"
#include "dsp/envelope/capacitor.hpp"
#include "dsp/filter/eq_filter.hpp"
#include "dsp/saturator/saturator.hpp"
#include "dsp/sr/converter_filter.hpp"
#include "dsp/sr/iir_converter_style.hpp"
#include "dsp/sr/true_peak_exposer.hpp"
#include "tests/support/element_rig.hpp"
#include "tests/support/signals.hpp"

namespace vanta::bench {
namespace {

constexpr int kBlock = 256;
constexpr int kSeconds = 2;

/// An environment with a source that plays two seconds of pink noise over and over.
struct Bed {
    explicit Bed(float rate = 44100.0f) : environment(kBlock) {
        environment.setSampleRate(rate);
        source = std::make_unique<test::VectorSource>(
            environment, test::pinkNoise(1, static_cast<std::size_t>(rate) * kSeconds, 0.25));
    }
    void run(wave::Producer& element, int samples = kBlock) {
        if (++blocks % (kSeconds * 44100 / kBlock) == 0) source->rewind();
        environment.advanceTick();
        element.pull(test::ownSamples(element, samples));
        environment.run(samples, 0);
    }
    wave::Environment environment;
    std::unique_ptr<test::VectorSource> source;
    int blocks = 0;
};

void report(benchmark::State& state, int factor = 1) {
    const auto samples = static_cast<double>(state.iterations()) * kBlock * factor;
    state.counters["per_sample"] =
        benchmark::Counter(samples, benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}

void convolver(benchmark::State& state) {
    Bed bed;
    const int length = static_cast<int>(state.range(0));
    ConvolverPlan plan(length, 256);
    SmoothingKernel kernel(bed.environment, plan);
    kernel.smoothing.parameter().setValue(1.0f, 0.0f);
    const auto windowMs = static_cast<float>(length - 1) / 44.1f;
    kernel.windowSize.parameter().setRange(0.0f, windowMs);
    kernel.windowSize.parameter().setValue(windowMs, 0.0f);
    Convolver element(bed.environment, kernel);
    element.source = bed.source.get();
    for (int i = 0; i < 2 * length / kBlock + 8; ++i) bed.run(element);
    for (auto _ : state) bed.run(element);
    report(state);
}
BENCHMARK(convolver)->Arg(1)->Arg(222)->Arg(7056)->Arg(30720)->Arg(70560);

template <typename Style>
void upAndDown(benchmark::State& state) {
    Bed bed;
    wave::SubEnvironment oversampled(bed.environment);
    Style style(oversampled);
    sr::InterpolatorFilter up(oversampled, style);
    sr::DecimatorFilter down(style);
    up.source = bed.source.get();
    down.source = &up;
    oversampled.setFactor(static_cast<int>(state.range(0)));
    for (auto _ : state) bed.run(down);
    report(state);
}
BENCHMARK(upAndDown<sr::ConverterStyle>)->RangeMultiplier(2)->Range(2, 32);
BENCHMARK(upAndDown<sr::IIRConverterStyle>)->RangeMultiplier(2)->Range(2, 8);

/// The factor around the curve.
void saturator(benchmark::State& state) {
    Bed bed;
    Saturator element(bed.environment);
    element.source = bed.source.get();
    element.transferFunction = WaveShaper::PolynomeOrder3;
    element.converterStyle.setFactor(static_cast<int>(state.range(0)));
    for (auto _ : state) bed.run(element);
    report(state);
}
BENCHMARK(saturator)->RangeMultiplier(2)->Range(1, 8);

void truePeakExposer(benchmark::State& state) {
    Bed bed(static_cast<float>(state.range(0)));
    sr::TruePeakExposer::Style style(bed.environment);
    sr::TruePeakExposer element(bed.environment, style);
    element.source = bed.source.get();
    element.reset();
    for (auto _ : state) bed.run(element);
    report(state);
}
BENCHMARK(truePeakExposer)->Arg(44100)->Arg(96000)->Arg(192000);

void fft(benchmark::State& state) {
    const int size = static_cast<int>(state.range(0));
    FFT transform(size);
    FFT::Work work(size);
    wave::AlignedBuffer<float> spectrum(size);
    const auto samples = test::pinkNoise(1, static_cast<std::size_t>(size));
    for (auto _ : state) {
        transform.forward(samples.data(), samples.data() + size / 2, spectrum.data(), work, 0,
                          transform.grains());
        benchmark::DoNotOptimize(spectrum.data());
    }
    state.counters["per_sample"] =
        benchmark::Counter(static_cast<double>(state.iterations()) * size,
                           benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}
BENCHMARK(fft)->RangeMultiplier(4)->Range(64, 65536);

struct DetectorForm {
    int domain;
    float ratio;
    float kneeDb;
    int purpose;
};

void detector(benchmark::State& state, const DetectorForm& form) {
    Bed bed;
    Detector element(bed.environment);
    element.source = bed.source.get();
    element.domain = form.domain;
    element.purpose = form.purpose;
    element.threshold.parameter().setRange(-180.0f, 180.0f);
    element.threshold.parameter().setValue(-18.0f, 0.0f);
    element.ratio.parameter().setValue(form.ratio, 0.0f);
    element.knee.parameter().setValue(form.kneeDb, 0.0f);
    for (auto _ : state) bed.run(element);
    report(state);
}
BENCHMARK_CAPTURE(detector, limit_amplitude, DetectorForm{0, 100.0f, 0.0f, Detector::Compress});
BENCHMARK_CAPTURE(detector, ratio_amplitude, DetectorForm{0, 4.0f, 0.0f, Detector::Compress});
BENCHMARK_CAPTURE(detector, knee_amplitude, DetectorForm{0, 4.0f, 6.0f, Detector::Compress});
BENCHMARK_CAPTURE(detector, limit_db, DetectorForm{1, 100.0f, 0.0f, Detector::Compress});
BENCHMARK_CAPTURE(detector, knee_db, DetectorForm{1, 4.0f, 6.0f, Detector::Compress});
BENCHMARK_CAPTURE(detector, expand_up_db, DetectorForm{1, 4.0f, 0.0f, Detector::ExpandUp});

void capacitor(benchmark::State& state) {
    Bed bed;
    Capacitor::Style style;
    Capacitor element(bed.environment, style);
    element.source = bed.source.get();
    if (state.range(0)) element.releaseSmoothing.parameter().setValue(0.1f, 0.0f);
    for (auto _ : state) bed.run(element);
    report(state);
}
BENCHMARK(capacitor)->Arg(0)->Arg(1);

void peakHold(benchmark::State& state) {
    Bed bed;
    PeakHold element(bed.environment, 50.0f);
    element.source = bed.source.get();
    element.hold.parameter().setRange(0.0f, 50.0f);
    element.hold.parameter().setValue(static_cast<float>(state.range(0)), 0.0f);
    for (auto _ : state) bed.run(element);
    report(state);
}
BENCHMARK(peakHold)->Arg(0)->Arg(1)->Arg(5)->Arg(50);

void eqFilter(benchmark::State& state) {
    Bed bed;
    EQFilter element(bed.environment);
    element.source = bed.source.get();
    element.shape = AnalogFilterPrototype::HighPass;
    element.slope = static_cast<int>(state.range(0));
    for (auto _ : state) bed.run(element);
    report(state);
}
BENCHMARK(eqFilter)->Arg(EQFilter::Order2)->Arg(EQFilter::Order8);

void rmsFilter(benchmark::State& state) {
    Bed bed;
    RMSFilter element(bed.environment, 400.0f);
    element.source = bed.source.get();
    element.window.parameter().setRange(0.0f, 400.0f);
    element.window.parameter().setValue(400.0f, 0.0f);
    for (auto _ : state) bed.run(element);
    report(state);
}
BENCHMARK(rmsFilter);

void averagingFilter(benchmark::State& state) {
    Bed bed;
    AveragingFilter element(bed.environment, 50.0f);
    element.source = bed.source.get();
    element.window.parameter().setRange(0.0f, 50.0f);
    element.window.parameter().setValue(5.0f, 0.0f);
    for (auto _ : state) bed.run(element);
    report(state);
}
BENCHMARK(averagingFilter);

}  // namespace
}  // namespace vanta::bench
