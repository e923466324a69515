#pragma once

#include <vector>

/// Design of the recursive half-band filters that change a sample rate by two: the sum of two branches of
/// first-order all-passes at the lower rate, of which one is heard a sample of the higher rate later. R. A.
/// Valenzuela and A. G. Constantinides, "Digital signal processing schemes for efficient interpolation and
/// decimation", 1983.
namespace vanta::sr {

/// The coefficients of the elliptic filter of `order`, an odd number of at least 3: (order - 1) / 2 numbers
/// between 0 and 1, ascending, which the branches take in turn. It passes up to `passbandEdge`, in radians
/// per sample of the higher rate and below pi / 2, and stops what lies as far above pi / 2.
std::vector<float> designEllipticHalfBand(int order, double passbandEdge);

}  // namespace vanta::sr
