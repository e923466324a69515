#include "app/loudness_plan.hpp"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <map>
#include <utility>

#include "app/failure.hpp"
#include "app/interrupt.hpp"
#include "app/progress_bar.hpp"
#include "app/render_source.hpp"
#include "host/offline/loudness_search.hpp"
#include "host/offline/measuring_streams.hpp"

namespace vanta {

namespace {

namespace fs = std::filesystem;

/// What is promised of the written file.
constexpr double kToleranceLu = 0.1;
/// How often the ceilings of several files are found anew at one Gain, and what is near enough.
constexpr int kMostRounds = 3;
constexpr double kSettledDb = 0.02;
constexpr double kSilentDb = -200.0;

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
        // Where nothing is limited, what comes out is louder by Gain and Output Level.
        target.firstGainDb = targetLufs - loudnessOfInputs().value_or(targetLufs) - ceilings.front();
        const auto found = findLoudness(target, [this](double gainDb) { return loudnessAt(gainDb); });
        requireReached(target, found);
        return {targetLufs, found.gainDb, *found.lufs, passes, ceilingsAt.at(found.gainDb)};
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

    /// The loudness at this Gain with the ceilings that keep the true peak.
    std::optional<double> loudnessAt(double gainDb) {
        for (int round = 1;; ++round) {
            ++passes;
            Programme all;
            for (std::size_t i = 0; i < inputs.size(); ++i) all.merge(tryOut(i, gainDb));
            const auto lufs = all.figures().integrated;
            const auto [shift, largest] = moveCeilings();
            // Of one file the level moves as its ceiling does; of several it is measured again.
            if (!lufs || inputs.size() == 1 || largest < kSettledDb || round == kMostRounds) {
                ceilingsAt[gainDb] = ceilings;
                return lufs ? std::optional(*lufs + shift) : std::nullopt;
            }
        }
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
        const auto peak = writer.programme().figures().total.truePeak;
        peaks[index] = peak ? peak->level : kSilentDb;
        return writer.programme();
    }

    /// By how much the ceilings had to move, on average and at most, in dB: Output Level stands behind all
    /// that limits, so a true peak moves with it.
    std::pair<double, double> moveCeilings() {
        if (!options.maxTruePeakDb) return {};
        const auto lowest = static_cast<double>(settings.outputLevel.minimum());
        const auto highest = static_cast<double>(settings.outputLevel.value());
        double sum = 0.0;
        double largest = 0.0;
        for (std::size_t i = 0; i < inputs.size(); ++i) {
            const double room = *options.maxTruePeakDb - kTruePeakReserveDb - peaks[i];
            const double moved = std::clamp(ceilings[i] + room, lowest, highest);
            sum += moved - ceilings[i];
            largest = std::max(largest, std::abs(moved - ceilings[i]));
            ceilings[i] = moved;
        }
        return {sum / static_cast<double>(inputs.size()), largest};
    }

    std::span<const fs::path> inputs;
    const LimiterSettings& settings;
    const RenderOptions& options;
    std::vector<double> ceilings;
    std::vector<double> peaks;                         ///< dBTP, of the last pass
    std::map<double, std::vector<double>> ceilingsAt;  ///< by Gain
    int passes = 0;
};

}  // namespace

LoudnessPlan planLoudness(std::span<const fs::path> inputs, const LimiterSettings& settings,
                          const RenderOptions& options, double targetLufs) {
    return Planner(inputs, settings, options).plan(targetLufs);
}

}  // namespace vanta
