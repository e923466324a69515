#pragma once

#include <xmmintrin.h>

namespace vanta {

/// Flushes denormals to zero and masks every floating-point exception for a scope; the caller's control word
/// is restored afterwards.
class FlushDenormals {
public:
    FlushDenormals() : saved_(_mm_getcsr()) { _mm_setcsr(kControlWord); }
    ~FlushDenormals() { _mm_setcsr(saved_); }
    FlushDenormals(const FlushDenormals&) = delete;
    FlushDenormals& operator=(const FlushDenormals&) = delete;

private:
    /// All exceptions masked, round to nearest, flush to zero, denormals are zero: every x86-64 has them all.
    static constexpr unsigned kControlWord = 0x9FC0;
    unsigned saved_;
};

}  // namespace vanta
