#include <array>
#include <utility>

#include "foundation/numbers.hpp"
#include "tools/song/instrument.hpp"

namespace vanta::song {
namespace {

using Frame = std::pair<double, double>;

/// How long a sound that falls by e each `decay` is played: until -78 dB.
constexpr double kDecays = 9;

/// e^(-time/decay), brought to 0 at kDecays.
double fall(double time, double decay) {
    const double x = time / decay;
    return std::exp(-x) * (1 - x * x / (kDecays * kDecays));
}

/// A sine that dives from the beater's pitch to the drum's own, and the beater's click.
class Kick final : public NoteInstrument {
public:
    Kick(double decaySeconds, std::uint64_t seed) : NoteInstrument(seed), decay_(decaySeconds) {}

private:
    void playNote(const Note& note, Stereo& out) override {
        const double level = gainFromDb(note.strengthDb);
        Sine body;
        Filter click(4200, 0.8);
        add(note, kDecays * decay_, out, [&](double time) -> Frame {
            const double hertz = 49 + 70 * std::exp(-time / 0.028) + 160 * std::exp(-time / 0.006);
            const double shell = body.next(hertz) * fall(time, decay_) * fadeIn(time, 0.0006);
            const double snap = click.next(random.bipolar()).band * std::exp(-time / 0.0025);
            // The soft clip gives the harmonics that carry a low drum on small loudspeakers.
            const double sum = level * (std::tanh(1.7 * shell) / std::tanh(1.7) + 0.55 * snap);
            return {sum, sum};
        });
    }

    double decay_;
};

/// Two modes of the drum head and the rattle of the wires, wider than the head.
class Snare final : public NoteInstrument {
public:
    Snare(double decaySeconds, std::uint64_t seed) : NoteInstrument(seed), decay_(decaySeconds) {}

private:
    void playNote(const Note& note, Stereo& out) override {
        const double level = gainFromDb(note.strengthDb);
        // A harder stroke is brighter, not only louder.
        const double bright = 3500 + 6500 * level;
        Sine low, high(0.25);
        std::array<Filter, 2> body{Filter(900, 0.7), Filter(900, 0.7)};
        std::array<Filter, 2> top{Filter(bright, 0.7), Filter(bright, 0.7)};
        add(note, kDecays * decay_, out, [&](double time) -> Frame {
            const double bend = 1 + 0.35 * std::exp(-time / 0.008);
            const double head = 0.75 * low.next(186 * bend) * fall(time, 0.45 * decay_) +
                                0.4 * high.next(331 * bend) * fall(time, 0.28 * decay_);
            const double wires = 0.8 * fall(time, decay_) + 0.7 * std::exp(-time / 0.006);
            const double common = random.bipolar();
            const auto side = [&](std::size_t i) {
                const double noise = 0.7 * common + 0.5 * random.bipolar();
                return level *
                       (head * fadeIn(time, 0.0005) + wires * top[i].next(body[i].next(noise).high).low);
            };
            const double left = side(0);
            return {left, side(1)};
        });
    }

    double decay_;
};

/// Noise and a cluster of inharmonic partials, as struck bronze has them.
class Cymbal final : public NoteInstrument {
public:
    struct Character {
        double lowCutHz, highCutHz;
        double metal;   ///< share of the partials
        double spread;  ///< 0: both sides alike, 1: unrelated
        double strike;  ///< extra loudness of the first milliseconds
    };

    Cymbal(const Character& sound, double decaySeconds, std::uint64_t seed)
        : NoteInstrument(seed), character_(sound), decay_(decaySeconds) {}

private:
    static constexpr std::array<double, 8> kPartials{3147, 4211, 5373, 6089, 7417, 8731, 10163, 11887};

    void playNote(const Note& note, Stereo& out) override {
        const double level = gainFromDb(note.strengthDb);
        const double apart = 0.004 * character_.spread;
        auto left = partials(1 - apart);
        auto right = partials(1 + apart);
        std::array<Filter, 2> low{Filter(character_.lowCutHz, 0.8), Filter(character_.lowCutHz, 0.8)};
        std::array<Filter, 2> high{Filter(character_.highCutHz, 0.7), Filter(character_.highCutHz, 0.7)};
        const auto side = [&](std::vector<Partial>& ringing, std::size_t i, double common) {
            double metal = 0;
            for (auto& partial : ringing) metal += partial.next();
            const double noise =
                std::sqrt(1 - character_.spread) * common + std::sqrt(character_.spread) * random.bipolar();
            const double mixed = (1 - character_.metal) * noise + character_.metal * 0.3 * metal;
            return high[i].next(low[i].next(mixed).high).low;
        };
        add(note, kDecays * decay_, out, [&](double time) -> Frame {
            const double strength = level * fadeIn(time, 0.0004) *
                                    (fall(time, decay_) + character_.strike * std::exp(-time / 0.004));
            const double common = random.bipolar();
            const double first = side(left, 0, common);
            return {strength * first, strength * side(right, 1, common)};
        });
    }

    std::vector<Partial> partials(double detune) {
        std::vector<Partial> result;
        for (const double hertz : kPartials) result.emplace_back(hertz * detune, random.unit());
        return result;
    }

    Character character_;
    double decay_;
};

constexpr Cymbal::Character kHat{7200, 17000, 0.35, 0.15, 0.6};
constexpr Cymbal::Character kCrash{3300, 15500, 0.3, 0.85, 0.9};

}  // namespace

std::unique_ptr<Instrument> makeDrum(InstrumentKind kind, double decaySeconds, std::uint64_t seed) {
    const auto decay = [&](double own) { return decaySeconds > 0 ? decaySeconds : own; };
    if (kind == InstrumentKind::kick) return std::make_unique<Kick>(decay(0.13), seed);
    if (kind == InstrumentKind::snare) return std::make_unique<Snare>(decay(0.085), seed);
    if (kind == InstrumentKind::hat) return std::make_unique<Cymbal>(kHat, decay(0.028), seed);
    return std::make_unique<Cymbal>(kCrash, decay(0.55), seed);
}

}  // namespace vanta::song
