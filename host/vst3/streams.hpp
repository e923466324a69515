#pragma once

#include <cstddef>
#include <optional>
#include <span>
#include <vector>

#include <travesty/bstream.h>

namespace vanta::vst3 {

/// No state of ours is anywhere near this long, in bytes.
inline constexpr std::size_t kLongestState = std::size_t{16} << 20;

/// What a stream holds from where it stands. Nothing if that is longer than any state.
std::optional<std::vector<std::byte>> readAll(v3_bstream** stream);
/// False if the stream does not take it all, in however many pieces.
bool writeAll(v3_bstream** stream, std::span<const std::byte> bytes);

}  // namespace vanta::vst3
