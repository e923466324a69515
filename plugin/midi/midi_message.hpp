#pragma once

#include <cstdint>

namespace vanta {

/// A channel message as it stands on the wire. Program change and channel pressure have no `data2`.
struct MidiMessage {
    std::uint8_t status;
    std::uint8_t data1;
    std::uint8_t data2;
};

}  // namespace vanta
