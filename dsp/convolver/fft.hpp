#pragma once

#include <vector>

#include "foundation/realtime.hpp"
#include "wave/aligned_buffer.hpp"

namespace vanta {

/// A real transform of power-of-two size that can stop after any grain of its work and go on later. It holds
/// tables only and serves any number of transforms at once.
///
/// A spectrum of size N is N floats: the real part of bin k at k, its imaginary part at N / 2 + k, for
/// 0 < k < N / 2; the real DC term at 0, the real Nyquist term at N / 2. Neither direction scales: forward
/// and back multiplies by N.
class FFT {
public:
    static constexpr int kSmallest = 32;
    static constexpr int kLargest = 1 << 24;

    /// What the passes of one transform write into in turn.
    struct Work {
        explicit Work(int size) : first(size), second(size) {}
        wave::AlignedBuffer<float> first, second;
    };

    /// Throws std::invalid_argument unless `size` is a power of two from kSmallest to kLargest.
    explicit FFT(int size);

    int size() const { return size_; }
    /// The cost of a transform in either direction. Pieces that follow each other from grain 0 to `grains()`
    /// give the same bits as one piece, however they are cut.
    int grains() const { return grains_; }

    /// Transforms `size()` samples, given in two halves, which stay as they are until the last grain.
    VANTA_REALTIME void forward(const float* firstHalf, const float* secondHalf, float* spectrum, Work& work,
                                int firstGrain, int count) const;
    /// The unscaled inverse.
    VANTA_REALTIME void inverse(const float* spectrum, float* samples, Work& work, int firstGrain,
                                int count) const;

private:
    enum class Kind { First, Middle, Last4, Last8, Zip };

    struct Pass {
        Kind kind;
        int units;           ///< how many steps it has
        std::size_t stride;  ///< of the self-sorting passes
        int twiddles;        ///< where its table begins
        int cost;            ///< in grains
    };

    /// A part of a pass, from one work array to the other.
    struct Piece {
        const Pass& pass;
        const float* in;
        float* out;
        const float* twiddles;
        std::size_t begin;
        std::size_t end;
    };

    void addPass(Kind kind, int units, int stride, int cost);
    void addStepTwiddles(int points, bool byRow);
    void addZipTwiddles();
    template <typename Run>
    void runGrains(bool backward, Work& work, int firstGrain, int count, Run&& run) const;

    int size_;
    int grains_ = 0;
    std::vector<Pass> passes_;  ///< the zip, which is the last; an inverse transform begins with it
    std::vector<float> twiddles_;
};

}  // namespace vanta
