#include "dsp/convolver/fft.hpp"

#include <algorithm>
#include <bit>
#include <cmath>
#include <numbers>
#include <stdexcept>
#include <utility>

#include "kernel/fft_kernels.hpp"

namespace vanta {

namespace {

constexpr int kStepUnits = 16;  ///< pieces of a pass begin at multiples of the widest vector

int unitAt(int units, int grain, int cost) {
    if (grain >= cost) return units;
    return static_cast<int>(static_cast<std::int64_t>(units) * grain / cost) / kStepUnits * kStepUnits;
}

}  // namespace

FFT::FFT(int size) : size_(size) {
    if (size < kSmallest || size > kLargest || !std::has_single_bit(static_cast<unsigned>(size))) {
        throw std::invalid_argument("FFT: the size must be a power of two, 32 or more");
    }
    // Even and odd samples make one complex transform of half the size: radix-4 passes, and a last one of
    // radix 8 where an odd power of two is left.
    const int half = size / 2;
    addPass(Kind::First, half / 4, 1, size);
    addStepTwiddles(half, true);
    int stride = 4;
    for (; half / stride > 8; stride *= 4) {
        addPass(Kind::Middle, half / 4, stride, size);
        addStepTwiddles(half / stride, false);
    }
    const bool radix8 = half / stride == 8;
    addPass(radix8 ? Kind::Last8 : Kind::Last4, radix8 ? half / 8 : half / 4, stride, size);
    addPass(Kind::Zip, half / 2, 1, size);
    addZipTwiddles();
}

void FFT::addPass(Kind kind, int units, int stride, int cost) {
    passes_.push_back(
        {kind, units, static_cast<std::size_t>(stride), static_cast<int>(twiddles_.size()), cost});
    grains_ += cost;
}

// The first three powers of the roots of `points`: six rows, or six values side by side for each root.
void FFT::addStepTwiddles(int points, bool byRow) {
    const auto roots = static_cast<std::size_t>(points / 4);
    const std::size_t start = twiddles_.size();
    twiddles_.resize(start + 6 * roots);
    for (std::size_t root = 0; root < roots; ++root) {
        for (std::size_t power = 1; power <= 3; ++power) {
            const double angle =
                -2.0 * std::numbers::pi * static_cast<double>(power * root) / static_cast<double>(points);
            const std::size_t row = 2 * power - 2;
            const auto place = [&](std::size_t r) {
                return start + (byRow ? r * roots + root : 6 * root + r);
            };
            twiddles_[place(row)] = static_cast<float>(std::cos(angle));
            twiddles_[place(row + 1)] = static_cast<float>(std::sin(angle));
        }
    }
}

void FFT::addZipTwiddles() {
    const int bins = size_ / 4;
    for (const bool sine : {false, true}) {
        for (int k = 0; k < bins; ++k) {
            const double angle = 2.0 * std::numbers::pi * k / size_;
            twiddles_.push_back(static_cast<float>(sine ? -std::sin(angle) : std::cos(angle)));
        }
    }
}

// Calls run(piece) for what lies in the given grains.
template <typename Run>
void FFT::runGrains(bool backward, Work& work, int firstGrain, int count, Run&& run) const {
    const int passCount = static_cast<int>(passes_.size());
    const int endGrain = firstGrain + count;
    int start = 0;
    float* in = work.second.data();
    float* out = work.first.data();
    for (int number = 0; number < passCount && start < endGrain; ++number) {
        const int index = !backward ? number : number == 0 ? passCount - 1 : number - 1;
        const Pass& pass = passes_[static_cast<std::size_t>(index)];
        const int begin = unitAt(pass.units, std::max(firstGrain - start, 0), pass.cost);
        const int end = unitAt(pass.units, endGrain - start, pass.cost);
        if (firstGrain < start + pass.cost && begin < end) {
            run(Piece{pass, in, out, twiddles_.data() + pass.twiddles, static_cast<std::size_t>(begin),
                      static_cast<std::size_t>(end)});
        }
        start += pass.cost;
        std::swap(in, out);
    }
}

void FFT::forward(const float* firstHalf, const float* secondHalf, float* spectrum, Work& work,
                  int firstGrain, int count) const {
    const auto half = static_cast<std::size_t>(size_ / 2);
    runGrains(false, work, firstGrain, count, [&](const Piece& p) {
        switch (p.pass.kind) {
            case Kind::First:
                kernel::fftFirstReal(firstHalf, secondHalf, p.out, p.twiddles, half, p.begin, p.end);
                break;
            case Kind::Middle:
                kernel::fftMiddle(p.in, p.out, p.twiddles, half, p.pass.stride, p.begin, p.end);
                break;
            case Kind::Last4:
                kernel::fftLast4(p.in, p.out, half, p.begin, p.end);
                break;
            case Kind::Last8:
                kernel::fftLast8(p.in, p.out, half, p.begin, p.end);
                break;
            case Kind::Zip:
                kernel::fftUnzip(p.in, spectrum, p.twiddles, half, p.begin, p.end);
                break;
        }
    });
}

// An inverse transform is a forward one with real and imaginary parts exchanged before and after.
void FFT::inverse(const float* spectrum, float* samples, Work& work, int firstGrain, int count) const {
    const auto half = static_cast<std::size_t>(size_ / 2);
    runGrains(true, work, firstGrain, count, [&](const Piece& p) {
        switch (p.pass.kind) {
            case Kind::First:
                kernel::fftFirst(p.in, p.out, p.twiddles, half, p.begin, p.end);
                break;
            case Kind::Middle:
                kernel::fftMiddle(p.in, p.out, p.twiddles, half, p.pass.stride, p.begin, p.end);
                break;
            case Kind::Last4:
                kernel::fftLast4Real(p.in, samples, half, p.begin, p.end);
                break;
            case Kind::Last8:
                kernel::fftLast8Real(p.in, samples, half, p.begin, p.end);
                break;
            case Kind::Zip:
                kernel::fftZip(spectrum, p.out, p.twiddles, half, p.begin, p.end);
                break;
        }
    });
}

}  // namespace vanta
