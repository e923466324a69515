// Logarithm and exponential on vectors. Included once per instruction set, after hwy/highway.h, hence the
// guard that toggles with the target.
#if defined(VANTA_VECTOR_MATH_HPP) == defined(HWY_TARGET_TOGGLE)
#ifdef VANTA_VECTOR_MATH_HPP
#undef VANTA_VECTOR_MATH_HPP
#else
#define VANTA_VECTOR_MATH_HPP
#endif

HWY_BEFORE_NAMESPACE();
namespace vanta::kernel {
namespace HWY_NAMESPACE {

/// The argument of vectorExp is limited to this magnitude, so that its result is never infinite.
inline constexpr float kLargestExponent = 88.3762589f;

/// Natural logarithm within 2 units in the last place (Cephes, logf). What is below the smallest normal
/// number, 0 and negative numbers too, counts as that number: no result is infinite.
template <class D, class V>
HWY_INLINE V vectorLog(D d, V x) {
    namespace hn = hwy::HWY_NAMESPACE;
    const hn::RebindToSigned<D> di;
    x = hn::Max(x, hn::Set(d, 1.17549435e-38f));
    const auto bits = hn::BitCast(di, x);
    // x = m * 2^e with m in [sqrt(1/2), sqrt(2)), so that small logarithms keep their relative accuracy:
    // whole octaves are counted from the bits of sqrt(1/2).
    const auto octave = hn::ShiftRight<23>(hn::Sub(bits, hn::Set(di, 0x3F3504F3)));
    const auto e = hn::ConvertTo(d, octave);
    const auto reduced = hn::BitCast(d, hn::Sub(bits, hn::ShiftLeft<23>(octave)));
    const auto m = hn::Sub(reduced, hn::Set(d, 1.0f));

    // Terms in pairs: in a chain of multiplications every one would wait for the one before.
    const auto square = hn::Mul(m, m);
    const auto fourth = hn::Mul(square, square);
    const auto p01 = hn::MulAdd(m, hn::Set(d, -2.4999993993e-1f), hn::Set(d, 3.3333331174e-1f));
    const auto p23 = hn::MulAdd(m, hn::Set(d, -1.6668057665e-1f), hn::Set(d, 2.0000714765e-1f));
    const auto p45 = hn::MulAdd(m, hn::Set(d, -1.2420140846e-1f), hn::Set(d, 1.4249322787e-1f));
    const auto p67 = hn::MulAdd(m, hn::Set(d, -1.1514610310e-1f), hn::Set(d, 1.1676998740e-1f));
    const auto p47 = hn::MulAdd(square, p67, p45);
    const auto p48 = hn::MulAdd(fourth, hn::Set(d, 7.0376836292e-2f), p47);
    const auto p = hn::MulAdd(fourth, p48, hn::MulAdd(square, p23, p01));
    // ln(2) in two parts, the first exact in few bits.
    auto y = hn::Mul(p, hn::Mul(m, square));
    y = hn::MulAdd(e, hn::Set(d, -2.12194440e-4f), y);
    y = hn::NegMulAdd(square, hn::Set(d, 0.5f), y);
    return hn::MulAdd(e, hn::Set(d, 0.693359375f), hn::Add(m, y));
}

/// Exponential within 2 units in the last place (Cephes, expf), of x limited to kLargestExponent on both
/// sides. No result is infinite; at the lower end it is 0.
template <class D, class V>
HWY_INLINE V vectorExp(D d, V x) {
    namespace hn = hwy::HWY_NAMESPACE;
    const hn::RebindToSigned<D> di;
    x = hn::Min(hn::Max(x, hn::Set(d, -kLargestExponent)), hn::Set(d, kLargestExponent));
    // The power of two stays within what the exponent bits can say, for the limits stand half way between
    // two.
    const auto power = hn::Mul(x, hn::Set(d, 1.44269504088896341f));
    const auto n = hn::NearestInt(hn::Min(hn::Max(power, hn::Set(d, -127.0f)), hn::Set(d, 127.0f)));
    const auto whole = hn::ConvertTo(d, n);
    auto r = hn::NegMulAdd(whole, hn::Set(d, 0.693359375f), x);
    r = hn::NegMulAdd(whole, hn::Set(d, -2.12194440e-4f), r);

    const auto square = hn::Mul(r, r);
    const auto p01 = hn::MulAdd(r, hn::Set(d, 1.6666665459e-1f), hn::Set(d, 5.0000001201e-1f));
    const auto p23 = hn::MulAdd(r, hn::Set(d, 8.3334519073e-3f), hn::Set(d, 4.1665795894e-2f));
    const auto p45 = hn::MulAdd(r, hn::Set(d, 1.9875691500e-4f), hn::Set(d, 1.3981999507e-3f));
    const auto p = hn::MulAdd(square, hn::MulAdd(square, p45, p23), p01);
    const auto y = hn::MulAdd(p, square, hn::Add(r, hn::Set(d, 1.0f)));
    return hn::Mul(y, hn::BitCast(d, hn::ShiftLeft<23>(hn::Add(n, hn::Set(di, 127)))));
}

/// 1 - exp(-y) for y of 0 to 88, within 3 units in the last place also where exp(-y) is next to 1: the power
/// of two is split off as in vectorExp, and the series of the rest, to r^7, leaves out the 1.
template <class D, class V>
HWY_INLINE V vectorExpComplement(D d, V y) {
    namespace hn = hwy::HWY_NAMESPACE;
    const hn::RebindToSigned<D> di;
    const auto n = hn::NearestInt(hn::Mul(y, hn::Set(d, 1.44269504088896341f)));
    const auto whole = hn::ConvertTo(d, n);
    auto r = hn::NegMulAdd(whole, hn::Set(d, 0.693359375f), y);
    r = hn::NegMulAdd(whole, hn::Set(d, -2.12194440e-4f), r);

    const auto square = hn::Mul(r, r);
    const auto p01 = hn::NegMulAdd(r, hn::Set(d, 1.0f / 2), hn::Set(d, 1.0f));
    const auto p23 = hn::NegMulAdd(r, hn::Set(d, 1.0f / 24), hn::Set(d, 1.0f / 6));
    const auto p45 = hn::NegMulAdd(r, hn::Set(d, 1.0f / 720), hn::Set(d, 1.0f / 120));
    const auto p26 = hn::MulAdd(square, hn::MulAdd(square, hn::Set(d, 1.0f / 5040), p45), p23);
    const auto p = hn::Mul(r, hn::MulAdd(square, p26, p01));
    const auto power = hn::BitCast(d, hn::ShiftLeft<23>(hn::Sub(hn::Set(di, 127), n)));
    return hn::MulAdd(power, p, hn::Sub(hn::Set(d, 1.0f), power));
}

}  // namespace HWY_NAMESPACE
}  // namespace vanta::kernel
HWY_AFTER_NAMESPACE();

#endif
