#pragma once

#include <deque>

#include "wave/level_source.hpp"

namespace vanta::interface {

/// Which of many samples stands for them: the greatest, or the least, as of gains below 1.
enum class RealTimeOperation { Maximum, Minimum };

/// Less than this makes no peak.
inline constexpr float kLevelTolerance = 0.001f;

/// Whether `a` is a peak compared with `b`.
constexpr bool isBeyond(RealTimeOperation operation, float a, float b) {
    return operation == RealTimeOperation::Maximum ? a > b + kLevelTolerance : a < b - kLevelTolerance;
}
/// The same without a tolerance.
constexpr bool isMoreExtreme(RealTimeOperation operation, float a, float b) {
    return operation == RealTimeOperation::Maximum ? a > b : a < b;
}

/// How audio becomes columns.
struct ColumnRule {
    RealTimeOperation operation = RealTimeOperation::Maximum;
    bool magnitudes = true;  ///< of samples count
    float release = 0.0f;    ///< what is left of a peak after one column, 0 to below 1
    float restLevel = 0.0f;  ///< linear; what a column holds before any sample is seen
};

/// Makes columns of audio, each the most extreme of its samples, and keeps them until a frame of the picture
/// wants them: audio comes in batches that know nothing of frames.
class ColumnQueue {
public:
    explicit ColumnQueue(const ColumnRule& rule = {}) { restart(rule); }

    /// Forgets all audio.
    void restart(const ColumnRule& rule);
    /// How later audio becomes columns.
    void setRule(const ColumnRule& rule) { rule_ = rule; }
    /// Reads all that the source holds, which is locked. A column is made of `samplesPerColumn`, over all
    /// channels.
    void collect(const wave::AudioSource& source, int samplesPerColumn);
    /// Leaves at most so many columns. The oldest go, and what was extreme in them stays in the one that is
    /// next.
    void cutTo(int most);
    /// The oldest column. False if there is none.
    bool take(float& level);

    int size() const { return static_cast<int>(columns_.size()); }
    /// The greatest number of columns that one of the last reads has brought.
    int jitter() const { return jitter_; }

private:
    void fold(const float* samples, int count);
    void finishColumn();
    void noteBatch(int columns);

    ColumnRule rule_;
    float extreme_ = 0.0f;   ///< of the column that is being made
    int collected_ = 0;      ///< its samples so far
    float released_ = 0.0f;  ///< the level after the release
    std::deque<float> columns_;
    std::deque<int> batches_;  ///< columns of the last reads
    int jitter_ = 0;
};

}  // namespace vanta::interface
