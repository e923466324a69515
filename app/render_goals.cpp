#include "app/render_goals.hpp"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <numeric>
#include <vector>

#include "host/offline/loudness_search.hpp"

namespace vanta {

namespace {

constexpr int kMostPasses = 12;
constexpr double kLowestOutputLevelDb = -30.0;
/// By how much further Output Level goes down than was missing, in dB, so that one more render is enough; the
/// more so while the Gain still moves, which changes what is missing.
constexpr double kReserveDb = 0.005;
constexpr double kMovingReserveDb = 0.03;
/// Levels of several files that move by more than this change what was known of their common loudness.
constexpr double kSettledDb = 0.05;

class Seeker {
public:
    Seeker(std::span<const std::unique_ptr<FileRender>> fileRenders, const RenderGoals& renderGoals)
        : files(fileRenders), goals(renderGoals), levels(files.size(), goals.outputLevelDb) {}

    GoalsReached run(bool measure) {
        if (measure) each([](FileRender& file, std::size_t) { file.measureInput(); });
        gainDb = goals.gainDb;
        if (goals.loudnessLufs) {
            beginSearch(firstGain());
        } else {
            predictLevels();
        }
        for (;;) {
            renderAll();
            if (isLoudEnough() && missingDb() <= 0.0) return reached;
            if (reached.passes == kMostPasses) failAfterAll();
            goOn();
        }
    }

private:
    template <typename Work>
    void each(Work&& work) {
        for (std::size_t i = 0; i < files.size(); ++i) {
            try {
                work(*files[i], i);
            } catch (const Failure& failure) {
                throw FileFailure(i, failure.what());
            }
        }
    }

    // Output Level stands behind all that limits: where nothing is limited, what comes out is louder by both.
    // A Gain that brings peaks up to a lower level needs more of itself, which a few rounds settle.
    double firstGain() {
        Programme all;
        for (const auto& file : files) all.merge(file->report().before->programme);
        const auto lufs = all.figures().integrated;
        if (!lufs)
            throw Failure(fmt::format("{}: has no loudness to bring to {:.2f} LUFS", names(), target()));
        for (int round = 0; round < 3; ++round) {
            const double level = std::accumulate(levels.begin(), levels.end(), 0.0);
            gainDb = target() - *lufs - level / static_cast<double>(levels.size());
            predictLevels();
        }
        return gainDb;
    }

    void beginSearch(double firstGainDb) {
        search.emplace(
            LoudnessTarget{.lufs = target(), .toleranceLu = toleranceLu, .firstGainDb = firstGainDb});
        gainDb = search->gainDb();
    }

    /// A limiter at work brings peaks up to Output Level; below that they keep their distance.
    void predictLevels() {
        if (!goals.maxTruePeakDb) return;
        each([this](FileRender& file, std::size_t i) {
            const auto& peak = file.report().before->figures.total.truePeak;
            const double aboveLevel = peak ? std::min(peak->level + gainDb, 0.0) : -HUGE_VAL;
            levels[i] =
                std::clamp(*goals.maxTruePeakDb - aboveLevel, kLowestOutputLevelDb, goals.outputLevelDb);
        });
    }

    void renderAll() {
        ++reached.passes;
        reached.files = files.size();
        Programme all;
        each([&](FileRender& file, std::size_t i) {
            file.render(gainDb, levels[i]);
            if (file.report().after) all.merge(file.report().after->programme);
        });
        reached.lufs = all.figures().integrated;
    }

    bool isLoudEnough() const {
        return !goals.loudnessLufs || (reached.lufs && std::abs(*reached.lufs - target()) <= toleranceLu);
    }

    double missingDb(const FileRender& file) const {
        const auto& peak = file.report().after->figures.total.truePeak;
        return peak ? peak->level - *goals.maxTruePeakDb : -HUGE_VAL;
    }
    double missingDb() const {
        if (!goals.maxTruePeakDb) return 0.0;
        double most = -HUGE_VAL;
        for (const auto& file : files) most = std::max(most, missingDb(*file));
        return most;
    }

