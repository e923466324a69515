#include "bench/compare/race.hpp"

#include <time.h>

#include <algorithm>
#include <utility>

namespace vanta::bench {

double threadNanoseconds() {
    timespec now{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return 1e9 * static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec);
}

double median(const std::vector<double>& values) {
    std::vector<double> sorted = values;
    const auto middle = sorted.begin() + static_cast<std::ptrdiff_t>(sorted.size() / 2);
    std::nth_element(sorted.begin(), middle, sorted.end());
    return *middle;
}

double fastest(const std::vector<double>& values) {
    return *std::ranges::min_element(values);
}

std::size_t Race::enter(std::string name, Play play) {
    contenders_.push_back({std::move(name), std::move(play), {}});
    return contenders_.size() - 1;
}

void Race::run() {
    for (int round = 0; round < course_.passages * course_.passes; ++round) {
        for (Contender& contender : contenders_) {
            contender.play(1);
            const double start = threadNanoseconds();
            contender.play(course_.blocks);
            contender.rounds.push_back(threadNanoseconds() - start);
        }
    }
}

double Race::pass(const Contender& contender, Typical typical) const {
    const auto passages = static_cast<std::size_t>(course_.passages);
    double sum = 0.0;
    std::vector<double> runs(static_cast<std::size_t>(course_.passes));
    for (std::size_t passage = 0; passage < passages; ++passage) {
        for (std::size_t i = 0; i < runs.size(); ++i) runs[i] = contender.rounds[passage + i * passages];
        sum += typical(runs);
    }
    return sum;
}

double Race::nanoseconds(std::size_t contender) const {
    return pass(contenders_[contender], fastest) /
           (course_.passages * course_.blocks * course_.itemsPerBlock);
}

double Race::medianNanoseconds(std::size_t contender) const {
    return pass(contenders_[contender], median) / (course_.passages * course_.blocks * course_.itemsPerBlock);
}

Ratio Race::ratio(std::size_t contender, std::size_t to) const {
    return {nanoseconds(contender) / nanoseconds(to), medianNanoseconds(contender) / medianNanoseconds(to)};
}

}  // namespace vanta::bench
