#include <benchmark/benchmark.h>
#include <ebur128.h>

#include <array>
#include <cstdint>
#include <memory>
#include <vector>

#include "bench/busy_limiter.hpp"
#include "bench/meter_rig.hpp"
#include "dsp/metering/true_peak_judge.hpp"
#include "measure/programme_meter.hpp"
#include "tests/support/signals.hpp"

namespace vanta::bench {
namespace {

constexpr int kBlock = 256;
constexpr double kRate = 48000.0;
constexpr std::size_t kFrames = 256 * 375;  // two seconds
/// Blocks from one look at the figures to the next, about 100 ms.
constexpr std::int64_t kLook = 19;

std::vector<std::vector<float>> programme() {
    return {test::pinkNoise(1, kFrames), test::pinkNoise(2, kFrames)};
}

void count(benchmark::State& state) {
    const auto frames = static_cast<double>(state.iterations()) * kBlock;
    state.counters["per_frame"] =
        benchmark::Counter(frames, benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}

void ownMeters(benchmark::State& state, bool withTruePeak) {
    const auto signal = programme();
    MeterRig rig(signal, kRate, withTruePeak);
    std::int64_t blocks = 0;
    for (auto _ : state) {
        rig.run();
        if (++blocks % kLook == 0) benchmark::DoNotOptimize(rig.look());
    }
    count(state);
}
BENCHMARK_CAPTURE(ownMeters, loudness, false);
BENCHMARK_CAPTURE(ownMeters, loudness_and_true_peak, true);

void libebur128(benchmark::State& state, int mode) {
    const auto signal = programme();
    std::vector<float> interleaved(2 * kFrames);
    for (std::size_t i = 0; i < interleaved.size(); ++i) interleaved[i] = signal[i % 2][i / 2];
    ebur128_state* meter = ebur128_init(2, static_cast<unsigned long>(kRate), mode);
    std::size_t at = 0;
    std::int64_t blocks = 0;
    for (auto _ : state) {
        if (at == kFrames) at = 0;
        ebur128_add_frames_float(meter, interleaved.data() + 2 * at, kBlock);
        at += kBlock;
        if (++blocks % kLook != 0) continue;
        double figure = 0.0;
        ebur128_loudness_momentary(meter, &figure);
        ebur128_loudness_shortterm(meter, &figure);
        ebur128_loudness_global(meter, &figure);
        ebur128_loudness_range(meter, &figure);
        benchmark::DoNotOptimize(figure);
    }
    ebur128_destroy(&meter);
    count(state);
}
constexpr int kLoudnessMode =
    EBUR128_MODE_M | EBUR128_MODE_S | EBUR128_MODE_I | EBUR128_MODE_LRA | EBUR128_MODE_HISTOGRAM;
BENCHMARK_CAPTURE(libebur128, loudness, kLoudnessMode);
BENCHMARK_CAPTURE(libebur128, loudness_and_true_peak, kLoudnessMode | EBUR128_MODE_TRUE_PEAK);

/// The whole limiter that these meters are a part of, with no display open.
void limiterAroundThem(benchmark::State& state) {
    BusyLimiter rig({.sampleRate = static_cast<float>(kRate)});
    for (int i = 0; i < rig.frames(); i += kBlock) rig.run(kBlock);
    for (auto _ : state) rig.run(kBlock);
    count(state);
}
BENCHMARK(limiterAroundThem);

/// What measuring a file takes, and verifying one.
void programmeMeter(benchmark::State& state) {
    const auto signal = programme();
    ProgrammeMeter meter(kStereoLayout, kRate);
    std::size_t at = 0;
    for (auto _ : state) {
        if (at == kFrames) at = 0;
        const float* blocks[] = {signal[0].data() + at, signal[1].data() + at};
        meter.process(blocks, kBlock);
        at += kBlock;
    }
    count(state);
}
BENCHMARK(programmeMeter);

void truePeakJudge(benchmark::State& state) {
    const auto signal = programme();
    std::array<TruePeakJudge, 2> judges;
    std::size_t at = 0;
    for (auto _ : state) {
        if (at == kFrames) at = 0;
        for (std::size_t c = 0; c < 2; ++c) judges[c].process(signal[c].data() + at, kBlock);
        at += kBlock;
    }
    count(state);
}
BENCHMARK(truePeakJudge);

}  // namespace
}  // namespace vanta::bench
