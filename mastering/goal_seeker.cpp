#include "mastering/goal_seeker.hpp"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <numeric>
#include <vector>

#include "foundation/parallel.hpp"
#include "mastering/loudness_forecast.hpp"
#include "mastering/loudness_search.hpp"
#include "mastering/verification.hpp"

namespace vanta {

namespace {

constexpr int kMostPasses = 12;
constexpr double kLowestOutputLevelDb = -30.0;
/// How far down material above the target is turned at most.
constexpr double kLowestDriveDb = -60.0;
/// The end of Gain's range.
constexpr double kHighestDriveDb = 30.0;
/// By how much further Output Level goes down than was missing, in dB, so that one more render is enough; the
/// more so while the Gain still moves, which changes what is missing.
constexpr double kReserveDb = 0.005;
constexpr double kMovingReserveDb = 0.03;
/// How far peaks between samples usually pass what limits them.
constexpr double kBetweenSamplesDb = 0.08;
/// Levels of several files that move by more than this change what was known of their common loudness.
constexpr double kSettledDb = 0.05;

/// Chooses the settings of each pass by what the last one gave. Output Level comes after all that limits,
/// so one pass shows how loud the programme is at every ceiling, and only the Gain has to be searched for.
class Seeker {
public:
    Seeker(std::span<const std::unique_ptr<FileRender>> files, const MasteringJob& job)
        : files_(files), job_(job), goals_(job.goals), levels_(files_.size(), highestLevel()) {}

    GoalsReached run() {
        if (job_.measures()) eachAtOnce([](FileRender& file, std::size_t) { file.measureInput(); });
        if (goals_.loudnessLufs) {
            beginSearch(firstGain());
        } else {
            predictLevels(static_cast<double>(job_.settings.gain.value()));
        }
        for (;;) {
            renderAll();
            if (isLoudEnough() && largestExcessDb() <= 0.0) return reached_;
            if (reached_.passes == kMostPasses) failAfterAll();
            goOn();
        }
    }

private:
    /// The Output Level that was asked for, in dB.
    double highestLevel() const { return static_cast<double>(job_.settings.outputLevel.value()); }

    template <typename Act>
    void each(Act&& act) {
        inParallel(files_.size(), 1, [&](std::size_t i) { actOn(i, act); });
    }
    /// The same side by side, for what takes its time.
    template <typename Act>
    void eachAtOnce(Act&& act) {
        inParallel(files_.size(), job_.options.threads, [&](std::size_t i) { actOn(i, act); });
    }
    template <typename Act>
    void actOn(std::size_t i, Act&& act) {
        try {
            act(*files_[i], i);
        } catch (const Failure& failure) {
            throw FileFailure(i, failure.what());
        }
    }

    // Output Level comes after all that limits, and a Gain that brings peaks up to a lower level needs more
    // of itself, which a few rounds settle.
    double firstGain() {
        Programme all;
        std::vector<std::span<const TimelinePoint>> timelines;
        for (const auto& file : files_) {
            all.merge(file->rendered().before->programme);
            timelines.emplace_back(file->rendered().before->timeline);
        }
        const auto lufs = all.figures().integrated;
        if (!lufs) {
            throw Failure(fmt::format(
                "{}: too short or too quiet to measure loudness, so {:.2f} LUFS cannot be reached", names(),
                target()));
        }
        const auto style =
            job_.options.patch ? std::nullopt : std::optional(job_.settings.style.currentIndex());
        forecast_.emplace(timelines, *lufs, LoudnessForecast::usualSoftnessDb(style));
        double gainDb = 0.0;
        for (int round = 0; round < 3; ++round) {
            gainDb = likelyGain();
            predictLevels(gainDb);
        }
        return gainDb;
    }

    double meanLevel() const {
        return std::accumulate(levels_.begin(), levels_.end(), 0.0) / static_cast<double>(levels_.size());
    }
    double likelyGain() const {
        return forecast_->gainFor(target() - meanLevel(), kLowestDriveDb, kHighestDriveDb);
    }

    void beginSearch(double firstGainDb) {
        search_.emplace(LoudnessTarget{.lufs = target(),
                                       .toleranceLu = toleranceLu_,
                                       .lowestGainDb = kLowestDriveDb,
                                       .highestGainDb = kHighestDriveDb,
                                       .firstGainDb = firstGainDb});
    }

    /// A limiter at work brings peaks up to Output Level, and between samples a little above it; below that
    /// they keep their distance.
    void predictLevels(double gainDb) {
        if (!goals_.maxTruePeakDb) return;
        each([&](FileRender& file, std::size_t i) {
            const auto& peak = file.rendered().before->figures.total.truePeak;
            const double drivenDb = peak ? peak->level + gainDb : -HUGE_VAL;
            const double aboveLevel = drivenDb > 0.0 ? kBetweenSamplesDb : drivenDb;
            levels_[i] = std::clamp(*goals_.maxTruePeakDb - aboveLevel, kLowestOutputLevelDb, highestLevel());
        });
    }

    void renderAll() {
        ++reached_.passes;
        reached_.files = files_.size();
        eachAtOnce([&](FileRender& file, std::size_t i) {
            if (search_) file.setDrive(search_->gainDb());
            file.settings().outputLevel.setValue(static_cast<float>(levels_[i]), 0);
            file.render();
        });
        Programme all;
        for (const auto& file : files_) {
            if (file->rendered().after) all.merge(file->rendered().after->programme);
        }
        reached_.lufs = all.figures().integrated;
    }

