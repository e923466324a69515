#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

#include "bench/compare/options.hpp"

namespace vanta::bench {

/// How long one contender takes in terms of another.
struct Ratio {
    double fastest = 0.0;  ///< by the fastest run of each passage
    double median = 0.0;   ///< by the median run of each passage
};

/// Times pieces of work in turn, a short round each, so that a machine whose speed drifts or is shared slows
/// all of them alike. What is measured is processor time of this thread.
class Race {
public:
    /// Does so many blocks of work. The music that it works on comes round after `passages` rounds.
    using Play = std::function<void(int blocks)>;

    struct Course {
        int passages = 1;          ///< rounds in a pass, each with work of its own
        int passes = 1;            ///< how often the same passage comes round
        int blocks = 1;            ///< in a round
        double itemsPerBlock = 1;  ///< frames, samples or transforms: what a time is divided by
    };

    /// Over so many frames of music.
    static Course courseOver(int frames, const Options& options) {
        return {.passages = frames / options.framesOfRound(),
                .passes = options.passes,
                .blocks = options.blocksInRound(),
                .itemsPerBlock = static_cast<double>(options.blockFrames)};
    }

    explicit Race(const Course& course) : course_(course) {}

    /// The number under which the contender is known from here on.
    std::size_t enter(std::string name, Play play);
    /// One block before each round is not timed: it brings code and state into the caches.
    void run();

    const std::string& name(std::size_t contender) const { return contenders_[contender].name; }
    /// An item, of the fastest run of each passage.
    double nanoseconds(std::size_t contender) const;
    /// Likewise of the median run.
    double medianNanoseconds(std::size_t contender) const;
    Ratio ratio(std::size_t contender, std::size_t to) const;

private:
    struct Contender {
        std::string name;
        Play play;
        std::vector<double> rounds;  ///< nanoseconds, in the order in which they were run
    };

    using Typical = double (*)(const std::vector<double>& runs);
    /// The sum over all passages of what stands for the runs of each.
    double pass(const Contender& contender, Typical typical) const;

    Course course_;
    std::vector<Contender> contenders_;
};

/// A contender whose blocks are all the same.
template <typename Work>
Race::Play repeat(Work work) {
    return [work](int blocks) mutable {
        for (int i = 0; i < blocks; ++i) work();
    };
}

/// Processor time of this thread.
double threadNanoseconds();
double median(const std::vector<double>& values);
double fastest(const std::vector<double>& values);

}  // namespace vanta::bench
