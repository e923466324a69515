#include "host/lv2/lv2_uris.hpp"

#include <lv2/atom/atom.h>
#include <lv2/buf-size/buf-size.h>
#include <lv2/midi/midi.h>
#include <lv2/state/state.h>
#include <lv2/time/time.h>
#include <lv2/ui/ui.h>

#include "host/lv2/lv2_layouts.hpp"

namespace vanta {

Lv2Uris::Lv2Uris(const LV2_URID_Map& map) {
    const auto of = [&map](const char* uri) { return map.map(map.handle, uri); };
    atomBlank = of(LV2_ATOM__Blank);
    atomChunk = of(LV2_ATOM__Chunk);
    atomDouble = of(LV2_ATOM__Double);
    atomFloat = of(LV2_ATOM__Float);
    atomInt = of(LV2_ATOM__Int);
    atomLong = of(LV2_ATOM__Long);
    atomObject = of(LV2_ATOM__Object);
    atomSequence = of(LV2_ATOM__Sequence);
    atomVector = of(LV2_ATOM__Vector);
    midiEvent = of(LV2_MIDI__MidiEvent);
    timePosition = of(LV2_TIME__Position);
    timeBar = of(LV2_TIME__bar);
    timeBarBeat = of(LV2_TIME__barBeat);
    timeBeat = of(LV2_TIME__beat);
    timeBeatsPerBar = of(LV2_TIME__beatsPerBar);
    timeBeatUnit = of(LV2_TIME__beatUnit);
    timeBeatsPerMinute = of(LV2_TIME__beatsPerMinute);
    timeSpeed = of(LV2_TIME__speed);
    largestBlock = of(LV2_BUF_SIZE__maxBlockLength);
    nominalBlock = of(LV2_BUF_SIZE__nominalBlockLength);
    stateChanged = of(LV2_STATE__StateChanged);
    ownState = of(ownTerm("state").c_str());
    ownPortValues = of(ownTerm("portValues").c_str());
    ownToPlugin = of(ownTerm("ToPlugin").c_str());
    ownToInterface = of(ownTerm("ToInterface").c_str());
    ownPart = of(ownTerm("part").c_str());
    eventTransfer = of(LV2_ATOM__eventTransfer);
    atomString = of(LV2_ATOM__String);
    scaleFactor = of(LV2_UI__scaleFactor);
    windowTitle = of(LV2_UI__windowTitle);
}

}  // namespace vanta
