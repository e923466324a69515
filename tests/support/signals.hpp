#pragma once

#include <complex>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

/// Test signals, the same on every machine, and the measures by which results are judged. Amplitudes are
/// factors of full scale, frequencies and rates are in hertz, phases in radians.
namespace vanta::test {

using Signal = std::vector<float>;

Signal sine(double frequency, double rate, std::size_t count, double amplitude = 1.0, double phase = 0.0);
/// Not band-limited: it jumps between plus and minus the amplitude.
Signal square(double frequency, double rate, std::size_t count, double amplitude = 1.0);
/// Sine whose frequency rises exponentially from `low` to `high`.
Signal sweep(double low, double high, double rate, std::size_t count, double amplitude = 1.0);
/// Tone bursts: on for `onCount` samples, silent for `offCount`, and so on. Each starts at phase 0.
Signal bursts(double frequency, double rate, std::size_t count, std::size_t onCount, std::size_t offCount,
              double amplitude = 1.0);
Signal impulse(std::size_t count, std::size_t position = 0, double amplitude = 1.0);
/// Evenly distributed between plus and minus the amplitude.
Signal whiteNoise(std::uint64_t seed, std::size_t count, double amplitude = 1.0);
/// Evenly distributed between two ends.
Signal spread(std::uint64_t seed, std::size_t count, double low, double high);
/// Falls by 3 dB an octave from about 10 Hz at 44.1 kHz up, scaled to the given root mean square.
Signal pinkNoise(std::uint64_t seed, std::size_t count, double rmsLevel = 0.1);

/// Without what lies next to half the sample rate: no recording has it, and no two interpolators agree on it.
Signal softened(Signal signal);
/// Begins and ends with half a cosine of `ramp` samples.
Signal faded(Signal signal, std::size_t ramp);

double peak(std::span<const float> signal);
double rms(std::span<const float> signal);
/// 20 log10 of an amplitude; -400 for 0.
double db(double amplitude);
/// Largest difference of two signals of one length, in dB of full scale; std::invalid_argument for unequal
/// lengths. -400 if they are equal bit for bit, NaN if the difference is not a number.
double nullDb(std::span<const float> a, std::span<const float> b);

/// The Fourier transform of a signal at one frequency, in cycles per sample.
std::complex<double> transformAt(std::span<const float> signal, double frequency);
/// The amplitude of a sine of that frequency in a signal, seen through a window of Blackman and Harris, whose
/// side lobes lie at -92 dB.
double amplitudeAt(std::span<const float> signal, double frequency);

/// The largest magnitude of the continuous signal that the samples represent, with silence before and
/// after. A judge that shares nothing with what it judges: a sinc of 1024 samples' length under a Kaiser
/// window with side lobes at -120 dB, in double precision, at 8 points a sample (FFTW does the sums), then
/// refined around the largest. Flat to 0.49 of the sample rate. Not for several threads at once.
double truePeak(std::span<const float> signal);
/// The same, looked for only between the samples `first` and `last`, so that a cut signal's edges do not
/// count. The neighbourhood outside still takes part.
double truePeak(std::span<const float> signal, std::size_t first, std::size_t last);

/// A sequence of evenly spread numbers, the same everywhere (SplitMix64, Steele, Lea and Flood, 2014).
class Random {
public:
    explicit Random(std::uint64_t seed) : state_(seed) {}
    std::uint64_t next();
    /// At least -1 and below 1.
    double bipolar();
    /// From `low` to `high`, both included.
    int between(int low, int high);

private:
    std::uint64_t state_;
};

}  // namespace vanta::test
