#pragma once

#include <vector>

#include "dsp/sr/converter_style.hpp"
#include "dsp/sr/peak_bound.hpp"

namespace vanta::sr {

/// The peaks between the samples of a signal, for any stretch of it by itself: it remembers nothing, so that
/// only those stretches need be computed of which something is asked.
class PeakFinder {
public:
    /// Which peaks are asked for.
    enum Wanted {
        Above,   ///< those above a level
        Highest  ///< the highest of those above a level
    };

    /// What follows the newest sample must be readable, and does not matter.
    static constexpr int kReadBeyond = 16;

    /// The style's factor is 2, 4 or 8.
    explicit PeakFinder(ConverterStyle& style) : style_(style) {}

    /// Takes up the style's filters and the largest block. Allocates.
    void update();
    /// How many samples in front of the newest one are read.
    int reach() const { return reach_; }

    /// out[j] = the largest magnitude from sample j - d to just before the next, in[j] being the newest that
    /// is known of it; d is the interpolator's delay. `in` has `reach` samples in front of it.
    VANTA_REALTIME void find(const float* in, float* out, int count);

    /// Looks only where there may be what is wanted. Elsewhere sample j - d stands for its peak, which is not
    /// above the level, or not the highest. False if there was nowhere to look, and `out` is left as it was.
    VANTA_REALTIME bool find(const float* in, float* out, int count, Wanted wanted, float level);

private:
    struct Stage {
        const CoefficientSet* set;
        int reach;  ///< how many samples in front of its input it reads
        int lead;   ///< how many in front of it it has to convert, for the next stage to read
    };
    class Search;

    std::vector<double> cascadeFrom(std::size_t stage) const;
    VANTA_REALTIME const float* raise(const float* in, std::size_t stage, int count);
    VANTA_REALTIME void finish(const float* raised, float* out, int count);
    VANTA_REALTIME void findPeaks(const float* in, float* out, int count) const;
    VANTA_REALTIME void lookCloser(const float* raised, float* out, int count, Wanted wanted, float& level);

    ConverterStyle& style_;
    std::vector<Stage> stages_;
    PeakBound bound_;        ///< from the samples
    PeakBound raisedBound_;  ///< from those of twice the rate
    int delay_ = 0;
    int reach_ = 0;
};

}  // namespace vanta::sr
