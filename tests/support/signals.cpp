#include "tests/support/signals.hpp"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <stdexcept>

namespace vanta::test {
namespace {

constexpr double kTwoPi = 2.0 * std::numbers::pi;

template <typename Function>
Signal generate(std::size_t count, Function&& sampleAt) {
    Signal signal(count);
    for (std::size_t i = 0; i < count; ++i) signal[i] = static_cast<float>(sampleAt(i));
    return signal;
}

/// The phase of a tone, reduced before the sine so that long signals keep their precision.
double phaseAt(std::size_t i, double frequency, double rate) {
    const double cycles = static_cast<double>(i) * frequency / rate;
    return kTwoPi * (cycles - std::floor(cycles));
}

}  // namespace

std::uint64_t Random::next() {
    state_ += 0x9E3779B97F4A7C15u;
    std::uint64_t z = state_;
    z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9u;
    z = (z ^ (z >> 27)) * 0x94D049BB133111EBu;
    return z ^ (z >> 31);
}

double Random::bipolar() {
    return static_cast<double>(next() >> 11) * 0x1p-52 - 1.0;
}

int Random::between(int low, int high) {
    const auto width = static_cast<std::uint64_t>(static_cast<std::int64_t>(high) - low + 1);
    return static_cast<int>(low + static_cast<std::int64_t>(next() % width));
}

Signal sine(double frequency, double rate, std::size_t count, double amplitude, double phase) {
    return generate(count,
                    [&](std::size_t i) { return amplitude * std::sin(phaseAt(i, frequency, rate) + phase); });
}

Signal square(double frequency, double rate, std::size_t count, double amplitude) {
    return generate(count, [&](std::size_t i) {
        return phaseAt(i, frequency, rate) < std::numbers::pi ? amplitude : -amplitude;
    });
}

Signal sweep(double low, double high, double rate, std::size_t count, double amplitude) {
    const double octaves = std::log(high / low);
    const double length = static_cast<double>(count);
    return generate(count, [&](std::size_t i) {
        const double cycles =
            low * length / (rate * octaves) * std::expm1(static_cast<double>(i) / length * octaves);
        return amplitude * std::sin(kTwoPi * (cycles - std::floor(cycles)));
    });
}

Signal bursts(double frequency, double rate, std::size_t count, std::size_t onCount, std::size_t offCount,
              double amplitude) {
    return generate(count, [&](std::size_t i) {
        const std::size_t place = i % (onCount + offCount);
        return place < onCount ? amplitude * std::sin(phaseAt(place, frequency, rate)) : 0.0;
    });
}

Signal impulse(std::size_t count, std::size_t position, double amplitude) {
    Signal signal(count, 0.0f);
    signal.at(position) = static_cast<float>(amplitude);
    return signal;
}

Signal whiteNoise(std::uint64_t seed, std::size_t count, double amplitude) {
    return spread(seed, count, -amplitude, amplitude);
}

Signal spread(std::uint64_t seed, std::size_t count, double low, double high) {
    Random random(seed);
    const double middle = 0.5 * (low + high), reach = 0.5 * (high - low);
    return generate(count, [&](std::size_t) { return middle + reach * random.bipolar(); });
}

Signal pinkNoise(std::uint64_t seed, std::size_t count, double rmsLevel) {
    // Paul Kellet's sum of first-order sections, within 0.05 dB of the slope above 9.2 Hz at 44.1 kHz.
    constexpr double kPole[] = {0.99886, 0.99332, 0.96900, 0.86650, 0.55000, -0.7616};
    constexpr double kGain[] = {0.0555179, 0.0750759, 0.1538520, 0.3104856, 0.5329522, -0.0168980};
    Random random(seed);
    double state_[6] = {};
    double delayed = 0.0;
    Signal signal = generate(count, [&](std::size_t) {
        const double white = random.bipolar();
        double sum = delayed + white * 0.5362;
        for (std::size_t k = 0; k < 6; ++k) sum += state_[k] = kPole[k] * state_[k] + white * kGain[k];
        delayed = white * 0.115926;
        return sum;
    });
    const double scale = rmsLevel / std::max(rms(signal), 1e-30);
    for (float& sample : signal) sample = static_cast<float>(sample * scale);
    return signal;
}

Signal softened(Signal signal) {
    for (int pass = 0; pass < 4; ++pass) {
        for (std::size_t i = signal.size() - 1; i > 0; --i) signal[i] = 0.5f * (signal[i] + signal[i - 1]);
    }
    return signal;
}

Signal faded(Signal signal, std::size_t ramp) {
    for (std::size_t i = 0; i < ramp; ++i) {
        const double angle = std::numbers::pi * static_cast<double>(i) / static_cast<double>(ramp);
        const auto gain = static_cast<float>(0.5 - 0.5 * std::cos(angle));
        signal[i] *= gain;
        signal[signal.size() - 1 - i] *= gain;
    }
    return signal;
}

double peak(std::span<const float> signal) {
    double largest = 0.0;
    for (const float sample : signal) largest = std::max(largest, std::abs(static_cast<double>(sample)));
    return largest;
}

double rms(std::span<const float> signal) {
    double sum = 0.0;
    for (const float sample : signal) sum += static_cast<double>(sample) * sample;
    return signal.empty() ? 0.0 : std::sqrt(sum / static_cast<double>(signal.size()));
}

double db(double amplitude) {
    return amplitude > 0.0 ? std::max(20.0 * std::log10(amplitude), -400.0) : -400.0;
}

double nullDb(std::span<const float> a, std::span<const float> b) {
    if (a.size() != b.size()) throw std::invalid_argument("nullDb: signals of different lengths");
    double largest = 0.0;
    for (std::size_t i = 0; i < a.size(); ++i) {
        const double difference = std::abs(static_cast<double>(a[i]) - b[i]);
        if (std::isnan(difference)) return difference;
        largest = std::max(largest, difference);
    }
    return db(largest);
}

std::complex<double> transformAt(std::span<const float> signal, double frequency) {
    std::complex<double> sum;
    for (std::size_t n = 0; n < signal.size(); ++n) {
        sum += static_cast<double>(signal[n]) * std::polar(1.0, -kTwoPi * frequency * static_cast<double>(n));
    }
    return sum;
}

double amplitudeAt(std::span<const float> signal, double frequency) {
    std::complex<double> sum;
    double weight = 0.0;
    for (std::size_t n = 0; n < signal.size(); ++n) {
        const double angle = kTwoPi * static_cast<double>(n) / static_cast<double>(signal.size());
        const double window = 0.35875 - 0.48829 * std::cos(angle) + 0.14128 * std::cos(2.0 * angle) -
                              0.01168 * std::cos(3.0 * angle);
        weight += window;
        sum += window * static_cast<double>(signal[n]) *
               std::polar(1.0, -kTwoPi * frequency * static_cast<double>(n));
    }
    return 2.0 * std::abs(sum) / weight;
}

}  // namespace vanta::test
