#pragma once

#include <cstdint>
#include <memory>

#include "tools/song/score.hpp"
#include "tools/song/sound.hpp"

namespace vanta::song {

/// A sound source that plays lines at kStudioRate.
class Instrument {
public:
    explicit Instrument(std::uint64_t seed) : random(seed) {}
    virtual ~Instrument() = default;
    Instrument(const Instrument&) = delete;
    Instrument& operator=(const Instrument&) = delete;

    /// Adds a line to `out`; what would sound past its end is left out.
    virtual void play(const Line& line, Stereo& out) = 0;

protected:
    Random random;
};

/// An instrument whose notes know nothing of each other.
class NoteInstrument : public Instrument {
public:
    using Instrument::Instrument;

    void play(const Line& line, Stereo& out) override {
        for (const Note& note : line.notes) playNote(note, out);
    }

protected:
    virtual void playNote(const Note& note, Stereo& out) = 0;

    /// Adds `seconds` of sound from the note's start on. `sample(time)` gives left and right as a pair,
    /// `time` in seconds after the start.
    template <typename Sample>
    static void add(const Note& note, double seconds, Stereo& out, Sample sample) {
        const std::size_t first = frameAt(note.startSeconds);
        const std::size_t end = std::min(first + frameAt(seconds), out.frames());
        for (std::size_t i = first; i < end; ++i) {
            const auto [left, right] = sample(static_cast<double>(i - first) / kStudioRate);
            out.left[i] += left;
            out.right[i] += right;
        }
    }
};

/// `decaySeconds` 0 is the instrument's own decay. Each kind peaks near 1 at fortissimo.
std::unique_ptr<Instrument> makeDrum(InstrumentKind kind, double decaySeconds, std::uint64_t seed);
std::unique_ptr<Instrument> makeBass(double decaySeconds, std::uint64_t seed);
std::unique_ptr<Instrument> makeKeys(double decaySeconds, std::uint64_t seed);
std::unique_ptr<Instrument> makePad(std::uint64_t seed);
std::unique_ptr<Instrument> makeVoice(std::uint64_t seed);

std::unique_ptr<Instrument> makeInstrument(const InstrumentSpec& spec, std::uint64_t seed);

}  // namespace vanta::song
