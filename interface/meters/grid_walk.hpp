#pragma once

#include <span>
#include <vector>

namespace vanta::interface {

/// A line of a scale.
struct Tick {
    float position;  ///< logical units, on a device pixel
    float level;     ///< as its number tells it
    bool labelled;   ///< has room for a number
    bool extra;      ///< one that was asked for
};

/// Where levels lie, both ways.
class LevelMapping {
public:
    virtual float levelToPosition(float level) const = 0;
    virtual float positionToLevel(float position) const = 0;

protected:
    ~LevelMapping() = default;
};

/// Along which stretch of a scale lines are looked for, and which.
struct GridRange {
    float start;      ///< position where the walk begins
    float end;        ///< where it ends; a line may not lie there
    int direction;    ///< of the positions along the walk: 1 or -1
    int levelSign;    ///< of the levels along the walk: 1 or -1
    float spacing;    ///< logical units between two numbers, at least
    float origin;     ///< a level that has a line, wherever it is in range
    bool wholeSteps;  ///< numbers without decimals
    /// Ascending steps to choose from, for scales that are not straight: where these close up, coarser
    /// steps take over. Empty: 1, 2, 5 and their tenfolds, for straight scales.
    std::span<const float> steps;
    /// Levels that have a line in any case, in the order of the walk. Only with `steps`.
    std::span<const float> extras;
    float deviceScale;
};

/// The lines of a scale, in the order of the walk. None if it has no extent.
std::vector<Tick> findTicks(const LevelMapping& mapping, const GridRange& range);

}  // namespace vanta::interface
