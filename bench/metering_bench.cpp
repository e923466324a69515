#include <benchmark/benchmark.h>
#include <ebur128.h>

#include <array>
#include <cstdint>
#include <memory>
#include <vector>

#include "bench/busy_limiter.hpp"
#include "dsp/detector/rms_filter.hpp"
#include "dsp/metering/level_meter.hpp"
#include "dsp/metering/loudness_meter.hpp"
#include "dsp/metering/true_peak_judge.hpp"
#include "dsp/sr/true_peak_exposer.hpp"
#include "measure/programme_meter.hpp"
#include "tests/support/signals.hpp"

namespace vanta::bench {
namespace {

constexpr int kBlock = 256;
constexpr double kRate = 48000.0;
constexpr std::size_t kFrames = 256 * 375;  // two seconds
/// Blocks from one look at the figures to the next, about 100 ms.
constexpr std::int64_t kLook = 19;

std::array<std::vector<float>, 2> programme() {
    return {test::pinkNoise(1, kFrames), test::pinkNoise(2, kFrames)};
}

void count(benchmark::State& state) {
    const auto frames = static_cast<double>(state.iterations()) * kBlock;
    state.counters["per_frame"] =
        benchmark::Counter(frames, benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}

/// All meters of a stereo limiter, fed directly: loudness, and of each channel true peak, RMS and two bars.
class MeterRig {
public:
    explicit MeterRig(bool withTruePeak) {
        environment_.setSampleRate(static_cast<float>(kRate));
        for (int c = 0; c < 2; ++c) {
            channels_.push_back(std::make_unique<Channel>(environment_, style_));
            channels_.back()->exposer.enabled = withTruePeak;
            loudness_.setChannel(c, c == 0 ? 0x21E : 0x41E, channels_.back()->weighting);
        }
    }

    void run() {
        if (at_ == kFrames) at_ = 0;
        for (std::size_t c = 0; c < 2; ++c) channels_[c]->input.setBuffer(signal_[c].data() + at_, kBlock);
        at_ += kBlock;
        environment_.advanceTick();
        environment_.run(kBlock, 0);
    }

    float look() {
        float sum = 0.0f;
        for (auto& channel : channels_)
            sum += channel->peak.value(wave::LevelSource::Current) +
                   channel->level.value(wave::LevelSource::Current);
        for (int i = 0; i < LoudnessMeter::SourceCount; ++i) {
            sum += loudness_.source(static_cast<LoudnessMeter::SourceIndex>(i))
                       .value(wave::LevelSource::Current);
        }
        return sum;
    }

private:
    struct Channel {
        Channel(wave::Environment& owner, sr::TruePeakExposer::Style& style)
            : input(owner),
              weighting(owner),
              exposer(owner, style),
              rms(owner, 2000.0f),
              peak(owner),
              level(owner) {
            weighting.source = exposer.source = &input;
            rms.source = &weighting.weighted();
            rms.window.parameter().setRange(0.0f, 2000.0f);
            rms.window.parameter().setValue(400.0f, 0.0f);
            peak.source = &exposer;
            level.source = &rms;
            level.inputDomain = LevelMeter::PowerDomain;
        }
        wave::Input input;
        LoudnessMeter::ChannelFilter weighting;
        sr::TruePeakExposer exposer;
        RMSFilter rms;
        LevelMeter peak;
        LevelMeter level;
    };

    std::array<std::vector<float>, 2> signal_ = programme();
    wave::Environment environment_{kBlock};
    LoudnessMeter loudness_{environment_};
    sr::TruePeakExposer::Style style_{environment_};
    std::vector<std::unique_ptr<Channel>> channels_;
    std::size_t at_ = 0;
};

void ownMeters(benchmark::State& state, bool withTruePeak) {
    MeterRig rig(withTruePeak);
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
