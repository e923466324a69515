#include <array>
#include <complex>

#include "foundation/numbers.hpp"
#include "tools/song/instrument.hpp"

namespace vanta::song {
namespace {

constexpr std::size_t kFormants = 5;
constexpr std::size_t kTick = 64;  // frames between two settings of the harmonics
constexpr double kTickSeconds = kTick / kStudioRate;
constexpr std::size_t kHarmonics = 64;
constexpr double kTopHertz = 11000;  // no harmonic from here on

/// Resonances of the vocal tract in hertz, a mezzo-soprano's.
using Formants = std::array<double, kFormants>;
constexpr Formants kBandwidths{90, 110, 160, 220, 300};

Formants formantsOf(Vowel vowel) {
    switch (vowel) {
        case Vowel::ah:
            return {820, 1220, 2810, 3650, 4950};
        case Vowel::eh:
            return {600, 1980, 2800, 3600, 4950};
        case Vowel::ee:
            return {330, 2600, 3250, 3700, 4950};
        case Vowel::oh:
            return {500, 900, 2700, 3500, 4950};
        case Vowel::oo:
            return {350, 760, 2650, 3500, 4950};
    }
    return {};
}

/// A singer opens the mouth until the first resonance is no lower than the note, or high notes would
/// be lost.
Formants tuned(Formants formants, double hertz) {
    formants[0] = std::fmax(formants[0], hertz);
    formants[1] = std::fmax(formants[1], 1.15 * formants[0]);
    return formants;
}

/// Response of the tract at a frequency: resonances in cascade, each 1 at 0 Hz (Fant 1960). Above the
/// highest modelled one the many that follow keep the level up; the numerator stands for them.
std::complex<double> tract(const Formants& formants, double hertz) {
    std::complex<double> response = 1 + 0.55 * (hertz / 4000) * (hertz / 4000);
    for (std::size_t i = 0; i < kFormants; ++i) {
        const double square = formants[i] * formants[i];
        response *= square / std::complex(square - hertz * hertz, hertz * kBandwidths[i]);
    }
    return response;
}

/// Strength of a harmonic as it leaves the vocal folds; a soft voice has fewer overtones.
double glottal(double harmonic, double hertz, double effort) {
    const double taper = std::fmax(0, 1 - hertz / kTopHertz);
    return taper * std::pow(harmonic, -0.8 - 0.7 * (1 - effort));
}

/// RMS of a sung vowel, by which vowels and pitches come out alike loud.
double loudness(const Formants& formants, double hertz, double effort) {
    double power = 0;
    for (int k = 1; k * hertz < kTopHertz; ++k) {
        const double amplitude = glottal(k, k * hertz, effort) * std::abs(tract(formants, k * hertz));
        power += 0.5 * amplitude * amplitude;
    }
    return std::sqrt(power);
}

/// One-pole glide, stepped once a tick.
struct Glide {
    void step(double target, double seconds) {
        value += (target - value) * (1 - std::exp(-kTickSeconds / seconds));
    }
    double value = 0;
};

/// A singing voice: harmonics of the vocal folds weighed by the vocal tract, one by one, so that vibrato
/// sweeps them through the formants as it does in a throat. Notes that touch are sung legato.
class Voice final : public Instrument {
public:
    using Instrument::Instrument;

    void play(const Line& line, Stereo& out) override {
        if (line.notes.empty()) return;
        start(line.notes.front());
        const std::size_t first = frameAt(line.notes.front().startSeconds);
        const Note& last = line.notes.back();
        const std::size_t end = std::min(frameAt(last.startSeconds + last.lengthSeconds + 0.8), out.frames());
        std::size_t index = 0;
        for (std::size_t at = first; at + kTick <= end; at += kTick) {
            const double now = static_cast<double>(at) / kStudioRate;
            while (index + 1 < line.notes.size() && now >= line.notes[index + 1].startSeconds) ++index;
            const bool legato =
                index + 1 < line.notes.size() && touches(line.notes[index], line.notes[index + 1]);
            advance(line.notes[index], now, legato);
            sing(out, at);
        }
    }

private:
    struct Harmonic {
        double cosine = 0, sine = 0;  ///< amplitudes at the end of the last tick
    };

    static bool touches(const Note& a, const Note& b) {
        return b.startSeconds - (a.startSeconds + a.lengthSeconds) < 0.02;
    }

