#pragma once

#include <array>
#include <cmath>
#include <limits>
#include <type_traits>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/instruction_sets.hpp"
#include "tests/support/signals.hpp"

/// Compares kernels with scalar twins in double precision: on every instruction set, at awkward lengths and
/// alignments, and with nothing written beside the block.
namespace vanta::test {

constexpr double kEpsilon = std::numeric_limits<float>::epsilon();
constexpr std::size_t kLengths[] = {0, 1, 2, 3, 4, 5, 7, 8, 15, 16, 17, 33, 64, 131};
constexpr float kCanary = -12345.0f;

/// Values between two ends.
inline Signal uniform(float low, float high, unsigned seed) {
    Signal values = whiteNoise(seed, 400);
    for (float& x : values) x = low + (high - low) * (0.5f + 0.5f * x);
    return values;
}

/// Amplitudes from -200 dB to +40 dB of either sign, with the corners of the range among them.
inline Signal amplitudes() {
    Signal values = uniform(-10.0f, 2.0f, 1);
    const Signal signs = whiteNoise(2, values.size());
    for (std::size_t i = 0; i < values.size(); ++i) {
        values[i] = std::copysign(std::pow(10.0f, values[i]), signs[i]);
    }
    const float corners[] = {0.0f,  -0.0f,  1.0f,   0.99999994f, 1.0000001f, 0.5f,       0.70710677f,
                             1e-9f, 1e-10f, 9e-11f, 1e-40f,      2.0f,       1048576.0f, 0.70710683f};
    for (std::size_t i = 0; i < std::size(corners); ++i) values[i * 23] = corners[i];
    return values;
}

inline double levelDb(double x) {
    return std::abs(x) <= 1e-10 ? -180.0 : std::max(20 * std::log10(std::abs(x)), -180.0);
}
inline double amplitude(double db) {
    return std::pow(10.0, db / 20);
}

inline auto absolute(double tolerance) {
    return [tolerance](double) { return tolerance; };
}
/// Some units in the last place of the result, or of `least`.
inline auto units(double count, double least = 0.0) {
    return [=](double expected) { return count * kEpsilon * std::max(std::abs(expected), least); };
}

/// `kernel` is called as (in, out, count), or with the place of `in` in its signal behind it where other
/// signals go along; `twin` with one value of the signal, and its place likewise.
template <typename Kernel, typename Twin, typename Tolerance>
void expectTwin(const Signal& in, Kernel&& kernel, Twin&& twin, Tolerance&& tolerance) {
    forEachInstructionSet([&](const char* name) {
        SCOPED_TRACE(name);
        for (const std::size_t length : kLengths) {
            for (std::size_t offset = 0; offset < 5; ++offset) {
                Signal out(length + offset + 20, kCanary);
                const std::size_t start = (offset * 37 + length) % (in.size() - 131);
                if constexpr (std::is_invocable_v<Kernel, const float*, float*, std::size_t>) {
                    kernel(in.data() + start, out.data() + offset, length);
                } else {
                    kernel(in.data() + start, start, out.data() + offset, length);
                }
                for (std::size_t i = 0; i < out.size(); ++i) {
                    if (i < offset || i >= offset + length) {
                        ASSERT_EQ(out[i], kCanary) << "written outside at length " << length;
                        continue;
                    }
                    const std::size_t at = start + i - offset;
                    double expected = 0.0;
                    if constexpr (std::is_invocable_v<Twin, double>) {
                        expected = twin(static_cast<double>(in[at]));
                    } else {
                        expected = twin(static_cast<double>(in[at]), at);
                    }
                    ASSERT_NEAR(out[i], expected, tolerance(expected))
                        << "input " << in[at] << ", sample " << i - offset << " of " << length;
                }
            }
        }
    });
}

}  // namespace vanta::test
