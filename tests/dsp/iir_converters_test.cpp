// The recursive half-band filters: against the theory of elliptic filters, and as they sound.

#include <gtest/gtest.h>

#include <cmath>
#include <complex>
#include <numbers>

#include "dsp/sr/elliptic_half_band.hpp"
#include "dsp/sr/iir_converter.hpp"
#include "tests/support/element_rig.hpp"
#include "tests/support/signals.hpp"

namespace vanta::test {
namespace {

using std::numbers::pi;

struct Stage {
    int order;
    double edge;  ///< of the pass band, radians per sample
};
constexpr Stage kStages[] = {{13, 1.4891149}, {11, 1.3948672}, {7, 1.0367255}, {13, 1.3823007}, {3, 0.8}};

/// What an elliptic half-band filter of this order and these edges must reach, by the degree equation: the
/// nome of what it discriminates is the nome of its selectivity to the power of the order.
struct Theory {
    explicit Theory(const Stage& stage) {
        const double k = std::pow(std::tan(stage.edge / 2), 2);
        const double ratio = std::comp_ellint_1(std::sqrt(1 - k * k)) / std::comp_ellint_1(k);
        const double nome = std::exp(-pi * ratio * stage.order);
        const double discrimination = 4 * std::sqrt(nome);  // to the first order: the nome is below 1e-5
        stopDb = -10 * std::log10(1 + 1 / discrimination);
        passDb = -10 * std::log10(1 + discrimination);
    }
    double stopDb;  ///< the highest level of the stop band
    double passDb;  ///< the lowest of the pass band
};

/// The two branches of a design at an angular frequency of the higher rate.
struct Branches {
    Branches(const std::vector<float>& coefficients, double frequency) {
        const auto delayed = std::polar(1.0, -2 * frequency);
        for (std::size_t i = 0; i < coefficients.size(); ++i) {
            const double c = coefficients[i];
            branch[i % 2] *= (c + delayed) / (1.0 + c * delayed);
        }
        branch[1] *= std::polar(1.0, -frequency);
    }
    double level() const { return std::abs(branch[0] + branch[1]) / 2; }
    /// By how far the second lags.
    double split() const { return std::arg(branch[0] / branch[1]); }
    std::complex<double> branch[2] = {1.0, 1.0};
};

TEST(EllipticHalfBand, ReachesWhatItsOrderAllows) {
    for (const Stage& stage : kStages) {
        SCOPED_TRACE(testing::Message() << "order " << stage.order << ", edge " << stage.edge);
        const auto coefficients = sr::designEllipticHalfBand(stage.order, stage.edge);
        ASSERT_EQ(coefficients.size(), static_cast<std::size_t>(stage.order / 2));
        EXPECT_TRUE(std::is_sorted(coefficients.begin(), coefficients.end()));
        double highest = 0.0, lowest = 1.0, apart = 0.0, opposed = pi;
        for (int i = 0; i <= 20000; ++i) {
            const double low = stage.edge * i / 20000;
            const Branches pass(coefficients, low), stop(coefficients, pi - low);
            lowest = std::min(lowest, pass.level());
            highest = std::max(highest, stop.level());
            // The branches go together through the pass band, and against each other through the stop band.
            apart = std::max(apart, std::abs(pass.split()));
            opposed = std::min(opposed, std::abs(stop.split()));
        }
        const Theory theory(stage);
        // Equal ripples: what is stored as floats costs a little of the deepest.
        EXPECT_NEAR(db(highest), theory.stopDb, 0.15);
        EXPECT_NEAR(db(lowest), theory.passDb, 0.1 * std::abs(theory.passDb) + 1e-9);
        EXPECT_NEAR(apart, 2 * std::asin(highest), 1e-4);
        EXPECT_NEAR(pi - opposed, apart, 1e-4);
    }
}

constexpr int kBlock = 256;

struct Chain {
    Chain(float rate, int wish) : style(environment, wish) {
        environment.setSampleRate(rate);
        up = style.createInterpolator();
        down = style.createDecimator();
    }
    /// In blocks of many lengths.
    Signal upsample(const Signal& in) {
        Signal out(in.size() * factor());
        std::size_t at = 0;
        for (const int block : randomBlocks(static_cast<int>(in.size()), kBlock, 3)) {
            EXPECT_TRUE(up->convert(in.data() + at, out.data() + at * factor(), block));
            at += static_cast<std::size_t>(block);
        }
        return out;
    }
    Signal downsample(const Signal& in) {
        Signal out(in.size() / factor());
        std::size_t at = 0;
        for (const int block : randomBlocks(static_cast<int>(out.size()), kBlock, 4)) {
            EXPECT_TRUE(down->convert(in.data() + at * factor(), out.data() + at, block));
            at += static_cast<std::size_t>(block);
        }
        return out;
    }
    std::size_t factor() const { return static_cast<std::size_t>(style.factor()); }

