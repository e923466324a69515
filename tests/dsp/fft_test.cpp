#include "dsp/convolver/fft.hpp"

#include <fftw3.h>
#include <gtest/gtest.h>

#include <complex>
#include <limits>
#include <stdexcept>
#include <vector>

#include "dsp/convolver/fft_task.hpp"
#include "dsp/kernel/convolver_kernels.hpp"
#include "foundation/task_schedule.hpp"
#include "tests/support/signals.hpp"

namespace vanta {
namespace {

constexpr double kEpsilon = std::numeric_limits<float>::epsilon();

std::vector<float> noise(int count, unsigned seed) {
    return test::whiteNoise(seed, static_cast<std::size_t>(count));
}

/// FFTW's transform of a real signal, in double precision: bins 0 to N / 2.
std::vector<std::complex<double>> referenceTransform(const std::vector<float>& samples) {
    std::vector<double> in(samples.begin(), samples.end());
    std::vector<std::complex<double>> out(in.size() / 2 + 1);
    const fftw_plan plan = fftw_plan_dft_r2c_1d(static_cast<int>(in.size()), in.data(),
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

std::vector<float> forward(const FFT& fft, const std::vector<float>& samples) {
    std::vector<float> spectrum(samples.size());
    FFT::Work work(fft.size());
    fft.forward(samples.data(), samples.data() + samples.size() / 2, spectrum.data(), work, 0, fft.grains());
    return spectrum;
}

class FftOfSize : public testing::TestWithParam<int> {};

TEST_P(FftOfSize, EqualsFftw) {
    const int size = GetParam();
    const FFT fft(size);
    const std::vector<float> samples = noise(size, 17);
    const auto expected = referenceTransform(samples);
    const std::vector<float> spectrum = forward(fft, samples);
    // Rounding grows with the square root of the number of passes, relative to the level of the spectrum.
    const double level = std::sqrt(size / 3.0);
    for (std::size_t k = 0; k < expected.size(); ++k) {
        ASSERT_LT(std::abs(bin(spectrum, k) - expected[k]), 8.0 * kEpsilon * level) << "bin " << k;
    }
}

TEST_P(FftOfSize, ComesBackTimesItsSize) {
    const int size = GetParam();
    const FFT fft(size);
    const std::vector<float> samples = noise(size, 18);
    const std::vector<float> spectrum = forward(fft, samples);
    std::vector<float> back(samples.size());
    FFT::Work work(size);
    fft.inverse(spectrum.data(), back.data(), work, 0, fft.grains());
    for (std::size_t i = 0; i < samples.size(); ++i) {
        ASSERT_NEAR(back[i] / static_cast<float>(size), samples[i], 8.0 * kEpsilon) << "sample " << i;
    }
}

TEST_P(FftOfSize, GivesTheSameBitsHoweverItIsPaused) {
    const int size = GetParam();
    const FFT fft(size);
    const std::vector<float> samples = noise(size, 19);
    const std::vector<float> spectrum = forward(fft, samples);
    std::vector<float> back(samples.size());
    FFT::Work whole(size);
    fft.inverse(spectrum.data(), back.data(), whole, 0, fft.grains());

    test::Random random(5);
    const int largestPieces[] = {1, 7, 100, fft.grains() / 2};
    for (const int largest : largestPieces) {
        if (largest == 1 && size > 4096) continue;  // one grain at a time is slow and proves no more
        FFT::Work work(size);
        std::vector<float> there(samples.size()), andBack(samples.size());
        for (int grain = 0, piece = 0; grain < fft.grains(); grain += piece) {
            piece = std::min(random.between(1, largest), fft.grains() - grain);
            fft.forward(samples.data(), samples.data() + size / 2, there.data(), work, grain, piece);
        }
        ASSERT_EQ(there, spectrum) << "pieces up to " << largest;
        for (int grain = 0, piece = 0; grain < fft.grains(); grain += piece) {
            piece = std::min(random.between(1, largest), fft.grains() - grain);
            fft.inverse(there.data(), andBack.data(), work, grain, piece);
        }
        ASSERT_EQ(andBack, back) << "pieces up to " << largest;
    }
}

INSTANTIATE_TEST_SUITE_P(Sizes, FftOfSize,
                         testing::Values(32, 64, 128, 256, 512, 1024, 2048, 4096, 8192, 16384, 131072));

TEST(Fft, RefusesSizesThatAreNoPowerOfTwo) {
    for (const int size : {-64, 0, 1, 16, 48, 100, 257})
        EXPECT_THROW(FFT{size}, std::invalid_argument) << size;
}

// The product of many partitions as one scheduled task, against the plain sum.
TEST(FftMultiplyTask, SumsProductsOfSpectraHoweverItIsPaused) {
    const FFT fft(128);
    const std::size_t half = 64;
    for (const int pairs : {1, 3, 4, 5, 11}) {
        auto task = std::make_unique<FFTMultiplyTask>(fft, pairs);
        FFTMultiplyTask& multiply = *task;
        TaskSchedule schedule;
        schedule.add(std::move(task));
        std::vector<std::vector<float>> inputs, kernels;
        for (int j = 0; j < pairs; ++j) {
            inputs.push_back(noise(128, static_cast<unsigned>(100 + j)));
            kernels.push_back(noise(128, static_cast<unsigned>(200 + j)));
        }
        for (const int blocks : {1, 7, 64}) {
            multiply.clear();
            for (std::size_t j = 0; j < inputs.size(); ++j) multiply.add(inputs[j].data(), kernels[j].data());
            multiply.addConstant(0.5f, kernels[0].data());
            schedule.setDuration(blocks);
            schedule.restart();
            for (int block = 0; block < blocks; ++block) {
                EXPECT_EQ(schedule.advance(1), block == blocks - 1);
            }
            for (std::size_t k = 0; k <= half; ++k) {
                std::complex<double> sum = k == 0 ? 0.5 * 128 * kernels[0][0] : 0.0;
                for (std::size_t j = 0; j < inputs.size(); ++j) sum += bin(inputs[j], k) * bin(kernels[j], k);
                std::vector<float> computed(multiply.sum(), multiply.sum() + 128);
                ASSERT_LT(std::abs(bin(computed, k) - sum), 64.0 * kEpsilon) << pairs << " pairs, bin " << k;
            }
        }
    }
}

TEST(ConvolverKernels, EqualTheirScalarTwins) {
    const std::vector<float> a = noise(400, 1), b = noise(400, 2), taps = noise(64, 3);
    for (const std::size_t offset : {0u, 1u, 3u}) {
        for (const std::size_t count : {0u, 1u, 3u, 4u, 15u, 16u, 17u, 33u, 100u, 257u}) {
            std::vector<float> out(400, 9.0f), faded(b);
            const float* x = a.data() + 64 + offset;
            kernel::fir(x, taps.data(), taps.size(), out.data() + offset, count);
            kernel::crossfadeStretch(x, faded.data() + offset, 37.0f, 882.0f, count);
            for (std::size_t i = 0; i < count; ++i) {
                double sum = 0.0;
                for (std::size_t j = 0; j < taps.size(); ++j) {
                    sum += static_cast<double>(taps[j]) * a[64 + offset + i - j];
                }
                ASSERT_NEAR(out[offset + i], sum, 64.0 * kEpsilon);
                const double from = x[i], gain = (37.0 + static_cast<double>(i)) / 882.0;
                ASSERT_NEAR(faded[offset + i], from + (b[offset + i] - from) * gain, 4.0 * kEpsilon);
            }
            EXPECT_EQ(out[offset + count], 9.0f);
            EXPECT_EQ(faded[offset + count], b[offset + count]);
        }
    }
}

TEST(ConvolverKernels, FindTheOneSampleThatDiffers) {
    for (const std::size_t count : {1u, 5u, 16u, 37u, 128u}) {
        std::vector<float> block(count, 0.25f);
        EXPECT_TRUE(kernel::allEqual(block.data(), count));
        for (std::size_t i = 0; i < count; ++i) {
            block[i] = std::numeric_limits<float>::quiet_NaN();
            EXPECT_FALSE(kernel::allEqual(block.data(), count)) << i << " of " << count;
            block[i] = 0.2500001f;
            EXPECT_EQ(kernel::allEqual(block.data(), count), count == 1) << i << " of " << count;
            block[i] = 0.25f;
        }
    }
}

}  // namespace
}  // namespace vanta
