#include "dsp/sr/peak_finder.hpp"

#include <algorithm>
#include <array>
#include <bit>

#include "dsp/sr/fir_stage.hpp"
#include "kernel/fir_kernels.hpp"
#include "kernel/mix.hpp"
#include "kernel/scan.hpp"

namespace vanta::sr {

namespace {

/// Stretches are converted in whole vectors, the widest of which has so many floats.
constexpr int kVector = PeakFinder::kReadBeyond;
/// So many samples make a whole vector when their rate is doubled.
constexpr int kHalfVector = kVector / 2;
/// Peaks of the highest rate that are gathered at once.
constexpr int kPiece = 512;

constexpr int roundedUp(int count, int unit) {
    return (count + unit - 1) / unit * unit;
}

constexpr std::size_t size(int count) {
    return static_cast<std::size_t>(count);
}

}  // namespace

void PeakFinder::update() {
    style_.update();
    const int factor = style_.factor();
    stages_.resize(static_cast<std::size_t>(std::bit_width(static_cast<unsigned>(factor)) - 1));
    int needed = 0, raisedReach = 0, delay = 0, raisedDelay = 0;
    for (std::size_t i = stages_.size(); i-- > 0;) {
        const CoefficientSet& set =
            style_.set(i == 0 ? ConverterStyle::NarrowBranch : ConverterStyle::WideBranch);
        const int reach = FIRStage::reachOf(set, 2 << i);
        stages_[i] = {&set, reach, roundedUp((needed + 1) / 2, kHalfVector)};
        raisedReach = needed;
        raisedDelay = delay;
        needed = reach + stages_[i].lead;
        delay = reach - set.length / 2 + 1 + delay / 2;
    }
    reach_ = needed;
    delay_ = delay;
    const int most = style_.environment().maxBlockSize();
    bound_.prepare(cascadeFrom(0), factor, delay_, reach_, most);
    if (stages_.size() < 2) return;
    raisedBound_.prepare(cascadeFrom(1), factor / 2, raisedDelay, raisedReach, 2 * most);
}

/// That stage and all later ones as one filter at the highest rate.
std::vector<double> PeakFinder::cascadeFrom(std::size_t first) const {
    std::vector<double> whole{1.0};
    for (std::size_t i = first; i < stages_.size(); ++i) {
        const CoefficientSet& branch = *stages_[i].set;
        std::vector<double> stage(2 * size(branch.length) - 1, 0.0);
        for (int k = 0; k < branch.length; ++k) stage[2 * size(k)] = double{branch.taps[k]};
        stage[size(branch.length) - 1] = 1.0;
        std::vector<double> result(2 * (whole.size() - 1) + stage.size(), 0.0);
        for (std::size_t k = 0; k < whole.size(); ++k) {
            for (std::size_t j = 0; j < stage.size(); ++j) result[2 * k + j] += whole[k] * stage[j];
        }
        whole = std::move(result);
    }
    return whole;
}

void PeakFinder::find(const float* in, float* out, int count) {
    if (stages_.size() == 1) {
        findPeaks(in, out, count);
    } else {
        finish(raise(in, 0, count), out, count);
    }
}

/// Doubles the rate of `count` samples and of those in front of them that the next stage reads, in whole
/// vectors: a few samples more than are needed cost less than a few by themselves.
const float* PeakFinder::raise(const float* in, std::size_t stage, int count) {
    const auto [set, reach, lead] = stages_[stage];
    float* out = style_.lines().line(stage).input();
    kernel::interpolateHalfBand(in - lead - reach, set->taps.data(), size(set->length), out - 2 * lead,
                                size(roundedUp(lead + count, kVector)));
    return out;
}

/// From what the first stage has raised.
void PeakFinder::finish(const float* raised, float* out, int count) {
    const int peaksOfSample = style_.factor() / 2;
    alignas(64) std::array<float, kPiece> peaks;
    for (int done = 0; done < count;) {
        const int piece = std::min(count - done, kPiece / peaksOfSample);
        const float* in = raised + 2 * done;
        int length = 2 * piece;
        for (std::size_t stage = 1; stage + 1 < stages_.size(); ++stage) {
            in = raise(in, stage, length);
            length *= 2;
        }
        findPeaks(in, peaks.data(), length);
        kernel::largestMagnitudeOfGroups(peaks.data(), size(peaksOfSample), out + done, size(piece));
        done += piece;
    }
}

/// The last stage, which has as much to store as all others together, stores peaks alone.
void PeakFinder::findPeaks(const float* in, float* out, int count) const {
    const auto [set, reach, lead] = stages_.back();
    kernel::peaksOfHalfBand(in - reach, set->taps.data(), size(set->length), out, size(count));
}

/// One search for what is wanted: what has been found so far may end it.
class PeakFinder::Search {
public:
    Search(const PeakBound& bound, int count, int groupSize, Wanted wanted, float& level)
        : bound_(bound), count_(count), groupSize_(groupSize), wanted_(wanted), level_(level) {}

    /// The next stretch that may hold something: its first peak and how many. None: 0.
    bool next() {
        const int groups = (count_ + groupSize_ - 1) / groupSize_;
        while (group_ < groups && bound_[group_] <= level_) ++group_;
        begin_ = group_ * groupSize_;
        while (group_ < groups && bound_[group_] > level_) ++group_;
        length_ = std::min(group_ * groupSize_, count_) - begin_;
        return length_ > 0;
    }
    int begin() const { return begin_; }
    int length() const { return length_; }
    void found(const float* out) {
        if (wanted_ == Highest) level_ = std::max(level_, kernel::highest(out + begin_, size(length_)));
    }

private:
    const PeakBound& bound_;
    int count_, groupSize_;
    Wanted wanted_;
    float& level_;
    int group_ = 0, begin_ = 0, length_ = 0;
};

bool PeakFinder::find(const float* in, float* out, int count, Wanted wanted, float level) {
    const float* samples = in - delay_;
    if (wanted == Highest) level = std::max(level, kernel::highestMagnitude(samples, size(count)));
    bound_.look(in, count);
    Search search(bound_, count, PeakBound::kGroup, wanted, level);
    if (!search.next()) return false;
    kernel::magnitude(samples, out, size(count));
    do {
        const float* from = in + search.begin();
        float* to = out + search.begin();
        if (stages_.size() == 1) {
            findPeaks(from, to, search.length());
            search.found(out);
        } else {
            lookCloser(raise(from, 0, search.length()), to, search.length(), wanted, level);
        }
    } while (search.next());
    return true;
}

/// The same within a stretch that the first stage has raised. What has bent at the base rate bends little at
/// its double, and the bound comes near the peaks.
void PeakFinder::lookCloser(const float* raised, float* out, int count, Wanted wanted, float& level) {
    raisedBound_.look(raised, 2 * count);
    Search search(raisedBound_, count, PeakBound::kGroup / 2, wanted, level);
    while (search.next()) {
        finish(raised + 2 * search.begin(), out + search.begin(), search.length());
        search.found(out);
    }
}

}  // namespace vanta::sr
