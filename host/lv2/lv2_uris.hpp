#pragma once

#include <lv2/urid/urid.h>

namespace vanta {

/// The numbers that a host gives to the terms that we share with it.
struct Lv2Uris {
    explicit Lv2Uris(const LV2_URID_Map& map);

    LV2_URID atomBlank, atomChunk, atomDouble, atomFloat, atomInt, atomLong, atomObject, atomSequence,
        atomVector;
    LV2_URID midiEvent;
    LV2_URID timePosition, timeBar, timeBarBeat, timeBeat, timeBeatsPerBar, timeBeatUnit, timeBeatsPerMinute,
        timeSpeed;
    LV2_URID largestBlock, nominalBlock;
    LV2_URID stateChanged;
    LV2_URID ownState;       ///< HostedPlugin's bytes
    LV2_URID ownPortValues;  ///< what the ports said when they were saved
    // Between a plug-in and its interface; see lv2_parts.hpp.
    LV2_URID ownToPlugin, ownToInterface, ownPart;
    LV2_URID eventTransfer;
    LV2_URID atomString;
    LV2_URID scaleFactor, windowTitle;
};

}  // namespace vanta
