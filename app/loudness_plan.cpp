#include "app/loudness_plan.hpp"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>

#include "app/failure.hpp"
#include "app/interrupt.hpp"
#include "app/progress_bar.hpp"
#include "app/render_source.hpp"
#include "app/true_peak_check.hpp"
#include "foundation/numbers.hpp"
#include "host/offline/loudness_search.hpp"
#include "host/offline/measuring_streams.hpp"

namespace vanta {

namespace {

namespace fs = std::filesystem;

/// What is promised of the written file.
constexpr double kToleranceLu = 0.1;
/// Lowering the ceiling takes a little loudness, raising the Gain again a little of the margin.
constexpr int kMostRounds = 5;

class Planner {
public:
    Planner(std::span<const fs::path> inputPaths, const LimiterSettings& limiterSettings,
            const RenderOptions& renderOptions)
        : inputs(inputPaths),
          settings(limiterSettings),
          options(renderOptions),
          ceilings(inputs.size(), static_cast<double>(settings.outputLevel.value())),
          peaks(inputs.size()) {}

    LoudnessPlan plan(double targetLufs) {
        LoudnessTarget target{.lufs = targetLufs};
        target.firstGainDb = targetLufs - loudnessOfInputs().value_or(targetLufs);
        LoudnessFound found;
        for (int round = 0; round < kMostRounds; ++round) {
            found = findLoudness(target, [this](double gainDb) { return loudnessAt(gainDb); });
            requireReached(target, found);
            if (!lowerCeilings(found.gainDb)) break;
            target.firstGainDb = found.gainDb;
        }
        return {targetLufs, found.gainDb, *found.lufs, passes, ceilings};
    }

private:
    std::string names() const {
        return inputs.size() == 1 ? inputs[0].string() : fmt::format("the {} inputs together", inputs.size());
    }

    void requireReached(const LoudnessTarget& target, const LoudnessFound& found) const {
        if (!found.lufs)
            throw Failure(
                fmt::format("{}: there is no loudness to bring to {:.2f} LUFS", names(), target.lufs));
        if (std::abs(*found.lufs - target.lufs) <= kToleranceLu - 0.02) return;
        throw Failure(fmt::format(
            "{}: {:.2f} LUFS cannot be reached: the nearest under this ceiling is {:.2f} LUFS, at a Gain of "
            "{:.2f} dB; nothing was written",
            names(), target.lufs, *found.lufs, found.gainDb));
    }

    std::optional<double> loudnessOfInputs() const {
        Programme all;
        for (const fs::path& input : inputs) {
            all.merge(measureFile(input, options.layout, !options.quiet).programme);
        }
        return all.figures().integrated;
    }

    std::optional<double> loudnessAt(double gainDb) {
        ++passes;
        lastGainDb = gainDb;
        Programme all;
        for (std::size_t i = 0; i < inputs.size(); ++i) all.merge(tryOut(i, gainDb));
        return all.figures().integrated;
    }

    Programme tryOut(std::size_t index, double gainDb) {
        RenderSource source(inputs[index], options.sideChain, options.layout);
        const double rate = source.sampleRate();
        const std::int64_t tail = std::llround(options.tailSeconds * rate);
        LimiterSettings tried;
        settings.applyTo(tried);
        tried.gain.setValue(static_cast<float>(gainDb), 0);
        tried.outputLevel.setValue(static_cast<float>(ceilings[index]), 0);
        MeasuringWriter writer(source.mapping().layout, rate);
        ProgressBar progress(fmt::format("pass {}: {}", passes, inputs[index].filename().string()),
                             source.input().info().frames + tail, rate, !options.quiet);
        const auto proceed = [&](std::int64_t frames) {
            progress.show(frames);
            return !interruptRequested();
        };
        const RenderResult result = render({.settings = tried,
                                            .input = source.input(),
                                            .output = writer,
                                            .sideChain = source.sideChain(),
                                            .layout = source.mapping().layout,
                                            .sampleRate = rate,
                                            .blockSamples = options.blockSamples,
                                            .tailSamples = tail,
                                            .ditherSeed = options.ditherSeed,
                                            .proceed = proceed});
        if (!result.complete) throw Interrupted();
        writer.finish();
        peaks[index] = dbFromGain(writer.truePeak());
        return writer.programme();
    }

    /// False if no true peak goes too far at this Gain.
    bool lowerCeilings(double gainDb) {
        if (!options.maxTruePeakDb) return false;
        // The nearest pass need not be the last, and the peaks are the last one's.
        if (gainDb != lastGainDb) loudnessAt(gainDb);
        bool lowered = false;
        for (std::size_t i = 0; i < inputs.size(); ++i) {
            const double missing = peaks[i] - *options.maxTruePeakDb;
            if (missing <= 0.0) continue;
            ceilings[i] = std::max(ceilings[i] - missing - kTruePeakReserveDb,
                                   static_cast<double>(settings.outputLevel.minimum()));
            lowered = true;
        }
        return lowered;
    }

    std::span<const fs::path> inputs;
    const LimiterSettings& settings;
    const RenderOptions& options;
    std::vector<double> ceilings;
    std::vector<double> peaks;  ///< dBTP, of the last pass
    double lastGainDb = 0.0;
    int passes = 0;
};

}  // namespace

LoudnessPlan planLoudness(std::span<const fs::path> inputs, const LimiterSettings& settings,
                          const RenderOptions& options, double targetLufs) {
    return Planner(inputs, settings, options).plan(targetLufs);
}

}  // namespace vanta
