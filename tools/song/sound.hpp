#pragma once

#include <cmath>
#include <complex>
#include <cstddef>
#include <cstdint>
#include <numbers>
#include <vector>

namespace vanta::song {

/// Every sound is made at this rate, in hertz, and the finished mix is converted. So the music is the same
/// at each rate, down to the random numbers, and what little aliases lies above hearing.
inline constexpr double kStudioRate = 96000;

inline constexpr double kTwoPi = 2 * std::numbers::pi;

struct Stereo {
    explicit Stereo(std::size_t frames = 0) : left(frames), right(frames) {}
    std::size_t frames() const { return left.size(); }

    std::vector<double> left, right;
};

/// Seeded pseudo-random numbers (splitmix64, Steele, Lea and Flood 2014).
class Random {
public:
    explicit Random(std::uint64_t seed) : state_(seed) {}

    std::uint64_t bits() {
        std::uint64_t z = state_ += 0x9e3779b97f4a7c15u;
        z = (z ^ (z >> 30)) * 0xbf58476d1ce4e5b9u;
        z = (z ^ (z >> 27)) * 0x94d049bb133111ebu;
        return z ^ (z >> 31);
    }
    /// 0 to below 1.
    double unit() { return static_cast<double>(bits() >> 11) * 0x1p-53; }
    /// -1 to below 1, white.
    double bipolar() { return 2 * unit() - 1; }

private:
    std::uint64_t state_;
};

/// State-variable filter in the trapezoidal form (Zavalishin, "The Art of VA Filter Design"), which takes
/// cutoff changes at any time without a step.
class Filter {
public:
    /// Values of one sample; band has unit gain at the cutoff.
    struct Out {
        double low, band, high;
    };

    Filter(double cutoffHz, double q) { tune(cutoffHz, q); }

    void tune(double cutoffHz, double q) {
        g_ = std::tan(std::numbers::pi * std::fmin(cutoffHz, 0.45 * kStudioRate) / kStudioRate);
        damping_ = 1 / q;
        scale_ = 1 / (1 + g_ * (g_ + damping_));
    }
    Out next(double in) {
        const double high = (in - (g_ + damping_) * first_ - second_) * scale_;
        const double band = g_ * high + first_;
        const double low = g_ * band + second_;
        first_ = g_ * high + band;
        second_ = g_ * band + low;
        return {low, band * damping_, high};
    }

private:
    double g_ = 0, damping_ = 1, scale_ = 1;
    double first_ = 0, second_ = 0;
};

/// Sawtooth from -1 to 1 whose step is rounded over two samples (polynomial band-limited step, Välimäki
/// and Huovilainen 2007).
class Saw {
public:
    explicit Saw(double startPhase) : phase_(startPhase) {}

    double next(double hertz) {
        const double step = hertz / kStudioRate;
        const double out = 2 * phase_ - 1 - residue(phase_, step);
        phase_ += step;
        phase_ -= std::floor(phase_);
        return out;
    }

private:
    static double residue(double at, double step) {
        if (at < step) return -(1 - at / step) * (1 - at / step);
        if (at > 1 - step) return (1 - (1 - at) / step) * (1 - (1 - at) / step);
        return 0;
    }

    double phase_;
};

class Sine {
public:
    explicit Sine(double startPhase = 0) : phase_(startPhase) {}

    /// `shift` modulates the phase, in radians.
    double next(double hertz, double shift = 0) {
        const double out = std::sin(kTwoPi * phase_ + shift);
        phase_ += hertz / kStudioRate;
        phase_ -= std::floor(phase_);
        return out;
    }

private:
    double phase_;
};

/// A sine of constant pitch, by rotation: the partials of a struck cymbal are many.
class Partial {
public:
    Partial(double hertz, double startPhase)
        : turn_(std::polar(1.0, kTwoPi * hertz / kStudioRate)), at_(std::polar(1.0, kTwoPi * startPhase)) {}

    double next() {
        at_ = {at_.real() * turn_.real() - at_.imag() * turn_.imag(),
               at_.real() * turn_.imag() + at_.imag() * turn_.real()};
        return at_.imag();
    }

private:
    std::complex<double> turn_, at_;
};

/// Loudness of a held note over its time. Attack and end are rounded so that no note clicks.
struct Envelope {
    double attack = 0.005;  ///< seconds
    double decay = 0.3;     ///< time constant towards `sustain`, seconds
    double sustain = 0.7;   ///< 0 to 1
    double release = 0.1;   ///< time constant, seconds

    /// Level at a time after the note's start; `gate` is the note's length. Seconds.
    double at(double time, double gate) const;
    /// When the note is silent.
    double end(double gate) const { return gate + kReleases * release; }

private:
    static constexpr double kReleases = 9;  // -58 dB
};

inline double hertzOf(double pitch) {
    return 440 * std::exp2((pitch - 69) / 12);
}

/// Rises from 0 to 1 in `length` seconds along half a cosine.
double fadeIn(double time, double length);

std::size_t frameAt(double seconds);

}  // namespace vanta::song
