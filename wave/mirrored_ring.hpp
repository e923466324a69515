#pragma once

#include <algorithm>

#include "foundation/realtime.hpp"
#include "wave/aligned_buffer.hpp"

namespace vanta::wave {

/// The newest `size` floats of a stream, which always stand side by side in memory: what is stored above the
/// middle of the storage is stored below it as well. The lowest third is never written; it is the silence
/// before the first sample, so that forgetting costs nothing.
class MirroredRing {
public:
    explicit MirroredRing(int size) : size_(size), position_(-size), storage_(3 * (size + 1)) {}

    int size() const { return size_; }
    /// Forgets all samples.
    VANTA_REALTIME void clear() { position_ = -size_; }

    /// At most `size` samples.
    VANTA_REALTIME void write(const float* samples, int count) {
        while (count > 0) {
            const bool firstLap = position_ < 0;
            const int piece = std::min(count, firstLap ? -position_ : size_ - position_);
            std::copy_n(samples, piece, zero() + position_ + size_);
            if (!firstLap) std::copy_n(samples, piece, zero() + position_);
            advance(piece);
            samples += piece;
            count -= piece;
        }
    }

    VANTA_REALTIME void push(float sample) {
        zero()[position_ + size_] = sample;
        if (position_ >= 0) zero()[position_] = sample;
        advance(1);
    }

    /// The `count` samples that end `back` samples before the newest one, oldest first. Both together are at
    /// most `size`.
    VANTA_REALTIME const float* newest(int count, int back = 0) const {
        return storage_.data() + size_ + (position_ + size_ - back - count);
    }

private:
    float* zero() { return storage_.data() + size_; }
    void advance(int count) {
        position_ += count;
        if (position_ >= size_) position_ -= size_;
    }

    int size_;
    int position_;  ///< from -size on; 0 to size - 1 after the first lap
    AlignedBuffer<float> storage_;
};

}  // namespace vanta::wave