    /// The first note begins on its own vowel and slides up to its pitch.
    void start(const Note& note) {
        pitch_.value = note.pitch - 1.5;
        const Formants target = tuned(formantsOf(note.vowel), hertzOf(note.pitch));
        for (std::size_t i = 0; i < kFormants; ++i) formants_[i].value = target[i];
        vibrato_.value = strength_.value = effort_.value = 0;
        gain_.value = 1 / loudness(target, hertzOf(note.pitch), 0.5);
        harmonics_.fill({});
    }

    void advance(const Note& note, double now, bool legato) {
        const double time = now - note.startSeconds;
        const double left = note.lengthSeconds - time;
        const double force = gainFromDb(note.strengthDb);
        const Formants target = tuned(formantsOf(note.vowel), hertzOf(note.pitch));
        Formants shape{};
        for (std::size_t i = 0; i < kFormants; ++i) {
            formants_[i].step(target[i], 0.035);
            shape[i] = formants_[i].value;
        }
        if (strength_.value < 1e-3 && time < 0.01) pitch_.value = note.pitch - 1.5;  // after a breath
        pitch_.step(note.pitch, 0.028);
        vibrato_.step(time > 0.22 ? 0.32 : 0.04, 0.18);
        drift_.step(12 * random.bipolar(), 0.25);
        effort_.step(force, 0.06);
        gain_.step(1 / loudness(target, hertzOf(note.pitch), force), 0.05);
        // A consonant's worth of closure between legato notes, a breath where the phrase ends.
        const double closing = legato && left < 0.045 ? 0.6 : 1;
        strength_.step(left > 0 ? force * closing : 0, left > 0 ? 0.03 : 0.07);

        const double sway = vibrato_.value * std::sin(kTwoPi * 5.4 * now);
        hertz_ = hertzOf(pitch_.value + sway + 0.04 * drift_.value);
        const double level = 0.34 * strength_.value * gain_.value;
        for (std::size_t k = 0; k < kHarmonics; ++k) {
            const double order = static_cast<double>(k + 1);
            if (order * hertz_ >= kTopHertz) {
                next_[k] = {};
                continue;
            }
            const auto response =
                level * glottal(order, order * hertz_, effort_.value) * tract(shape, order * hertz_);
            next_[k] = {response.real(), -response.imag()};
        }
    }

    /// One tick of sound; amplitudes go in straight lines from the last tick's to the new ones.
    void sing(Stereo& out, std::size_t first) {
        for (std::size_t i = 0; i < kTick; ++i) {
            const double mix = static_cast<double>(i + 1) / kTick;
            phase_ += hertz_ / kStudioRate;
            phase_ -= std::floor(phase_);
            // Harmonics by rotation: e^(i(k+1)x) = e^(ikx) e^(ix).
            const std::complex<double> turn = std::polar(1.0, kTwoPi * phase_);
            std::complex<double> at = turn;
            double sum = 0;
            for (std::size_t k = 0; k < kHarmonics && static_cast<double>(k) * hertz_ < kTopHertz; ++k) {
                const Harmonic& from = harmonics_[k];
                const Harmonic& to = next_[k];
                sum += (from.cosine + mix * (to.cosine - from.cosine)) * at.real() +
                       (from.sine + mix * (to.sine - from.sine)) * at.imag();
                at = {at.real() * turn.real() - at.imag() * turn.imag(),
                      at.real() * turn.imag() + at.imag() * turn.real()};
            }
            // Air rushes while the folds are open.
            const double open = 0.5 + 0.5 * turn.real();
            const double air = breathTop_.next(breath_.next(random.bipolar()).band).low;
            const double sound = sum + 0.03 * strength_.value * open * air;
            out.left[first + i] += sound;
            out.right[first + i] += sound;
        }
        harmonics_ = next_;
    }

    std::array<Glide, kFormants> formants_;
    Glide pitch_, vibrato_, drift_, effort_, gain_, strength_;
    double hertz_ = 220;
    double phase_ = 0;
    std::array<Harmonic, kHarmonics> harmonics_{}, next_{};
    Filter breath_{6500, 0.9}, breathTop_{13000, 0.7};
};

}  // namespace

std::unique_ptr<Instrument> makeVoice(std::uint64_t seed) {
    return std::make_unique<Voice>(seed);
}

}  // namespace vanta::song
