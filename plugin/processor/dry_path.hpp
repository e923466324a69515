#pragma once

#include <memory>
#include <vector>

#include "wave/delay.hpp"
#include "wave/float_parameter.hpp"

namespace vanta {

/// The unprocessed signal of all channels, late by the latency. Another latency moves it with a short
/// crossfade, from what it remembers.
class DryPath {
public:
    DryPath(wave::Environment& environment, int channels);

    /// Makes room for latencies of up to `largest` samples. Allocates if that changes, and forgets.
    void prepare(int largest);
    /// Forgets the signal; the latency asked for last is in force.
    VANTA_REALTIME void clear();

    /// Before each block: takes up `latency`, with a crossfade if the signal is heard and else at once. Of
    /// latencies that change during a crossfade the last one follows it.
    VANTA_REALTIME void beginBlock(int latency, bool heard, int samples);
    /// The next samples of a channel. Null counts as silence.
    VANTA_REALTIME void write(int channel, const float* input, int samples);
    VANTA_REALTIME void read(int channel, float* out, int samples);
    /// Until the crossfade ends, or 0: no block should run across that point.
    int samplesToSeam() const { return move_.samplesToTarget(); }

private:
    std::vector<std::unique_ptr<wave::Delay>> delays_;
    int latency_ = 0;
    int before_ = 0;              ///< the latency that fades out
    wave::FloatParameter move_;   ///< from `before_`, 0, to `latency_`, 1
    const float* mix_ = nullptr;  ///< of this block; null at rest
    wave::BasicBlock<float> scratch_;
};

}  // namespace vanta
