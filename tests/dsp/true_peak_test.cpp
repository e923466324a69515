#include <gtest/gtest.h>

#include <cmath>
#include <numbers>
#include <vector>

#include "dsp/sr/true_peak_exposer.hpp"
#include "tests/support/element_rig.hpp"
#include "tests/support/signals.hpp"

namespace vanta::test {
namespace {

using sr::TruePeakExposer;

constexpr double kPi = std::numbers::pi;

struct Rig {
    Rig(float rate, Signal signal) : source(environment, std::move(signal)) {
        environment.setSampleRate(rate);
        exposer.source = &source;
    }
    Signal run(int count, int block = 256) {
        return runElement(environment, exposer, evenBlocks(count, block));
    }
    std::size_t delay() const { return static_cast<std::size_t>(style.delay()); }

    wave::Environment environment{256};
    TruePeakExposer::Style style{environment};
    VectorSource source;
    TruePeakExposer exposer{environment, style};
};

// Output n speaks of the time from sample n - delay to the next sample: a limiter that looks ahead by the
// delay has to find each crest in its place.
TEST(TruePeakExposer, PutsEachCrestInItsPlace) {
    // The shorter the filter, the larger its ripple.
    const std::pair<float, double> cases[] = {{44100.0f, 0.003}, {96000.0f, 0.004}, {192000.0f, 0.012}};
    for (const auto& [rate, tolerance] : cases) {
        const double frequencies[] = {313.0, 4111.0, 11003.0, 18007.0};
        const auto value = [&](double t) {
            double sum = 0.0;
            for (const double f : frequencies) sum += 0.25 * std::sin(2.0 * kPi * f * t / double{rate});
            return sum;
        };
        Signal signal;
        for (int n = 0; n < 3000; ++n) signal.push_back(static_cast<float>(value(n)));
        Rig rig(rate, signal);
        const Signal out = rig.run(3000);
        for (std::size_t n = 300; n + rig.delay() < out.size(); ++n) {
            double crest = 0.0;
            for (int k = 0; k < rig.style.factor(); ++k) {
                const double place = static_cast<double>(n) + double(k) / rig.style.factor();
                crest = std::max(crest, std::abs(value(place)));
            }
            ASSERT_NEAR(static_cast<double>(out[n + rig.delay()]), crest, tolerance) << n << " at " << rate;
        }
    }
}

TEST(TruePeakExposer, IsNeverBelowASample) {
    for (const float rate : {8000.0f, 44100.0f, 96000.0f, 192000.0f, 384000.0f}) {
        const Signal noise = whiteNoise(5, 3000);
        Rig rig(rate, noise);
        const Signal out = rig.run(3000, 77);
        for (std::size_t n = 0; n + rig.delay() < out.size(); ++n) {
            ASSERT_GE(out[n + rig.delay()], std::abs(noise[n]));
        }
    }
}

}  // namespace
}  // namespace vanta::test
