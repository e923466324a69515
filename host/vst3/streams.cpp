#include "host/vst3/streams.hpp"

#include <algorithm>
#include <array>
#include <cstdint>

namespace vanta::vst3 {

std::optional<std::vector<std::byte>> readAll(v3_bstream** stream) {
    std::vector<std::byte> bytes;
    std::array<std::byte, 4096> piece;
    constexpr auto kPiece = static_cast<std::int32_t>(piece.size());
    for (;;) {
        std::int32_t taken = 0;
        // Some report the end as a failure, along with the last bytes. A state that was cut is noticed later.
        const v3_result result = v3_cpp_obj(stream)->read(stream, piece.data(), kPiece, &taken);
        taken = std::clamp(taken, 0, kPiece);
        bytes.insert(bytes.end(), piece.begin(), piece.begin() + taken);
        if (bytes.size() > kLongestState) return {};
        if (taken == 0 || result != V3_OK) return bytes;
    }
}

bool writeAll(v3_bstream** stream, std::span<const std::byte> bytes) {
    // The interface asks for memory that it might write to.
    std::vector<std::byte> copy(bytes.begin(), bytes.end());
    std::size_t done = 0;
    while (done < copy.size()) {
        const auto left = static_cast<std::int32_t>(copy.size() - done);
        std::int32_t taken = 0;
        const v3_result result = v3_cpp_obj(stream)->write(stream, copy.data() + done, left, &taken);
        if (result != V3_OK || taken <= 0 || taken > left) return false;
        done += static_cast<std::size_t>(taken);
    }
    return true;
}

}  // namespace vanta::vst3
