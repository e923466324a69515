#include "host/lv2/lv2_events.hpp"

#include <lv2/atom/util.h>

#include <algorithm>
#include <cmath>
#include <limits>

namespace vanta {
namespace {

constexpr std::int64_t kLastOffset = std::numeric_limits<int>::max();
constexpr std::uint32_t kChannelMessageBytes = 3;

double number(const LV2_Atom& atom, const Lv2Uris& uris, double otherwise) {
    const void* body = &atom + 1;
    if (atom.type == uris.atomFloat) return static_cast<double>(*static_cast<const float*>(body));
    if (atom.type == uris.atomDouble) return *static_cast<const double*>(body);
    if (atom.type == uris.atomInt) return *static_cast<const std::int32_t*>(body);
    if (atom.type == uris.atomLong) return static_cast<double>(*static_cast<const std::int64_t*>(body));
    return otherwise;
}

/// What a time:Position says; what it does not say is not a number.
struct Position {
    static constexpr double kUnsaid = std::numeric_limits<double>::quiet_NaN();
    double bar = kUnsaid;
    double barBeat = kUnsaid;
    double beat = kUnsaid;
    double beatsPerBar = kUnsaid;
    double beatUnit = kUnsaid;
    double beatsPerMinute = kUnsaid;
    double speed = kUnsaid;

    Position(const LV2_Atom_Object& object, const Lv2Uris& uris) {
        const std::pair<LV2_URID, double*> fields[] = {
            {uris.timeBar, &bar},           {uris.timeBarBeat, &barBeat},
            {uris.timeBeat, &beat},         {uris.timeBeatsPerBar, &beatsPerBar},
            {uris.timeBeatUnit, &beatUnit}, {uris.timeBeatsPerMinute, &beatsPerMinute},
            {uris.timeSpeed, &speed},
        };
        LV2_ATOM_OBJECT_FOREACH(&object, property) {
            for (const auto& [key, value] : fields) {
                if (property->key == key) *value = number(property->value, uris, kUnsaid);
            }
        }
    }

    double quartersPerBeat() const { return beatUnit > 0.0 ? 4.0 / beatUnit : 1.0; }
    /// Beats since the start.
    double beats() const { return std::isnan(beat) ? bar * beatsPerBar + barBeat : beat; }
};

}  // namespace

// Sequences

Lv2SequenceReader::Lv2SequenceReader(const LV2_Atom_Sequence* sequence, const Lv2Uris& uris) {
    if (!sequence || sequence->atom.type != uris.atomSequence) return;
    if (sequence->atom.size < sizeof(LV2_Atom_Sequence_Body)) return;
    const auto* body = reinterpret_cast<const std::byte*>(&sequence->body);
    position_ = body + sizeof(LV2_Atom_Sequence_Body);
    end_ = body + sequence->atom.size;
}

const LV2_Atom_Event* Lv2SequenceReader::next() {
    const auto left = static_cast<std::size_t>(end_ - position_);
    if (left < sizeof(LV2_Atom_Event)) return nullptr;
    const auto* event = reinterpret_cast<const LV2_Atom_Event*>(position_);
    const std::size_t size = sizeof(LV2_Atom_Event) + event->body.size;
    if (size > left) return nullptr;
    position_ += std::min<std::size_t>((size + 7) & ~std::size_t{7}, left);
    return event;
}

bool Lv2Events::next(HostEvent& event) {
    if (!values_.empty()) {
        event = values_.front();
        values_ = values_.subspan(1);
        return true;
    }
    while (const LV2_Atom_Event* each = sequence_.next()) {
        const std::uint32_t size = each->body.size;
        if (each->body.type != uris_.midiEvent || size == 0 || size > kChannelMessageBytes) continue;
        const auto* bytes = reinterpret_cast<const std::uint8_t*>(each + 1);
        event = {};
        event.kind = HostEvent::Kind::Midi;
        event.offset = static_cast<int>(std::clamp<std::int64_t>(each->time.frames, 0, kLastOffset));
        event.midi = {bytes[0], size > 1 ? bytes[1] : std::uint8_t{0}, size > 2 ? bytes[2] : std::uint8_t{0}};
        return true;
    }
    return false;
}

// The transport

double Lv2Transport::beatsPerSample(double sampleRate) const {
    return now_.isRolling ? speed_ * now_.tempo / 60.0 / sampleRate : 0.0;
}

HostTransport Lv2Transport::read(const LV2_Atom_Sequence* sequence, const Lv2Uris& uris, double sampleRate) {
    Lv2SequenceReader reader(sequence, uris);
    while (const LV2_Atom_Event* event = reader.next()) {
        const bool isObject = event->body.type == uris.atomObject || event->body.type == uris.atomBlank;
        if (!isObject || event->body.size < sizeof(LV2_Atom_Object_Body)) continue;
        const auto& object = reinterpret_cast<const LV2_Atom_Object&>(event->body);
        if (object.body.otype != uris.timePosition) continue;
        // A block has one transport, at its start: a position within it is traced back.
        if (take(object, uris)) {
            now_.beats -= static_cast<double>(event->time.frames) * beatsPerSample(sampleRate);
        }
    }
    return now_;
}

bool Lv2Transport::take(const LV2_Atom_Object& object, const Lv2Uris& uris) {
    const Position position(object, uris);
    const double quarters = position.quartersPerBeat();
    if (position.beatsPerMinute > 0.0 && std::isfinite(position.beatsPerMinute)) {
        now_.tempo = position.beatsPerMinute * quarters;
    }
    if (std::isfinite(position.speed)) speed_ = position.speed;
    now_.isRolling = speed_ != 0.0;
    const bool isSaid = std::isfinite(position.beats());
    if (isSaid) now_.beats = position.beats() * quarters;
    return isSaid;
}

void Lv2Transport::advance(int samples, double sampleRate) {
    now_.beats += samples * beatsPerSample(sampleRate);
}

}  // namespace vanta
