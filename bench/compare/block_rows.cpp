#include <fmt/format.h>

#include <algorithm>
#include <chrono>
#include <memory>
#include <numeric>
#include <vector>

#include "bench/compare/instance.hpp"
#include "bench/compare/rows.hpp"

namespace vanta::bench {

namespace {

constexpr int kPasses = 9;
constexpr double kSeconds = 3.0;
/// After a reset, delays and rings fill and memory comes into the caches.
constexpr double kStart = 0.1;  // seconds

/// An instance that plays the same blocks from the same state in each pass, and the fastest time of each
/// block: what is left is the work of the block, without what the machine did meanwhile.
class BlockTimes {
public:
    BlockTimes(const InstanceSettings& settings, const Music& music)
        : instance_(settings, music),
          fastest_(static_cast<std::size_t>(music.frames() / settings.blockFrames), 1e12),
          startBlocks_(static_cast<std::ptrdiff_t>(kStart * Music::kRate) / settings.blockFrames) {
        const auto frames = static_cast<std::size_t>(settings.blockFrames);
        for (std::size_t block = 0; block < fastest_.size(); ++block) {
            const auto begin = music.channels.front().begin() + static_cast<std::ptrdiff_t>(block * frames);
            loudness_.push_back(std::inner_product(begin, begin + settings.blockFrames, begin, 0.0));
        }
    }

    void pass() {
        using Clock = std::chrono::steady_clock;
        instance_.restart();
        for (double& time : fastest_) {
            const auto start = Clock::now();
            instance_.play(1);
            time = std::min(time, std::chrono::duration<double, std::micro>(Clock::now() - start).count());
        }
    }
    /// Of those that follow a reset by less than kStart, and of all others.
    double worstAtStart() const {
        return *std::max_element(fastest_.begin(), fastest_.begin() + startBlocks_);
    }
    double worst() const { return *std::max_element(fastest_.begin() + startBlocks_, fastest_.end()); }
    /// Of the louder half of the music, in which the limiter works.
    double middle() const {
        const double loud = median(loudness_);
        std::vector<double> times;
        for (std::size_t block = 0; block < fastest_.size(); ++block) {
            if (loudness_[block] >= loud) times.push_back(fastest_[block]);
        }
        return median(times);
    }
    /// The ratio that one block in a hundred exceeds.
    double ratioOfHundredth() const {
        std::vector<double> sorted = fastest_;
        std::ranges::sort(sorted);
        return sorted[sorted.size() * 99 / 100] / middle();
    }

private:
    Instance instance_;
    std::vector<double> fastest_;
    std::vector<double> loudness_;  ///< of each block's first channel
    std::ptrdiff_t startBlocks_;
};

}  // namespace

void addWorstBlocks(Report& report, const Target& target, const Options& options) {
    // In place of a median of runs: what one block in a hundred exceeds.
    report.begin(target, "The worst block beside the median block", "µs", "median");
    for (const int blockFrames : {64, 256}) {
        const Music music = bursts(kSeconds).cut(blockFrames);
        std::vector<std::unique_ptr<BlockTimes>> contenders;
        for (const StyleRow& style : kStyleTable) {
            contenders.push_back(std::make_unique<BlockTimes>(
                InstanceSettings{.style = style.style, .gainDb = options.gainDb, .blockFrames = blockFrames},
                music));
        }
        for (int pass = 0; pass < kPasses; ++pass) {
            for (auto& contender : contenders) contender->pass();
        }
        for (std::size_t i = 0; i < contenders.size(); ++i) {
            const BlockTimes& times = *contenders[i];
            const auto add = [&](const char* when, double worst, Reach reach) {
                report.add({fmt::format("{}, {} frames{}", kStyleTable[i].name, blockFrames, when),
                            worst,
                            times.middle(),
                            {worst / times.middle(), times.ratioOfHundredth()},
                            reach});
            };
            add("", times.worst(), Reach::both(1.5));
            add(", just after a reset", times.worstAtStart(), {});
        }
    }
}

}  // namespace vanta::bench