    /// Chooses Gain and Output Level of the next pass by what the last one gave.
    void goOn() {
        const auto [shift, largest] = moveLevels();
        if (!goals.loudnessLufs) return;
        if (files.size() > 1 && largest > kSettledDb) return beginSearch(gainDb);
        const auto lufs = reached.lufs ? std::optional(*reached.lufs + shift) : std::nullopt;
        if (search->note(lufs) == LoudnessSearch::State::OutOfReach) {
            // At an end of the range the whole tolerance is good enough.
            toleranceLu = kLoudnessToleranceLu;
            if (!lufs || std::abs(*lufs - target()) > toleranceLu) failToReach(lufs);
        }
        gainDb = search->gainDb();
    }

    struct Move {
        double mean = 0.0;
        double largest = 0.0;
    };

    /// By how much the levels had to move, in dB: true peaks and loudness move with them.
    Move moveLevels() {
        Move move;
        if (!goals.maxTruePeakDb) return move;
        const double reserve = goals.loudnessLufs ? kMovingReserveDb : kReserveDb;
        each([&](FileRender& file, std::size_t i) {
            const double room = -missingDb(file) - reserve;
            if (room < 0.0 && levels[i] <= kLowestOutputLevelDb)
                throw Failure(
                    fmt::format("{}: its true peak stays {:.2f} dB above {:.2f} dBTP at the lowest "
                                "Output Level; nothing was written",
                                file.report().output.string(), -room, *goals.maxTruePeakDb));
            const double moved = std::clamp(levels[i] + room, kLowestOutputLevelDb, goals.outputLevelDb);
            move.mean += (moved - levels[i]) / static_cast<double>(files.size());
            move.largest = std::max(move.largest, std::abs(moved - levels[i]));
            levels[i] = moved;
        });
        return move;
    }

    std::string names() const {
        return files.size() == 1 ? files[0]->report().input.string()
                                 : fmt::format("the {} inputs together", files.size());
    }
    double target() const { return *goals.loudnessLufs; }

    [[noreturn]] void failToReach(std::optional<double> lufs) const {
        if (!lufs)
            throw Failure(
                fmt::format("{}: {:.2f} LUFS cannot be reached: what comes out has no loudness; nothing "
                            "was written",
                            names(), target()));
        const double highest = *std::ranges::max_element(levels);
        std::string text = fmt::format(
            "{}: {:.2f} LUFS cannot be reached: a Gain of {:.2f} dB with Output Level at {:.2f} dB gives "
            "{:.2f} LUFS",
            names(), target(), gainDb, highest, *lufs);
        const double lower = highest - (*lufs - target());
        if (*lufs > target() && lower >= kLowestOutputLevelDb)
            text +=
                fmt::format(", --output-level {:.1f} would be low enough", std::floor(lower * 10.0) / 10.0);
        throw Failure(text + "; nothing was written");
    }

    [[noreturn]] void failAfterAll() const {
        std::string text = fmt::format("{}: after {} renders", names(), reached.passes);
        if (!isLoudEnough())
            text +=
                fmt::format(", {} instead of {:.2f} LUFS",
                            reached.lufs ? fmt::format("{:.2f}", *reached.lufs) : "no loudness", target());
        if (missingDb() > 0.0)
            text +=
                fmt::format(", the true peak {:.3f} dB above {:.2f} dBTP", missingDb(), *goals.maxTruePeakDb);
        throw Failure(text + "; nothing was written");
    }

    std::span<const std::unique_ptr<FileRender>> files;
    const RenderGoals& goals;
    std::vector<double> levels;  ///< Output Level of each file, in dB
    double gainDb = 0.0;
    double toleranceLu = 0.05;  ///< half of what is promised: other meters differ a little
    std::optional<LoudnessSearch> search;
    GoalsReached reached;
};

}  // namespace

GoalsReached reachGoals(std::span<const std::unique_ptr<FileRender>> files, const RenderGoals& goals,
                        bool measure) {
    return Seeker(files, goals).run(measure);
}

}  // namespace vanta
