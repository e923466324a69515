#include <algorithm>
#include <cmath>
#include <vector>

#include "bench/compare/rows.hpp"
#include "tests/support/signals.hpp"

namespace vanta::bench {

void addLimits(Report& report, const Target& target, const Options& options) {
    report.begin(target, "Chains in which each sample waits for the one before", "ns a sample", "copied");
    constexpr int kBlock = 256;
    const auto signal = test::pinkNoise(1, kBlock);
    std::vector<float> out(kBlock), copied(kBlock);
    double level = 0.0;
    const auto chain = [&](auto step) {
        return repeat([&, step] {
            for (std::size_t i = 0; i < kBlock; ++i) {
                level += step(double{signal[i]} - level);
                out[i] = static_cast<float>(level);
            }
        });
    };
    Race race({.passes = 20 * options.passes, .blocks = 256, .itemsPerBlock = kBlock});
    race.enter("a copy", repeat([&] {
                   std::copy(signal.begin(), signal.end(), copied.begin());
                   asm volatile("" : : "r"(copied.data()) : "memory");
               }));
    race.enter("difference, choice, product, sum",
               chain([](double distance) { return (distance > 0.0 ? 0.3 : 0.001) * distance; }));
    // The least that a time which depends on the step asks for: the exponential in it has but three terms.
    race.enter("the same with a time that bends with the step", chain([](double distance) {
                   const double time = (distance > 0.0 ? 3.0 : 900.0) + 0.1 * std::abs(distance);
                   const double x = 2.3 / time;
                   return x * (1.0 - x * (0.5 - x * 0.1667)) * distance;
               }));
    race.run();
    for (std::size_t i = 1; i < 3; ++i) {
        report.add({race.name(i), race.nanoseconds(i), race.nanoseconds(0), race.ratio(i, 0)});
    }
}

}  // namespace vanta::bench