    wave::Environment environment{kBlock};
    sr::IIRConverterStyle style;
    std::unique_ptr<sr::ConverterBase> up, down;
};

TEST(IIRConverters, TakeAsMuchOfTheFactorAsTheRateAllows) {
    const struct {
        float rate;
        int wish, factor;
    } cases[] = {{44100, 1, 1},  {44100, 2, 2},  {44100, 4, 4},  {44100, 8, 8},
                 {44100, 32, 8}, {48000, 8, 8},  {96000, 8, 4},  {96000, 4, 4},
                 {192000, 8, 2}, {192001, 2, 1}, {192000, 2, 2}, {384000, 2, 1}};
    for (const auto& c : cases) {
        Chain chain(c.rate, c.wish);
        EXPECT_EQ(chain.style.factor(), c.factor) << c.wish << " at " << c.rate;
        float sample = 0.0f, out[8];
        EXPECT_EQ(chain.up->convert(&sample, out, 1), c.factor > 1);
    }
    Chain chain(44100, 1);
    chain.style.setFactor(4);
    chain.up->update();
    EXPECT_EQ(chain.upsample(impulse(10)).size(), 40u);
}

// The rule is a figure of its own, which low frequencies have to meet.
TEST(IIRConverters, TakeTheLatencyThatTheyTell) {
    for (const float rate : {44100.0f, 48000.0f, 88200.0f, 96000.0f, 176400.0f, 192000.0f}) {
        for (const int factor : {2, 4, 8}) {
            Chain chain(rate, factor);
            const int latency = chain.style.latency(factor);
            const Signal out = chain.downsample(chain.upsample(impulse(4000)));
            const double f = 200.0 / double{rate};
            const double delay = -std::arg(transformAt(out, f)) / (2 * pi * f);
            EXPECT_NEAR(delay, latency, 0.11) << "factor " << factor << " at " << rate;
        }
    }
    EXPECT_EQ(Chain(44100, 1).style.latency(1), 0);
    EXPECT_EQ(Chain(384000, 1).style.latency(2), 0);
}

TEST(IIRConverters, KeepThePassBandAndRejectTheRest) {
    const struct {
        float rate;
        int factor;
        double edge;    ///< Hz that pass
        double stopDb;  ///< of images and aliases
    } cases[] = {{44100, 2, 19400, -84}, {44100, 4, 19400, -69}, {44100, 8, 20900, -65},
                 {48000, 8, 21300, -69}, {96000, 2, 31600, -69}, {96000, 4, 31600, -69}};
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << "factor " << c.factor << " at " << c.rate);
        const double rate = double{c.rate}, high = rate * c.factor;
        const auto settled = [](const Signal& signal) {
            return std::span(signal).subspan(signal.size() / 3);
        };
        for (const double hz : {50.0, 1000.0, 0.6 * c.edge, c.edge}) {
            Chain chain(c.rate, c.factor);
            const Signal up = chain.upsample(sine(hz, rate, 9000));
            EXPECT_NEAR(db(amplitudeAt(settled(up), hz / high)), 0.0, 2e-3) << hz << " Hz up";
            for (double image = rate; image < high; image += rate) {
                for (const double f : {image - hz, image + hz}) {
                    if (f > high / 2) continue;
                    EXPECT_LT(db(amplitudeAt(settled(up), f / high)), c.stopDb) << hz << " mirrored at " << f;
                    const Signal low = chain.downsample(sine(f, high, 9000 * chain.factor()));
                    EXPECT_LT(db(peak(settled(low))), c.stopDb) << f << " Hz down";
                }
            }
            const Signal down = chain.downsample(sine(hz, high, 9000 * chain.factor()));
            EXPECT_NEAR(db(peak(settled(down))), 0.0, 0.05) << hz << " Hz down";
        }
    }
}

}  // namespace
}  // namespace vanta::test
