#pragma once

#include <cstdint>
#include <span>

namespace vanta::wave {

/// What an interface reads levels through.
class LevelSource {
public:
    /// Which way a reading counts as more.
    enum Detection : int { Minimum, Maximum };

    /// What `value` gives. A source that lacks a reading gives its rest, or -180.
    enum Info : int {
        Current,   ///< fast reading, dB or LUFS
        Highest,   ///< with hold and fall, or of the last two seconds
        Extreme,   ///< since the last `resetPeak`
        Range,     ///< loudness range, LU
        RangeLow,  ///< its low end, LUFS
        InfoCount
    };

    virtual ~LevelSource() = default;
    virtual Detection detection() const = 0;
    /// Takes over what the audio side has handed out since the last call; for one reader only.
    virtual float value(Info info) = 0;
    /// Clears what is held.
    virtual void resetPeak() = 0;
    /// Starts a long-term measurement over.
    virtual void resetMeasurement() = 0;
    /// Travels with the values to the display.
    virtual std::int32_t infoWord() const { return detection(); }
};

/// Data that a reader may look at between `lock` and `unlock`.
class LockedSource {
public:
    virtual ~LockedSource() = default;
    virtual void lock() = 0;
    virtual void unlock() = 0;
};

/// Recorded audio, in frames of one block a channel.
class AudioSource : public LockedSource {
public:
    /// Samples in a block.
    virtual int blockLength() const = 0;
    /// Null if the source holds no data.
    virtual const float* block(int frame, int channel) const = 0;
    /// Frames held since the last `unlock`.
    virtual int frameCount() const = 0;
    virtual int channelCount() const = 0;
};

class SpectrumSource : public LockedSource {
public:
    virtual std::span<const float> data() const = 0;
    /// A number that travels with the data.
    virtual std::int32_t spectrumCount() const = 0;
};

}  // namespace vanta::wave
