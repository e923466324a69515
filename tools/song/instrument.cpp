#include "tools/song/instrument.hpp"

#include <stdexcept>

namespace vanta::song {

std::unique_ptr<Instrument> makeInstrument(const InstrumentSpec& spec, std::uint64_t seed) {
    switch (spec.kind) {
        case InstrumentKind::kick:
        case InstrumentKind::snare:
        case InstrumentKind::hat:
        case InstrumentKind::crash:
            return makeDrum(spec.kind, spec.decaySeconds, seed);
        case InstrumentKind::bass:
            return makeBass(spec.decaySeconds, seed);
        case InstrumentKind::keys:
            return makeKeys(spec.decaySeconds, seed);
        case InstrumentKind::pad:
            return makePad(seed);
        case InstrumentKind::voice:
            return makeVoice(seed);
    }
    throw std::invalid_argument("unknown kind of instrument");
}

}  // namespace vanta::song
