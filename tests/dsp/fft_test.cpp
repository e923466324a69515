#include "dsp/convolver/fft.hpp"

#include <fftw3.h>
#include <gtest/gtest.h>

#include <complex>
#include <limits>
#include <stdexcept>
#include <vector>

#include "tests/support/signals.hpp"

namespace vanta::test {
namespace {

constexpr double kEpsilon = std::numeric_limits<float>::epsilon();

/// FFTW's transform of a real signal, in double precision: bins 0 to N / 2.
std::vector<std::complex<double>> referenceTransform(const std::vector<float>& samples) {
    std::vector<double> in(samples.begin(), samples.end());
    std::vector<std::complex<double>> out(in.size() / 2 + 1);
    fftw_plan plan = fftw_plan_dft_r2c_1d(static_cast<int>(in.size()), in.data(),
                                          reinterpret_cast<fftw_complex*>(out.data()), FFTW_ESTIMATE);
    fftw_execute(plan);
    fftw_destroy_plan(plan);
    return out;
}

std::complex<double> bin(const std::vector<float>& spectrum, std::size_t k) {
    const std::size_t half = spectrum.size() / 2;
    if (k == 0 || k == half) return spectrum[k];
    return {spectrum[k], spectrum[half + k]};
}

class FftOfSize : public testing::TestWithParam<int> {};

TEST_P(FftOfSize, EqualsFftwAndComesBackTimesItsSizeHoweverItIsPaused) {
    const int size = GetParam();
    const FFT fft(size);
    const auto samples = whiteNoise(17, static_cast<std::size_t>(size));
    FFT::Work work(size);
    std::vector<float> spectrum(samples.size()), back(samples.size());
    fft.forward(samples.data(), samples.data() + size / 2, spectrum.data(), work, 0, fft.grains());
    fft.inverse(spectrum.data(), back.data(), work, 0, fft.grains());

    // Rounding grows with the square root of the number of passes, relative to the level of the spectrum.
    const double level = std::sqrt(size / 3.0);
    const auto expected = referenceTransform(samples);
    for (std::size_t k = 0; k < expected.size(); ++k) {
        ASSERT_LT(std::abs(bin(spectrum, k) - expected[k]), 8.0 * kEpsilon * level) << "bin " << k;
    }
    for (std::size_t i = 0; i < samples.size(); ++i) {
        ASSERT_NEAR(back[i] / static_cast<float>(size), samples[i], 8.0 * kEpsilon) << "sample " << i;
    }

    Random random(5);
    for (const int largest : {1, 7, 100, fft.grains() / 2}) {
        if (largest == 1 && size > 4096) continue;  // one grain at a time is slow and proves no more
        SCOPED_TRACE(testing::Message() << "pieces up to " << largest);
        const auto inPieces = [&](auto&& run) {
            for (int grain = 0, piece = 0; grain < fft.grains(); grain += piece) {
                piece = std::min(random.between(1, largest), fft.grains() - grain);
                run(grain, piece);
            }
        };
        std::vector<float> there(samples.size()), andBack(samples.size());
        inPieces([&](int grain, int piece) {
            fft.forward(samples.data(), samples.data() + size / 2, there.data(), work, grain, piece);
        });
        ASSERT_EQ(there, spectrum);
        inPieces(
            [&](int grain, int piece) { fft.inverse(there.data(), andBack.data(), work, grain, piece); });
        ASSERT_EQ(andBack, back);
    }
}

INSTANTIATE_TEST_SUITE_P(Sizes, FftOfSize,
                         testing::Values(32, 64, 128, 256, 512, 1024, 2048, 4096, 8192, 16384, 131072));

TEST(Fft, RefusesSizesThatAreNoPowerOfTwo) {
    for (const int size : {-64, 0, 1, 16, 48, 100, 257})
        EXPECT_THROW(FFT{size}, std::invalid_argument) << size;
}

}  // namespace
}  // namespace vanta::test
