#include <benchmark/benchmark.h>
#include <malloc.h>

#include <chrono>
#include <limits>
#include <string>
#include <utility>
#include <vector>

#include "bench/busy_limiter.hpp"

namespace vanta::bench {
namespace {

constexpr int kBlock = 256;

/// Prints time per frame and the multiple of real time, and runs a warm limiter.
void measure(benchmark::State& state, const Setting& setting, int block = kBlock) {
    BusyLimiter rig(setting);
    // Long enough for silence to go through the longest window.
    const int warmUp = setting.level > 0.0f ? rig.frames() : 4 * rig.frames();
    for (int i = 0; i < warmUp; i += block) rig.run(block);
    for (auto _ : state) rig.run(block);
    const auto frames = static_cast<double>(state.iterations()) * block;
    state.counters["per_frame"] =
        benchmark::Counter(frames, benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
    state.counters["x_realtime"] =
        benchmark::Counter(frames / setting.sampleRate, benchmark::Counter::kIsRate);
}

void registerStyles() {
    for (const StyleRow& style : kStyleTable) {
        for (const float rate : {44100.0f, 96000.0f}) {
            for (const bool truePeak : {false, true}) {
                const std::string name = "style/" + std::string(style.name) + "/" +
                                         std::to_string(static_cast<int>(rate)) +
                                         (truePeak ? "/true_peak" : "");
                benchmark::RegisterBenchmark(name.c_str(), [=, style = style.style](benchmark::State& state) {
                    measure(state, {style, 0, truePeak, rate});
                });
            }
        }
    }
}

void registerOversampling() {
    for (int index = 0; index <= 5; ++index) {
        for (const bool truePeak : {false, true}) {
            const std::string name =
                "oversampling/" + std::to_string(1 << index) + "x" + (truePeak ? "/true_peak" : "");
            benchmark::RegisterBenchmark(name.c_str(), [=](benchmark::State& state) {
                measure(state, {.oversampling = index, .truePeak = truePeak});
            });
        }
    }
}

void registerLayouts() {
    for (const ChannelLayout layout : {kMonoLayout, kStereoLayout, 6, 14}) {
        const std::string name = "layout/" + std::string(channelLayoutName(layout));
        benchmark::RegisterBenchmark(name.c_str(), [=](benchmark::State& state) {
            measure(state, {.truePeak = true, .sampleRate = 48000.0f, .layout = layout});
        });
    }
}

double microsecondsOf(BusyLimiter& rig, int block) {
    const auto start = std::chrono::steady_clock::now();
    rig.run(block);
    return std::chrono::duration<double, std::micro>(std::chrono::steady_clock::now() - start).count();
}

/// The spread of block times: what decides whether a block is late. Each block's time is the fastest of nine
/// passes over the same input, each by a limiter of its own, so that what the machine does meanwhile falls
/// out and what the limiter does stays.
void blockTimes(benchmark::State& state, LimitingStyle style, int block, int oversampling) {
    constexpr int kPasses = 9;
    std::vector<double> fastest;
    for (auto _ : state) {
        for (int pass = 0; pass < kPasses; ++pass) {
            BusyLimiter rig({.style = style, .oversampling = oversampling, .truePeak = true});
            const auto blocks = static_cast<std::size_t>(rig.frames() / block);
            for (std::size_t i = 0; i < blocks; ++i) rig.run(block);
            fastest.resize(blocks, std::numeric_limits<double>::max());
            for (double& time : fastest) time = std::min(time, microsecondsOf(rig, block));
        }
    }
    std::sort(fastest.begin(), fastest.end());
    const double median = fastest[fastest.size() / 2];
    state.counters["median_us"] = median;
    state.counters["p99_us"] = fastest[fastest.size() * 99 / 100];
    state.counters["worst_us"] = fastest.back();
    state.counters["worst_to_median"] = fastest.back() / median;
    state.counters["deadline_us"] = 1e6 * block / 44100.0;
}

void registerBlockTimes() {
    for (const StyleRow& style : kStyleTable) {
        for (const int block : {64, 256}) {
            for (const int oversampling : {0, 2}) {
                const std::string name = "block_times/" + std::string(style.name) + "/" +
                                         std::to_string(block) + "/" + std::to_string(1 << oversampling) +
                                         "x";
                benchmark::RegisterBenchmark(name.c_str(), [=, style = style.style](benchmark::State& state) {
                    blockTimes(state, style, block, oversampling);
                })->Iterations(1);
            }
        }
    }
}

/// An instance that has little to do: silence at its input, or all of it below the threshold. Beside `style`.
void registerIdle() {
    for (const StyleRow& style : kStyleTable) {
        for (const auto& [name, level] : {std::pair{"silence", 0.0f}, std::pair{"below_threshold", 0.1f}}) {
            for (const int block : {64, kBlock}) {
                const std::string full =
                    "idle/" + std::string(style.name) + "/" + name + "/" + std::to_string(block);
                benchmark::RegisterBenchmark(full.c_str(), [=, level = level,
                                                            style = style.style](benchmark::State& state) {
                    measure(state, {.style = style, .truePeak = true, .gainDb = 0.0f, .level = level}, block);
                });
            }
        }
    }
}

void construction(benchmark::State& state) {
    for (auto _ : state) {
        VantaProcessor processor(kStereoLayout);
        benchmark::DoNotOptimize(&processor);
    }
}
BENCHMARK(construction)->Unit(benchmark::kMillisecond);

std::size_t heapBytes() {
    const struct mallinfo2 info = mallinfo2();
    return info.uordblks + info.hblkhd;
}

void memory(benchmark::State& state, int oversampling) {
    double bytes = 0.0;
    for (auto _ : state) {
        const std::size_t before = heapBytes();
        VantaProcessor processor(kStereoLayout);
        processor.prepare(44100.0f);
        processor.oversampling.setValue(static_cast<float>(oversampling), kFromHost);
        float silence[kBlock] = {};
        const float* in[] = {silence, silence};
        float left[kBlock];
        float right[kBlock];
        float* out[] = {left, right};
        processor.processBlock(in, 2, out, 2, kBlock);
        bytes = static_cast<double>(heapBytes() - before);
    }
    state.counters["MiB"] = bytes / 1048576.0;
}

void registerMemory() {
    for (const int index : {0, 2, 5}) {
        const std::string name = "memory/stereo/" + std::to_string(1 << index) + "x";
        benchmark::RegisterBenchmark(name.c_str(), [=](benchmark::State& state) {
            memory(state, index);
        })->Iterations(3);
    }
}

[[maybe_unused]] const bool kRegistered = [] {
    registerStyles();
    registerOversampling();
    registerLayouts();
    registerBlockTimes();
    registerIdle();
    registerMemory();
    return true;
}();

}  // namespace
}  // namespace vanta::bench
