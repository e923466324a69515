#pragma once

#include "kernel/kernel.hpp"

/// The passes of a power-of-two transform, each of which can be run in pieces.
///
/// A complex transform of `half` points (16 or more) is a chain of self-sorting decimation-in-frequency
/// passes (Stockham: T. G. Stockham, "High-speed convolution and correlation", 1966) over two work arrays of
/// 2 `half` floats: real parts first, imaginary parts from `half` on. A pass runs over the units `[begin,
/// end)`; pieces that cover all units give the same bits as one run. `begin` is a multiple of 16, `end` one
/// too or the last unit. Input and output of a pass must not overlap.
namespace vanta::kernel {

/// First pass of a real transform of 2 `half` samples, given in two halves of `half` samples each. Even
/// samples count as real, odd ones as imaginary parts. half / 4 units; `twiddles` holds six rows of half / 4
/// floats: w re, w im, w^2 re, w^2 im, w^3 re, w^3 im.
extern const Kernel<void(const float* lower, const float* upper, float* out, const float* twiddles,
                         std::size_t half, std::size_t begin, std::size_t end)>
    fftFirstReal;

using TwiddledPass = Kernel<void(const float* in, float* out, const float* twiddles, std::size_t half,
                                 std::size_t begin, std::size_t end)>;

/// First pass over split real and imaginary parts. half / 4 units, the same twiddles.
extern const TwiddledPass fftFirst;
/// Radix-4 pass at a stride of 4, 16, 64... half / 4 units; `twiddles` holds six floats, in the order of
/// above, for each block of `stride` units.
extern const Kernel<void(const float* in, float* out, const float* twiddles, std::size_t half,
                         std::size_t stride, std::size_t begin, std::size_t end)>
    fftMiddle;

using LastPass =
    Kernel<void(const float* in, float* out, std::size_t half, std::size_t begin, std::size_t end)>;

/// Last pass, radix 4 (half / 4 units) or 8 (half / 8 units), to split parts.
extern const LastPass fftLast4;
extern const LastPass fftLast8;
/// The same, to 2 `half` samples that alternate between imaginary and real part: what an inverse transform
/// ends on, for which both parts have changed places.
extern const LastPass fftLast4Real;
extern const LastPass fftLast8Real;

/// Turns the complex transform of even and odd samples into the spectrum of the real signal: real part of bin
/// k at k, imaginary part at half + k, for 0 < k < half; DC at 0, Nyquist at half. half / 2 units; `twiddles`
/// holds half / 2 cosines, then half / 2 negated sines, of 2 pi k / (2 half).
extern const TwiddledPass fftUnzip;
/// The way back, doubled and with real and imaginary parts exchanged.
extern const TwiddledPass fftZip;

}  // namespace vanta::kernel
