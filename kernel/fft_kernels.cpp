#include "kernel/fft_kernels.hpp"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "kernel/fft_kernels.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#include "kernel/vector_loop.hpp"

HWY_BEFORE_NAMESPACE();
namespace vanta::kernel {
namespace HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

/// Units come in fours, so that vectors of four lanes take what wide ones leave.
template <typename Body>
HWY_INLINE void unitLoop(std::size_t begin, std::size_t end, Body&& body) {
    const hn::ScalableTag<float> wide;
    const hn::CappedTag<float, 4> narrow;
    std::size_t i = begin;
    for (; i + hn::Lanes(wide) <= end; i += hn::Lanes(wide)) body(wide, i);
    for (; i < end; i += hn::Lanes(narrow)) body(narrow, i);
}

template <class D>
struct Complex {
    hn::Vec<D> re, im;
};

template <class D>
HWY_INLINE Complex<D> add(D, const Complex<D>& a, const Complex<D>& b) {
    return {hn::Add(a.re, b.re), hn::Add(a.im, b.im)};
}

template <class D>
HWY_INLINE Complex<D> subtract(D, const Complex<D>& a, const Complex<D>& b) {
    return {hn::Sub(a.re, b.re), hn::Sub(a.im, b.im)};
}

template <class D>
HWY_INLINE Complex<D> multiply(D, const Complex<D>& a, const Complex<D>& w) {
    return {hn::NegMulAdd(a.im, w.im, hn::Mul(a.re, w.re)), hn::MulAdd(a.re, w.im, hn::Mul(a.im, w.re))};
}

/// a - i b and a + i b
template <class D>
HWY_INLINE Complex<D> subtractTurned(D, const Complex<D>& a, const Complex<D>& b) {
    return {hn::Add(a.re, b.im), hn::Sub(a.im, b.re)};
}
template <class D>
HWY_INLINE Complex<D> addTurned(D, const Complex<D>& a, const Complex<D>& b) {
    return {hn::Sub(a.re, b.im), hn::Add(a.im, b.re)};
}

template <class D>
HWY_INLINE Complex<D> load(D d, const float* split, std::size_t half, std::size_t i) {
    return {hn::LoadU(d, split + i), hn::LoadU(d, split + half + i)};
}

template <class D>
HWY_INLINE void store(D d, const Complex<D>& a, float* split, std::size_t half, std::size_t i) {
    hn::StoreU(a.re, d, split + i);
    hn::StoreU(a.im, d, split + half + i);
}

template <class D>
struct Four {
    Complex<D> y0, y1, y2, y3;
};

/// The transform of four points.
template <class D>
HWY_INLINE Four<D> butterfly(D d, const Complex<D>& x0, const Complex<D>& x1, const Complex<D>& x2,
                             const Complex<D>& x3) {
    const auto evenSum = add(d, x0, x2), evenDifference = subtract(d, x0, x2);
    const auto oddSum = add(d, x1, x3), oddDifference = subtract(d, x1, x3);
    return {add(d, evenSum, oddSum), subtractTurned(d, evenDifference, oddDifference),
            subtract(d, evenSum, oddSum), addTurned(d, evenDifference, oddDifference)};
}

/// At stride 1 the four results of a unit lie side by side, and each unit has twiddles of its own.
template <typename Load>
HWY_INLINE void firstPass(Load&& loadQuarter, float* out, const float* twiddles, std::size_t half,
                          std::size_t begin, std::size_t end) {
    const std::size_t units = half / 4;
    unitLoop(begin, end, [&](auto d, std::size_t i) {
        using D = decltype(d);
        const auto w = [&](std::size_t power) -> Complex<D> {
            return {hn::LoadU(d, twiddles + (2 * power - 2) * units + i),
                    hn::LoadU(d, twiddles + (2 * power - 1) * units + i)};
        };
        const auto y = butterfly(d, loadQuarter(d, 0, i), loadQuarter(d, 1, i), loadQuarter(d, 2, i),
                                 loadQuarter(d, 3, i));
        const auto y1 = multiply(d, y.y1, w(1));
        const auto y2 = multiply(d, y.y2, w(2));
        const auto y3 = multiply(d, y.y3, w(3));
        hn::StoreInterleaved4(y.y0.re, y1.re, y2.re, y3.re, d, out + 4 * i);
        hn::StoreInterleaved4(y.y0.im, y1.im, y2.im, y3.im, d, out + half + 4 * i);
    });
}

void fftFirstReal(const float* lower, const float* upper, float* out, const float* twiddles, std::size_t half,
                  std::size_t begin, std::size_t end) {
    const float* quarters[4] = {lower, lower + half / 2, upper, upper + half / 2};
    firstPass(
        [&](auto d, std::size_t quarter, std::size_t i) {
            Complex<decltype(d)> z;
            hn::LoadInterleaved2(d, quarters[quarter] + 2 * i, z.re, z.im);
            return z;
        },
        out, twiddles, half, begin, end);
}

void fftFirst(const float* in, float* out, const float* twiddles, std::size_t half, std::size_t begin,
              std::size_t end) {
    firstPass([&](auto d, std::size_t quarter,
                  std::size_t i) { return load(d, in, half, quarter * (half / 4) + i); },
              out, twiddles, half, begin, end);
}

template <class D>
HWY_INLINE void middlePass(D d, const float* in, float* out, const float* twiddles, std::size_t half,
                           std::size_t stride, std::size_t begin, std::size_t end) {
    const std::size_t units = half / 4;
    for (std::size_t i = begin; i < end;) {
        const std::size_t block = i / stride;
        const std::size_t blockEnd = HWY_MIN(end, (block + 1) * stride);
        const float* w = twiddles + 6 * block;
        const Complex<D> w1{hn::Set(d, w[0]), hn::Set(d, w[1])};
        const Complex<D> w2{hn::Set(d, w[2]), hn::Set(d, w[3])};
        const Complex<D> w3{hn::Set(d, w[4]), hn::Set(d, w[5])};
        float* target = out + 3 * block * stride;  // 4 results a unit: the unit itself adds the fourth part
        for (; i < blockEnd; i += hn::Lanes(d)) {
            const auto y = butterfly(d, load(d, in, half, i), load(d, in, half, units + i),
                                     load(d, in, half, 2 * units + i), load(d, in, half, 3 * units + i));
            store(d, y.y0, target, half, i);
            store(d, multiply(d, y.y1, w1), target, half, i + stride);
            store(d, multiply(d, y.y2, w2), target, half, i + 2 * stride);
            store(d, multiply(d, y.y3, w3), target, half, i + 3 * stride);
        }
    }
}

void fftMiddle(const float* in, float* out, const float* twiddles, std::size_t half, std::size_t stride,
               std::size_t begin, std::size_t end) {
    // NOLINTNEXTLINE(bugprone-branch-clone): the two tags are the same type where vectors hold four.
    if (stride < 16) {
        middlePass(hn::CappedTag<float, 4>(), in, out, twiddles, half, stride, begin, end);
    } else {
        middlePass(hn::CappedTag<float, 16>(), in, out, twiddles, half, stride, begin, end);
    }
}

template <typename Store>
HWY_INLINE void lastPass4(const float* in, Store&& storeAt, std::size_t half, std::size_t begin,
                          std::size_t end) {
    const std::size_t units = half / 4;
    unitLoop(begin, end, [&](auto d, std::size_t i) {
        const auto y = butterfly(d, load(d, in, half, i), load(d, in, half, units + i),
                                 load(d, in, half, 2 * units + i), load(d, in, half, 3 * units + i));
        storeAt(d, y.y0, i);
        storeAt(d, y.y1, units + i);
        storeAt(d, y.y2, 2 * units + i);
        storeAt(d, y.y3, 3 * units + i);
    });
}

template <typename Store>
HWY_INLINE void lastPass8(const float* in, Store&& storeAt, std::size_t half, std::size_t begin,
                          std::size_t end) {
    const std::size_t units = half / 8;
    unitLoop(begin, end, [&](auto d, std::size_t i) {
        using D = decltype(d);
        const auto at = [&](std::size_t part) { return load(d, in, half, part * units + i); };
        const auto even = butterfly(d, at(0), at(2), at(4), at(6));
        const auto odd = butterfly(d, at(1), at(3), at(5), at(7));
        // The odd half turns by multiples of an eighth: (1 - i) / sqrt 2, -i, (-1 - i) / sqrt 2.
        const auto r = hn::Set(d, 0.70710678118654752f);
        const Complex<D> o1{hn::Mul(r, hn::Add(odd.y1.re, odd.y1.im)),
                            hn::Mul(r, hn::Sub(odd.y1.im, odd.y1.re))};
        const Complex<D> o3{hn::Mul(r, hn::Sub(odd.y3.im, odd.y3.re)),
                            hn::Neg(hn::Mul(r, hn::Add(odd.y3.re, odd.y3.im)))};
        storeAt(d, add(d, even.y0, odd.y0), i);
        storeAt(d, add(d, even.y1, o1), units + i);
        storeAt(d, subtractTurned(d, even.y2, odd.y2), 2 * units + i);
        storeAt(d, add(d, even.y3, o3), 3 * units + i);
        storeAt(d, subtract(d, even.y0, odd.y0), 4 * units + i);
        storeAt(d, subtract(d, even.y1, o1), 5 * units + i);
        storeAt(d, addTurned(d, even.y2, odd.y2), 6 * units + i);
        storeAt(d, subtract(d, even.y3, o3), 7 * units + i);
    });
}

void fftLast4(const float* in, float* out, std::size_t half, std::size_t begin, std::size_t end) {
    lastPass4(
        in, [&](auto d, const auto& y, std::size_t i) { store(d, y, out, half, i); }, half, begin, end);
}

void fftLast8(const float* in, float* out, std::size_t half, std::size_t begin, std::size_t end) {
    lastPass8(
        in, [&](auto d, const auto& y, std::size_t i) { store(d, y, out, half, i); }, half, begin, end);
}

void fftLast4Real(const float* in, float* out, std::size_t half, std::size_t begin, std::size_t end) {
    lastPass4(
        in, [&](auto d, const auto& y, std::size_t i) { hn::StoreInterleaved2(y.im, y.re, d, out + 2 * i); },
        half, begin, end);
}

void fftLast8Real(const float* in, float* out, std::size_t half, std::size_t begin, std::size_t end) {
    lastPass8(
        in, [&](auto d, const auto& y, std::size_t i) { hn::StoreInterleaved2(y.im, y.re, d, out + 2 * i); },
        half, begin, end);
}

/// Bins k up from `k`, and their mirrors half - k in the same lanes.
template <class D>
HWY_INLINE Complex<D> loadMirrored(D d, const float* split, std::size_t half, std::size_t k) {
    const std::size_t first = half + 1 - k - hn::Lanes(d);
    return {hn::Reverse(d, hn::LoadU(d, split + first)), hn::Reverse(d, hn::LoadU(d, split + half + first))};
}

template <class D>
HWY_INLINE void storeMirrored(D d, const Complex<D>& a, float* split, std::size_t half, std::size_t k) {
    const std::size_t first = half + 1 - k - hn::Lanes(d);
    hn::StoreU(hn::Reverse(d, a.re), d, split + first);
    hn::StoreU(hn::Reverse(d, a.im), d, split + half + first);
}

void fftUnzip(const float* in, float* spectrum, const float* twiddles, std::size_t half, std::size_t begin,
              std::size_t end) {
    if (begin == 0) {
        spectrum[0] = in[0] + in[half];
        spectrum[half] = in[0] - in[half];
        spectrum[half / 2] = in[half / 2];
        spectrum[half + half / 2] = -in[half + half / 2];
        begin = 1;
    }
    vectorLoop(begin, end, [&](auto d, std::size_t k) {
        using D = decltype(d);
        const auto scale = hn::Set(d, 0.5f);
        const auto z = load(d, in, half, k), y = loadMirrored(d, in, half, k);
        // Transforms of the even samples and of the odd ones.
        const Complex<D> even{hn::Mul(scale, hn::Add(z.re, y.re)), hn::Mul(scale, hn::Sub(z.im, y.im))};
        const Complex<D> odd{hn::Mul(scale, hn::Add(z.im, y.im)), hn::Mul(scale, hn::Sub(y.re, z.re))};
        const Complex<D> w{hn::LoadU(d, twiddles + k), hn::LoadU(d, twiddles + half / 2 + k)};
        const auto turned = multiply(d, odd, w);
        store(d, add(d, even, turned), spectrum, half, k);
        storeMirrored(d, Complex<D>{hn::Sub(even.re, turned.re), hn::Sub(turned.im, even.im)}, spectrum, half,
                      k);
    });
}

void fftZip(const float* spectrum, float* out, const float* twiddles, std::size_t half, std::size_t begin,
            std::size_t end) {
    if (begin == 0) {
        out[0] = spectrum[0] - spectrum[half];
        out[half] = spectrum[0] + spectrum[half];
        out[half / 2] = -2.0f * spectrum[half + half / 2];
        out[half + half / 2] = 2.0f * spectrum[half / 2];
        begin = 1;
    }
    vectorLoop(begin, end, [&](auto d, std::size_t k) {
        using D = decltype(d);
        const auto x = load(d, spectrum, half, k), y = loadMirrored(d, spectrum, half, k);
        const Complex<D> even{hn::Add(x.re, y.re), hn::Sub(x.im, y.im)};
        const Complex<D> difference{hn::Sub(x.re, y.re), hn::Add(x.im, y.im)};
        const Complex<D> back{hn::LoadU(d, twiddles + k), hn::Neg(hn::LoadU(d, twiddles + half / 2 + k))};
        const auto odd = multiply(d, difference, back);
        store(d, Complex<D>{hn::Add(even.im, odd.re), hn::Sub(even.re, odd.im)}, out, half, k);
        storeMirrored(d, Complex<D>{hn::Sub(odd.re, even.im), hn::Add(even.re, odd.im)}, out, half, k);
    });
}

}  // namespace HWY_NAMESPACE
}  // namespace vanta::kernel
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace vanta::kernel {

VANTA_KERNEL(fftFirstReal);
VANTA_KERNEL(fftFirst);
VANTA_KERNEL(fftMiddle);
VANTA_KERNEL(fftLast4);
VANTA_KERNEL(fftLast8);
VANTA_KERNEL(fftLast4Real);
VANTA_KERNEL(fftLast8Real);
VANTA_KERNEL(fftUnzip);
VANTA_KERNEL(fftZip);

}  // namespace vanta::kernel
#endif
