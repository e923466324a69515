#include "host/lv2/lv2_parts.hpp"

#include <algorithm>
#include <array>
#include <cstring>

#include "host/lv2/record_ring.hpp"

namespace vanta {
namespace {

struct PartHead {
    std::uint32_t number;
    std::uint32_t size;
    std::uint32_t checkSum;
    std::uint32_t offset;
};
constexpr std::size_t kLargestPiece = kLargestPart - sizeof(PartHead);

/// http://www.isthe.com/chongo/tech/comp/fnv/
std::uint32_t checkSumOf(std::span<const std::byte> message) {
    std::uint32_t sum = 2166136261u;
    for (const std::byte each : message) sum = (sum ^ std::to_integer<std::uint32_t>(each)) * 16777619u;
    return sum;
}

std::span<const std::byte> piece(std::span<const std::byte> message, std::size_t offset) {
    return message.subspan(offset, std::min(kLargestPiece, message.size() - offset));
}

}  // namespace

Lv2PartAtom lv2PartAtom(std::size_t size, LV2_URID type, const Lv2Uris& uris) {
    const auto bytes = static_cast<std::uint32_t>(size);
    const auto rest = static_cast<std::uint32_t>(sizeof(Lv2PartAtom) - sizeof(LV2_Atom));
    return {{rest + bytes, uris.atomObject}, {0, type}, {uris.ownPart, 0, {bytes, uris.atomChunk}}};
}

std::span<const std::byte> lv2PartOf(const LV2_Atom* atom, std::size_t size, LV2_URID type,
                                     const Lv2Uris& uris) {
    Lv2PartAtom head{};
    if (!atom || size < sizeof head) return {};
    std::memcpy(&head, atom, sizeof head);
    const std::size_t bytes = head.property.value.size;
    const bool isOurs = head.atom.type == uris.atomObject && head.object.otype == type &&
                        head.property.key == uris.ownPart && head.property.value.type == uris.atomChunk;
    const bool fits = head.atom.size <= size - sizeof(LV2_Atom) && bytes <= kLargestPart &&
                      bytes + sizeof head <= head.atom.size + sizeof(LV2_Atom);
    if (!isOurs || !fits) return {};
    return {reinterpret_cast<const std::byte*>(atom) + sizeof head, bytes};
}

void splitMessage(std::uint32_t number, std::span<const std::byte> message,
                  const std::function<void(std::span<const std::byte>)>& send) {
    std::array<std::byte, kLargestPart> part{};
    const std::uint32_t checkSum = checkSumOf(message);
    for (std::size_t offset = 0; offset < message.size();) {
        const auto bytes = piece(message, offset);
        const PartHead head{number, static_cast<std::uint32_t>(message.size()), checkSum,
                            static_cast<std::uint32_t>(offset)};
        std::memcpy(part.data(), &head, sizeof head);
        std::memcpy(part.data() + sizeof head, bytes.data(), bytes.size());
        send(std::span(part).first(sizeof head + bytes.size()));
        offset += bytes.size();
    }
}

std::size_t ringBytesOf(std::size_t messageSize) {
    const std::size_t parts = (messageSize + kLargestPiece - 1) / kLargestPiece;
    return messageSize + parts * (sizeof(PartHead) + RecordRing::kRecordHead);
}

std::optional<std::span<const std::byte>> MessageAssembler::add(std::span<const std::byte> part) {
    PartHead head{};
    if (part.size() <= sizeof head) return {};
    std::memcpy(&head, part.data(), sizeof head);
    const auto bytes = part.subspan(sizeof head);
    if (head.offset == 0) {
        message_.clear();
        number_ = head.number;
        checkSum_ = head.checkSum;
        size_ = head.size <= kLargestMessage ? head.size : 0;
    }
    const bool follows = head.number == number_ && head.size == size_ && head.offset == message_.size();
    if (size_ == 0 || !follows || bytes.size() > size_ - message_.size()) {
        size_ = 0;
        return {};
    }
    message_.insert(message_.end(), bytes.begin(), bytes.end());
    if (message_.size() < size_) return {};
    size_ = 0;
    if (checkSumOf(message_) != checkSum_) return {};
    return message_;
}

}  // namespace vanta
