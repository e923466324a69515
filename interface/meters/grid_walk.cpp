#include "interface/meters/grid_walk.hpp"

#include <cmath>
#include <cstddef>

#include "gui/graphics/geometry.hpp"

namespace vanta::interface {
namespace {

/// Levels that differ by no more are the same.
constexpr float kSameLevel = 1.1920929e-07f;
/// Logical units by which rounding may place a line before the start.
constexpr float kSamePlace = 0.01f;
/// No scale has as many lines; one that goes on is broken.
constexpr int kMostRounds = 1000;
constexpr float kNoExtra = 1000000.0f;
constexpr float kMultipliers[] = {2.0f, 2.5f, 2.0f};

bool isSameLevel(float a, float b) {
    return std::abs(a - b) <= kSameLevel;
}

class GridWalk {
public:
    GridWalk(const LevelMapping& mapping, const GridRange& range) : mapping_(mapping), range_(range) {}

    std::vector<Tick> run() {
        if (!chooseStep()) return {};
        begin();
        for (int round = 0; round < kMostRounds && takeNext(); ++round) {
        }
        return std::move(ticks_);
    }

private:
    /// What the walk would go on with if the present line were left out.
    struct Candidate {
        float step;
        int indexStep;
        int index;
        bool isCoarser;  ///< takes the next step of the list
    };

    bool chooseStep();
    void begin();
    /// False at the end of the walk.
    bool takeNext();
    bool isThinned(const Tick& tick, Candidate& next) const;
    bool isCrowded(const Tick& tick, float nextLevel, float nextPosition, const Candidate& next) const;
    Candidate candidateAfter(float level, bool tooClose) const;
    void keep(Tick tick, bool isOnGrid);

    float positionOf(float level) const { return mapping_.levelToPosition(level); }
    float levelAt(int index, float step) const { return static_cast<float>(index) * step + range_.origin; }
    int indexOf(float level, float step) const {
        return static_cast<int>(std::trunc((level - range_.origin) / step));
    }
    /// Lines on whole pixels may have come closer by one.
    bool isClose(float from, float to) const {
        return distance(from, to) < range_.spacing - 1.0f / range_.deviceScale - kSamePlace;
    }
    float distance(float from, float to) const { return (to - from) * static_cast<float>(range_.direction); }
    float nextExtra() const {
        return extra_ < range_.extras.size() ? range_.extras[extra_]
                                             : static_cast<float>(range_.levelSign) * kNoExtra;
    }
    bool hasReached(float level, float goal) const {
        return isSameLevel(level, goal) || (level - goal) * static_cast<float>(range_.levelSign) > 0.0f;
    }

