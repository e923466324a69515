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

/// The argument of Exp is limited to this magnitude, so that its result is never infinite.
inline constexpr float kLargestExponent = 88.3762589f;

/// Natural logarithm within 2 units in the last place (Cephes, logf). What is below the smallest normal
/// number, 0 and negative numbers too, counts as that number: no result is infinite.
template <class D, class V>
HWY_INLINE V Log(D d, V x) {
    namespace hn = hwy::HWY_NAMESPACE;
    const hn::RebindToSigned<D> di;
    x = hn::Max(x, hn::Set(d, 1.17549435e-38f));
    const auto bits = hn::BitCast(di, x);
    // x = m * 2^e with m in [0.5, 1), then moved to [sqrt(1/2), sqrt(2)) so that small logarithms keep their
    // relative accuracy.
    const auto exponent = hn::Sub(hn::ShiftRight<23>(bits), hn::Set(di, 126));
    const auto mantissa =
        hn::BitCast(d, hn::Or(hn::And(bits, hn::Set(di, 0x007FFFFF)), hn::Set(di, 0x3F000000)));
    const auto low = hn::Lt(mantissa, hn::Set(d, 0.707106781186547524f));
    const auto one = hn::Set(d, 1.0f);
    const auto e = hn::Sub(hn::ConvertTo(d, exponent), hn::IfThenElseZero(low, one));
    const auto m = hn::Add(hn::Sub(mantissa, one), hn::IfThenElseZero(low, mantissa));

    auto p = hn::Set(d, 7.0376836292e-2f);
    p = hn::MulAdd(p, m, hn::Set(d, -1.1514610310e-1f));
    p = hn::MulAdd(p, m, hn::Set(d, 1.1676998740e-1f));
    p = hn::MulAdd(p, m, hn::Set(d, -1.2420140846e-1f));
    p = hn::MulAdd(p, m, hn::Set(d, 1.4249322787e-1f));
    p = hn::MulAdd(p, m, hn::Set(d, -1.6668057665e-1f));
    p = hn::MulAdd(p, m, hn::Set(d, 2.0000714765e-1f));
    p = hn::MulAdd(p, m, hn::Set(d, -2.4999993993e-1f));
    p = hn::MulAdd(p, m, hn::Set(d, 3.3333331174e-1f));
    const auto square = hn::Mul(m, m);
    // ln(2) in two parts, the first exact in few bits.
    auto y = hn::Mul(hn::Mul(p, m), square);
    y = hn::MulAdd(e, hn::Set(d, -2.12194440e-4f), y);
    y = hn::NegMulAdd(square, hn::Set(d, 0.5f), y);
    return hn::MulAdd(e, hn::Set(d, 0.693359375f), hn::Add(m, y));
}

/// Exponential within 2 units in the last place (Cephes, expf), of x limited to kLargestExponent on both
/// sides. No result is infinite; at the lower end it is 0.
template <class D, class V>
HWY_INLINE V Exp(D d, V x) {
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

    auto p = hn::Set(d, 1.9875691500e-4f);
    p = hn::MulAdd(p, r, hn::Set(d, 1.3981999507e-3f));
    p = hn::MulAdd(p, r, hn::Set(d, 8.3334519073e-3f));
    p = hn::MulAdd(p, r, hn::Set(d, 4.1665795894e-2f));
    p = hn::MulAdd(p, r, hn::Set(d, 1.6666665459e-1f));
    p = hn::MulAdd(p, r, hn::Set(d, 5.0000001201e-1f));
    const auto y = hn::MulAdd(p, hn::Mul(r, r), hn::Add(r, hn::Set(d, 1.0f)));
    return hn::Mul(y, hn::BitCast(d, hn::ShiftLeft<23>(hn::Add(n, hn::Set(di, 127)))));
}

}  // namespace HWY_NAMESPACE
}  // namespace vanta::kernel
HWY_AFTER_NAMESPACE();

#endif
