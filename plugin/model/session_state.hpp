#pragma once

#include <cstddef>
#include <span>
#include <vector>

namespace vanta {

class GenericPlugin;

/// What a host keeps of an instance with its session. All numbers are 4 bytes and little-endian:
///
///     "QMSt", version 1
///     a record: count, then for each parameter a type (0 float, 1 index from 0 on) and its value;
///               whether modified; the preset's name in 64 bytes, padded with zeros
///     current compare slot, whether the slots are modified, whether they are filled
///     a record for each of the two slots, if they are filled
///
/// Any thread.
std::vector<std::byte> writeSessionState(GenericPlugin& plugin);

/// Takes over a state. What later versions put after it is ignored; a value that is missing or of another
/// type leaves its parameter as it is, one that is not a number sets its default. False, and nothing has
/// changed, if the bytes are not a state or end early; the same holds if memory runs out. Any thread but the
/// audio thread.
bool readSessionState(GenericPlugin& plugin, std::span<const std::byte> bytes);

/// The same but for the present values: preset and compare slots alone, for who carries values on another
/// road.
bool readSessionSurroundings(GenericPlugin& plugin, std::span<const std::byte> bytes);

}  // namespace vanta