    const LevelMapping& mapping_;
    const GridRange& range_;
    bool usesList_ = false;
    std::size_t listIndex_ = 0;  ///< of the next coarser step
    float step_ = 1.0f;
    int index_ = 0;
    int indexStep_ = 1;
    std::size_t extra_ = 0;
    float lastPosition_ = 0.0f;  ///< of a line on the grid
    float lastLabelled_ = 0.0f;
    float reached_ = 0.0f;
    std::vector<Tick> ticks_;
};

bool GridWalk::chooseStep() {
    const float along = range_.spacing * static_cast<float>(range_.direction);
    float span =
        std::abs(mapping_.positionToLevel(range_.start) - mapping_.positionToLevel(range_.start + along));
    if (!std::isfinite(span) || !(span > 0.0f)) return false;
    if (span < 1.0f && range_.wholeSteps) span = 1.0f;
    const bool isCoarse = span >= 1.0f;
    usesList_ = isCoarse && !range_.steps.empty();
    const float unit = isCoarse ? 1.0f / span : span;
    float m = 1.0f;
    for (std::size_t round = 0; m * unit < 1.0f; ++round) {
        if (!usesList_) {
            m *= kMultipliers[round % std::size(kMultipliers)];
        } else if (listIndex_ < range_.steps.size()) {
            m = range_.steps[listIndex_++];
        } else {
            m += range_.steps.back();
        }
        if (round > kMostRounds) return false;
    }
    step_ = isCoarse ? m : 1.0f / m;
    return true;
}

void GridWalk::begin() {
    const float level = mapping_.positionToLevel(range_.start);
    index_ = indexOf(level, step_);
    indexStep_ = range_.levelSign;
    lastPosition_ = range_.start - range_.spacing * static_cast<float>(range_.direction);
    lastLabelled_ = lastPosition_;
    reached_ = lastPosition_;
}

bool GridWalk::takeNext() {
    Tick tick{.position = 0.0f, .level = levelAt(index_, step_), .labelled = false, .extra = false};
    const float gridLevel = tick.level;
    tick.extra = usesList_ && hasReached(gridLevel, nextExtra());
    if (tick.extra) tick.level = nextExtra();
    const float exact = positionOf(tick.level);
    if (!std::isfinite(exact)) return false;
    tick.position = static_cast<float>(gui::toDevice(exact, range_.deviceScale)) / range_.deviceScale;
    if (distance(range_.end, tick.position) >= 0.0f) return false;

    const bool isOnGrid = !tick.extra || isSameLevel(tick.level, gridLevel);
    // A level short of the start: the count is rounded towards its origin.
    if (distance(range_.start, exact) < -kSamePlace) {
        extra_ += tick.extra ? 1 : 0;
        index_ += isOnGrid ? indexStep_ : 0;
        return true;
    }
    if (usesList_ && !tick.extra) {
        Candidate next{};
        if (isThinned(tick, next)) {
            listIndex_ += next.isCoarser ? 1 : 0;
            step_ = next.step;
            index_ = next.index;
            indexStep_ = next.indexStep;
            return true;
        }
    }
    // Beyond its end a squeezed scale puts all levels in one place.
    if (!(distance(reached_, exact) > 0.0f)) return false;
    reached_ = exact;
    keep(tick, isOnGrid);
    return true;
}

void GridWalk::keep(Tick tick, bool isOnGrid) {
    extra_ += tick.extra ? 1 : 0;
    if (isOnGrid) {
        index_ += indexStep_;
        lastPosition_ = tick.position;
    }
    tick.labelled = !isClose(lastLabelled_, tick.position);
    if (tick.labelled) lastLabelled_ = tick.position;
    const bool isSamePlace = !ticks_.empty() && ticks_.back().position == tick.position;
    if (!isSamePlace) {
        ticks_.push_back(tick);
    } else if (tick.extra) {
        // The line that was asked for wins over its neighbour.
        ticks_.back().level = tick.level;
        ticks_.back().extra = true;
    }
}

GridWalk::Candidate GridWalk::candidateAfter(float level, bool tooClose) const {
    if (listIndex_ < range_.steps.size()) {
        const float coarser = range_.steps[listIndex_];
        return {coarser, indexStep_, indexOf(level, coarser) + indexStep_, true};
    }
    Candidate next{step_, indexStep_ + range_.levelSign, index_ + indexStep_, false};
    if (!tooClose && !isSameLevel(levelAt(next.index, step_), nextExtra())) {
        next.index = index_ + next.indexStep;
    }
    return next;
}

bool GridWalk::isThinned(const Tick& tick, Candidate& next) const {
    bool tooClose = isClose(lastPosition_, tick.position);
    next = candidateAfter(tick.level, tooClose);
    const float nextLevel = levelAt(next.index, next.step);
    const float nextPosition = positionOf(nextLevel);
    tooClose |= isSameLevel(nextLevel, nextExtra()) && isClose(tick.position, nextPosition);
    return tooClose || isCrowded(tick, nextLevel, nextPosition, next);
}

/// Where a scale closes up towards its end, a line needs more room than its number.
bool GridWalk::isCrowded(const Tick& tick, float nextLevel, float nextPosition, const Candidate& next) const {
    const float backPosition = positionOf(2.0f * tick.level - nextLevel);
    if (!(distance(backPosition, tick.position - 1.0f) > distance(tick.position, nextPosition))) return false;
    const float factor = index_ / next.indexStep > 6 ? 2.5f : 1.8f;
    return distance(lastPosition_, nextPosition) < range_.spacing * factor;
}

}  // namespace

std::vector<Tick> findTicks(const LevelMapping& mapping, const GridRange& range) {
    if (!(range.spacing > 0.0f) || !std::isfinite(range.start) || !std::isfinite(range.end)) return {};
    return GridWalk(mapping, range).run();
}

}  // namespace vanta::interface
