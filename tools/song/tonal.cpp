#include <array>
#include <utility>

#include "foundation/numbers.hpp"
#include "tools/song/instrument.hpp"

namespace vanta::song {
namespace {

using Frame = std::pair<double, double>;

/// Cutoffs follow their envelopes at this distance; tan() for each sample would buy nothing audible.
constexpr int kTuneEvery = 16;

/// A filtered sawtooth over a sine at the fundamental, which is the sub bass.
class Bass final : public NoteInstrument {
public:
    Bass(double decaySeconds, std::uint64_t seed) : NoteInstrument(seed) {
        if (decaySeconds > 0) envelope_.decay = decaySeconds;
    }

private:
    void playNote(const Note& note, Stereo& out) override {
        const double level = gainFromDb(note.strengthDb);
        const double hertz = hertzOf(note.pitch);
        Saw saw(0.5), second(0.5);
        Sine sub;
        Filter filter(200, 0.9), slope(200, 0.7);
        int untilTune = 0;
        add(note, envelope_.end(note.lengthSeconds), out, [&](double time) -> Frame {
            if (untilTune-- == 0) {
                const double open = std::exp(-time / 0.14);
                const double cutoff = 180 + 260 * level + level * 1500 * open;
                filter.tune(cutoff, 0.9 + 0.5 * level);
                slope.tune(1.4 * cutoff, 0.7);
                untilTune = kTuneEvery - 1;
            }
            const double strings = 0.5 * (saw.next(hertz) + second.next(hertz * 1.0023));
            const double growl = slope.next(filter.next(strings).low).low;
            const double sum = std::tanh(level * (0.62 * growl + 0.52 * sub.next(hertz)) * 1.3) / 1.1;
            const double shaped = sum * envelope_.at(time, note.lengthSeconds);
            return {shaped, shaped};
        });
    }

    Envelope envelope_{0.006, 0.5, 0.72, 0.013};
};

/// Tine piano: frequency modulation with an index that falls (Chowning 1973), slowly panned.
class Keys final : public NoteInstrument {
public:
    Keys(double decaySeconds, std::uint64_t seed) : NoteInstrument(seed) {
        if (decaySeconds > 0) envelope_.decay = decaySeconds;
    }

private:
    void playNote(const Note& note, Stereo& out) override {
        const double level = gainFromDb(note.strengthDb);
        const double hertz = hertzOf(note.pitch);
        // High notes would otherwise ring as long and as bright as low ones.
        const double height = std::exp2((60 - note.pitch) / 24);
        const double index = (0.4 + 1.3 * level) * std::fmin(height, 1.4);
        Sine modulator, carrier, tine, tineCarrier;
        add(note, envelope_.end(note.lengthSeconds), out, [&](double time) -> Frame {
            const double body = carrier.next(hertz, index * std::exp(-time / 0.35) * modulator.next(hertz));
            const double ringing = 0.9 * level * std::exp(-time / 0.045);
            const double bell = tineCarrier.next(hertz, ringing * tine.next(11 * hertz));
            const double sum = level * (0.6 * body + 0.35 * bell) * envelope_.at(time, note.lengthSeconds);
            // The pan counts from the song's start, so that all notes move together.
            const double pan = 0.55 * std::sin(kTwoPi * 0.8 * (note.startSeconds + time));
            return {sum * std::sqrt(1 - pan), sum * std::sqrt(1 + pan)};
        });
    }

    Envelope envelope_{0.0025, 0.7, 0.15, 0.05};
};

/// Six detuned sawtooths a note, three a side, through a filter that breathes: the wide part of the mix.
class Pad final : public NoteInstrument {
public:
    using NoteInstrument::NoteInstrument;

private:
    static constexpr std::array<double, 6> kCents{-11, 4.5, 8, -7, -3, 12};

    void playNote(const Note& note, Stereo& out) override {
        const double level = gainFromDb(note.strengthDb);
        std::array<Saw, 6> saws{drift(), drift(), drift(), drift(), drift(), drift()};
        std::array<double, 6> hertz{};
        for (std::size_t i = 0; i < hertz.size(); ++i) hertz[i] = hertzOf(note.pitch + 0.01 * kCents[i]);
        std::array<Filter, 2> filters{Filter(500, 0.8), Filter(500, 0.8)};
        const double breath = random.unit();
        int untilTune = 0;
        add(note, envelope_.end(note.lengthSeconds), out, [&](double time) -> Frame {
            if (untilTune-- == 0) {
                const double swell = 1 + 0.25 * std::sin(kTwoPi * (0.31 * time + breath));
                const double cutoff = (600 + 7500 * level) * swell * (0.55 + 0.45 * fadeIn(time, 0.7));
                for (auto& filter : filters) filter.tune(cutoff, 0.8);
                untilTune = kTuneEvery - 1;
            }
            const double strength = 0.3 * level * envelope_.at(time, note.lengthSeconds);
            const auto side = [&](std::size_t i) {
                double sum = 0;
                for (std::size_t k = 3 * i; k < 3 * i + 3; ++k) sum += saws[k].next(hertz[k]);
                return strength * filters[i].next(sum).low;
            };
            const double left = side(0);
            return {left, side(1)};
        });
    }
    Saw drift() { return Saw(random.unit()); }

    Envelope envelope_{0.16, 1.0, 0.85, 0.09};
};

}  // namespace

std::unique_ptr<Instrument> makeBass(double decaySeconds, std::uint64_t seed) {
    return std::make_unique<Bass>(decaySeconds, seed);
}
std::unique_ptr<Instrument> makeKeys(double decaySeconds, std::uint64_t seed) {
    return std::make_unique<Keys>(decaySeconds, seed);
}
std::unique_ptr<Instrument> makePad(std::uint64_t seed) {
    return std::make_unique<Pad>(seed);
}

}  // namespace vanta::song
