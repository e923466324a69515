#include "host/lv2/record_ring.hpp"

#include <algorithm>
#include <cstring>

namespace vanta {
namespace {

using Size = std::uint32_t;

}  // namespace

void RecordRing::copyIn(std::size_t at, std::span<const std::byte> from) {
    const std::size_t begin = at % bytes_.size();
    const std::size_t first = std::min(from.size(), bytes_.size() - begin);
    std::copy_n(from.begin(), first, bytes_.begin() + static_cast<std::ptrdiff_t>(begin));
    std::copy(from.begin() + static_cast<std::ptrdiff_t>(first), from.end(), bytes_.begin());
}

void RecordRing::copyOut(std::size_t at, std::span<std::byte> to) const {
    const std::size_t begin = at % bytes_.size();
    const std::size_t first = std::min(to.size(), bytes_.size() - begin);
    std::copy_n(bytes_.begin() + static_cast<std::ptrdiff_t>(begin), first, to.begin());
    std::copy_n(bytes_.begin(), to.size() - first, to.begin() + static_cast<std::ptrdiff_t>(first));
}

std::size_t RecordRing::room() const {
    return bytes_.size() - (written_.load(std::memory_order_relaxed) - read_.load(std::memory_order_acquire));
}

bool RecordRing::push(std::span<const std::byte> record) {
    const auto size = static_cast<Size>(record.size());
    if (record.empty() || room() < sizeof size + record.size()) return false;
    const std::size_t at = written_.load(std::memory_order_relaxed);
    copyIn(at, std::as_bytes(std::span(&size, 1)));
    copyIn(at + sizeof size, record);
    written_.store(at + sizeof size + record.size(), std::memory_order_release);
    return true;
}

std::size_t RecordRing::nextSize() const {
    const std::size_t at = read_.load(std::memory_order_relaxed);
    if (at == written_.load(std::memory_order_acquire)) return 0;
    Size size = 0;
    copyOut(at, std::as_writable_bytes(std::span(&size, 1)));
    return size;
}

void RecordRing::pop(std::span<std::byte> target) {
    const std::size_t at = read_.load(std::memory_order_relaxed) + sizeof(Size);
    copyOut(at, target);
    read_.store(at + target.size(), std::memory_order_release);
}

}  // namespace vanta
