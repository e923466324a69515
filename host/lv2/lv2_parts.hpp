#pragma once

#include <lv2/atom/atom.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <vector>

#include "foundation/realtime.hpp"
#include "host/lv2/lv2_uris.hpp"

// Between a plug-in and its interface a message travels in parts: hosts give little room for an event. A part
// is an atom:Object of the type that says where it goes, with one property, an atom:Chunk:
//
//     number, size and check sum (FNV-1a) of the message, offset of the part: 4 bytes each, little-endian
//     the bytes
//
// A message of which a part is missing or damaged is dropped as a whole.
namespace vanta {

/// What a part begins with. Its bytes follow.
struct Lv2PartAtom {
    LV2_Atom atom;
    LV2_Atom_Object_Body object;
    LV2_Atom_Property_Body property;
};
static_assert(sizeof(Lv2PartAtom) == 32);

/// Bytes of a part at the most, its head included. Hosts are known that take no event of more than 1 KB.
inline constexpr std::size_t kLargestPart = 512;

/// The head of an object of `type` with so many bytes.
VANTA_REALTIME Lv2PartAtom lv2PartAtom(std::size_t size, LV2_URID type, const Lv2Uris& uris);
/// The bytes of a part; empty if the `size` bytes from `atom` on are no whole part of that `type`.
VANTA_REALTIME std::span<const std::byte> lv2PartOf(const LV2_Atom* atom, std::size_t size, LV2_URID type,
                                                    const Lv2Uris& uris);

/// Calls `send` for each part of a message, in order.
void splitMessage(std::uint32_t number, std::span<const std::byte> message,
                  const std::function<void(std::span<const std::byte>)>& send);
/// Bytes of a RecordRing that the parts of a message take.
std::size_t ringBytesOf(std::size_t messageSize);

/// Makes messages of parts.
class MessageAssembler {
public:
    static constexpr std::size_t kLargestMessage = std::size_t{1} << 20;

    /// The message that the part completes, until the next call.
    std::optional<std::span<const std::byte>> add(std::span<const std::byte> part);

private:
    std::vector<std::byte> message_;
    std::uint32_t number_ = 0;
    std::uint32_t checkSum_ = 0;
    std::size_t size_ = 0;  ///< 0: nothing is under way
};

}  // namespace vanta