    bool isLoudEnough() const {
        return !goals_.loudnessLufs || (reached_.lufs && std::abs(*reached_.lufs - target()) <= toleranceLu_);
    }

    /// Of the file that exceeds the true-peak limit most, in dB.
    double largestExcessDb() const {
        if (!goals_.maxTruePeakDb) return 0.0;
        double largest = -HUGE_VAL;
        for (const auto& file : files_)
            largest = std::max(largest, excessDb(file->rendered(), *goals_.maxTruePeakDb));
        return largest;
    }

    /// Chooses Gain and Output Level of the next pass by what the last one gave.
    void goOn() {
        const auto [shift, largest] = moveLevels();
        if (!goals_.loudnessLufs) return;
        if (files_.size() > 1 && largest > kSettledDb) return beginSearch(search_->gainDb());
        const auto lufs = reached_.lufs ? std::optional(*reached_.lufs + shift) : std::nullopt;
        const double triedDb = search_->gainDb();
        const auto state = search_->note(lufs);
        if (state == LoudnessSearch::State::OutOfReach) {
            // Of the nearest that can be had the whole tolerance is good enough.
            toleranceLu_ = kLoudnessToleranceLu;
            if (!lufs || std::abs(search_->nearestLufs() - target()) > toleranceLu_) failToReach(lufs);
        }
        // A pass or two say how soft the limiting is. What is still missing then is for the search.
        if (state == LoudnessSearch::State::Searching && lufs && reached_.passes <= 2) {
            forecast_->learn(triedDb, *lufs - meanLevel());
            search_->propose(likelyGain());
        }
    }

    struct Move {
        double mean = 0.0;
        double largest = 0.0;
    };

    /// By how much the levels had to move, in dB: true peaks and loudness move with them.
    Move moveLevels() {
        Move move;
        if (!goals_.maxTruePeakDb) return move;
        const double reserve = goals_.loudnessLufs ? kMovingReserveDb : kReserveDb;
        each([&](FileRender& file, std::size_t i) {
            const double room = -excessDb(file.rendered(), *goals_.maxTruePeakDb) - reserve;
            if (room < 0.0 && levels_[i] <= kLowestOutputLevelDb) failToHold(file.rendered(), -room);
            const double moved = std::clamp(levels_[i] + room, kLowestOutputLevelDb, highestLevel());
            move.mean += (moved - levels_[i]) / static_cast<double>(files_.size());
            move.largest = std::max(move.largest, std::abs(moved - levels_[i]));
            levels_[i] = moved;
        });
        return move;
    }

    std::string names() const {
        return files_.size() == 1 ? files_[0]->rendered().route.input.string()
                                  : fmt::format("the {} inputs together", files_.size());
    }
    double target() const { return *goals_.loudnessLufs; }

    [[noreturn]] void failToHold(const RenderedFile& file, double aboveDb) const {
        throw Failure(fmt::format(
            "{}: true peak still {:.2f} dB above {:.2f} dBTP at the lowest Output Level; nothing was written",
            file.route.output.string(), aboveDb, *goals_.maxTruePeakDb));
    }

    [[noreturn]] void failToReach(std::optional<double> lufs) const {
        if (!lufs) {
            throw Failure(fmt::format(
                "{}: {:.2f} LUFS cannot be reached: the result is too quiet to measure; nothing was written",
                names(), target()));
        }
        throw Failure(
            fmt::format("{}: {:.2f} LUFS cannot be reached: the nearest is {:.2f} LUFS, at Gain {:.2f} dB "
                        "with Output Level "
                        "{:.2f} dB; nothing was written",
                        names(), target(), search_->nearestLufs(), std::max(search_->gainDb(), 0.0),
                        *std::ranges::max_element(levels_)));
    }

    [[noreturn]] void failAfterAll() const {
        std::string text =
            fmt::format("{}: the goals cannot be reached: after {} passes", names(), reached_.passes);
        if (!isLoudEnough()) {
            const auto lufs =
                reached_.lufs ? fmt::format("{:.2f}", *reached_.lufs) : "no measurable loudness";
            text += fmt::format(", {} instead of {:.2f} LUFS", lufs, target());
        }
        if (largestExcessDb() > 0.0) {
            text += fmt::format(", a true peak {:.3f} dB above {:.2f} dBTP", largestExcessDb(),
                                *goals_.maxTruePeakDb);
        }
        throw Failure(text + "; nothing was written");
    }

    std::span<const std::unique_ptr<FileRender>> files_;
    const MasteringJob& job_;
    const RenderGoals& goals_;
    std::vector<double> levels_;  ///< Output Level of each file in the next pass, in dB
    double toleranceLu_ = 0.07;   ///< less than is promised: other meters differ a little
    std::optional<LoudnessForecast> forecast_;
    std::optional<LoudnessSearch> search_;  ///< of the Gain, where a loudness is asked for
    GoalsReached reached_;
};

}  // namespace

GoalsReached reachGoals(std::span<const std::unique_ptr<FileRender>> files, const MasteringJob& job) {
    return Seeker(files, job).run();
}

}  // namespace vanta
