#include "tests/conformance/program_material.hpp"

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>
#include <numeric>

#include "tools/song/song.hpp"

namespace vanta::test {
namespace {

constexpr double kRate = 44100.0;
constexpr double kSeconds = 0.2;
constexpr std::size_t kRamp = 882;  // 20 ms
constexpr auto kCount = static_cast<std::size_t>(kRate * kSeconds);

/// So loud that its peaks stand just below full scale.
Channels normalized(Channels channels) {
    const auto factor = static_cast<float>(0.95 / peak(channels));
    for (Signal& signal : channels) {
        for (float& sample : signal) sample *= factor;
    }
    return channels;
}

Signal clicks(std::size_t count) {
    Random random(5);
    Signal signal(count, 0.0f);
    for (std::size_t i = 100; i < count; i += static_cast<std::size_t>(random.between(20, 2000))) {
        signal[i] = static_cast<float>(random.bipolar());
    }
    return signal;
}

void addTones(std::vector<Material>& all) {
    const auto tone = [&](double frequency, Spectrum spectrum) {
        all.push_back({fmt::format("tone {:.0f} Hz", frequency),
                       spectrum,
                       {faded(sine(frequency, kRate, kCount, 0.95, 0.8), kRamp)}});
    };
    for (const double frequency : {20.0, 100.0, 997.0, 5003.0, 11001.0, 15000.0}) {
        tone(frequency, Spectrum::Below16kHz);
    }
    for (const double frequency : {17500.0, 19000.0, 19900.0}) tone(frequency, Spectrum::Below20kHz);
    for (const double share : {0.48, 0.49, 0.495}) tone(share * kRate, Spectrum::Nyquist);
    all.push_back({"sweep 20 Hz to 0.49 of the rate",
                   Spectrum::Nyquist,
                   {faded(sweep(20.0, 0.49 * kRate, kRate, kCount, 0.99), kRamp)}});
}

/// Tones whose samples miss the peaks by as much as they can.
void addInterSamplePeaks(std::vector<Material>& all) {
    for (const int samplesPerCycle : {3, 4, 6}) {
        const double phase = std::numbers::pi / samplesPerCycle;
        const Signal tone = sine(kRate / samplesPerCycle, kRate, kCount, 1.0, phase);
        all.push_back({fmt::format("inter-sample tone at rate / {}", samplesPerCycle),
                       Spectrum::Below16kHz,
                       {faded(tone, kRamp)}});
        all.push_back(
            {fmt::format("abrupt inter-sample tone at rate / {}", samplesPerCycle), Spectrum::Edges, {tone}});
    }
}

void addEdges(std::vector<Material>& all) {
    const auto ms = [](double value) { return static_cast<std::size_t>(value * kRate / 1000.0); };
    const auto add = [&](std::string name, Signal signal) {
        all.push_back({std::move(name), Spectrum::Edges, {std::move(signal)}});
    };
    add("bursts of 1 kHz", bursts(1000.0, kRate, kCount, ms(10.0), ms(60.0)));
    add("bursts of 7 kHz", bursts(7000.0, kRate, kCount, ms(2.0), ms(30.0)));
    for (const double frequency : {30.0, 441.0, 3000.0}) {
        add(fmt::format("square {:.0f} Hz", frequency), square(frequency, kRate, kCount));
    }
    add("clicks", clicks(kCount));
}

/// White noise behind a low-pass of 801 taps that lets nothing above 16 kHz through.
Signal noiseBelow16kHz(std::uint64_t seed) {
    constexpr int kHalf = 400;
    constexpr double kCorner = 15500.0 / kRate;
    std::array<double, 2 * kHalf + 1> taps{};
    for (int k = -kHalf; k <= kHalf; ++k) {
        const double window = 0.5 + 0.5 * std::cos(std::numbers::pi * k / (kHalf + 1));
        const double angle = 2.0 * std::numbers::pi * kCorner * k;
        taps[static_cast<std::size_t>(k + kHalf)] = window * (k == 0 ? 1.0 : std::sin(angle) / angle);
    }
    const Signal white = whiteNoise(seed, kCount + taps.size());
    Signal low(kCount);
    for (std::size_t i = 0; i < kCount; ++i) {
        low[i] = static_cast<float>(std::inner_product(taps.begin(), taps.end(),
                                                       white.begin() + static_cast<std::ptrdiff_t>(i), 0.0));
    }
    return faded(low, kRamp);
}

std::vector<Material> makeMaterial() {
    std::vector<Material> all;
    all.push_back({"music", Spectrum::Below16kHz, loudMusic(2.0 * kSeconds)});
    all.push_back(
        {"low-passed noise", Spectrum::LowNoise, normalized({noiseBelow16kHz(1), noiseBelow16kHz(2)})});
    all.push_back(
        {"pink noise", Spectrum::PinkNoise, normalized({pinkNoise(1, kCount), pinkNoise(2, kCount)})});
    all.push_back({"white noise", Spectrum::WhiteNoise, {whiteNoise(3, kCount), whiteNoise(4, kCount)}});
    addTones(all);
    addInterSamplePeaks(all);
    addEdges(all);
    return all;
}

}  // namespace

const std::vector<Material>& programMaterial() {
    static const std::vector<Material> all = makeMaterial();
    return all;
}

Channels loudMusic(double seconds) {
    constexpr double kFromSeconds = 9.0;
    constexpr double kLongest = 2.0;
    static const song::Song song = song::renderSong(song::loadDemoScore(), kRate, kFromSeconds + kLongest);
    const auto from = static_cast<std::ptrdiff_t>(kFromSeconds * kRate);
    const auto until = from + static_cast<std::ptrdiff_t>(std::min(seconds, kLongest) * kRate);
    return normalized({Signal(song.left.begin() + from, song.left.begin() + until),
                       Signal(song.right.begin() + from, song.right.begin() + until)});
}

}  // namespace vanta::test
