#include <fftw3.h>
#include <fmt/format.h>

#include <algorithm>

#include "bench/compare/rows.hpp"
#include "dsp/convolver/fft.hpp"
#include "tests/support/signals.hpp"

namespace vanta::bench {

namespace {

/// So many stops that a block of the convolver could make in one.
constexpr int kPieces = 8;
constexpr int kSamplesInRound = 1 << 19;

struct OwnTransform {
    explicit OwnTransform(int size)
        : fft(size),
          work(size),
          samples(size),
          spectrum(size),
          signal(test::pinkNoise(1, static_cast<std::size_t>(size))) {}

    void forward(int pieces) {
        for (int piece = 0; piece < pieces; ++piece) {
            const int begin = fft.grains() * piece / pieces, end = fft.grains() * (piece + 1) / pieces;
            fft.forward(signal.data(), signal.data() + fft.size() / 2, spectrum.data(), work, begin,
                        end - begin);
        }
    }
    void inverse() { fft.inverse(spectrum.data(), samples.data(), work, 0, fft.grains()); }

    FFT fft;
    FFT::Work work;
    wave::AlignedBuffer<float> samples, spectrum;
    test::Signal signal;
};

/// In single precision, planned as carefully as FFTW can.
class Fftw {
public:
    explicit Fftw(int size)
        : samples_(fftwf_alloc_real(static_cast<std::size_t>(size))),
          spectrum_(fftwf_alloc_complex(static_cast<std::size_t>(size / 2 + 1))),
          forward_(fftwf_plan_dft_r2c_1d(size, samples_, spectrum_, FFTW_PATIENT)),
          inverse_(fftwf_plan_dft_c2r_1d(size, spectrum_, samples_, FFTW_PATIENT)) {
        const auto signal = test::pinkNoise(1, static_cast<std::size_t>(size));
        std::copy(signal.begin(), signal.end(), samples_);
    }
    ~Fftw() {
        fftwf_destroy_plan(forward_);
        fftwf_destroy_plan(inverse_);
        fftwf_free(samples_);
        fftwf_free(spectrum_);
    }
    Fftw(const Fftw&) = delete;
    Fftw& operator=(const Fftw&) = delete;

    void forward() { fftwf_execute(forward_); }
    /// Of silence: it overwrites the spectrum, and what it is run on again must not grow.
    void inverse() { fftwf_execute(inverse_); }
    void silence(int size) {
        std::fill_n(samples_, size, 0.0f);
        fftwf_execute(forward_);
    }

private:
    float* samples_;
    fftwf_complex* spectrum_;
    fftwf_plan forward_, inverse_;
};

void addTransformsOf(int size, Report& report, const Options& options) {
    OwnTransform own(size);
    Fftw forward(size), inverse(size);
    inverse.silence(size);
    Race race({.passes = 20 * options.passes, .blocks = kSamplesInRound / size});
    race.enter("FFTW", repeat([&] { forward.forward(); }));
    race.enter("FFTW, inverse", repeat([&] { inverse.inverse(); }));
    race.enter("forward", repeat([&] { own.forward(1); }));
    race.enter("forward in pieces", repeat([&] { own.forward(kPieces); }));
    race.enter("inverse", repeat([&] { own.inverse(); }));
    race.run();
    const auto add = [&](std::size_t contender, std::size_t to, Reach reach, const std::string& what) {
        report.add({fmt::format("{} points, {}", size, what), race.nanoseconds(contender),
                    race.nanoseconds(to), race.ratio(contender, to), reach});
    };
    add(2, 0, Reach::both(1.2), "forward");
    add(4, 1, Reach::both(1.2), "inverse");
    add(3, 0, {}, fmt::format("forward, stopped {} times", kPieces - 1));
}

}  // namespace

void addTransforms(Report& report, const Target& target, const Options& options) {
    report.begin(target, "Real transforms beside FFTW", "ns", "FFTW");
    for (const int size : {256, 2048}) addTransformsOf(size, report, options);
}

}  // namespace vanta::bench
