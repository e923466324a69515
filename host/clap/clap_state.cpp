#include <algorithm>
#include <array>
#include <optional>
#include <vector>

#include "host/clap/clap_extension_tables.hpp"
#include "host/clap/clap_plugin.hpp"

namespace vanta {
namespace {

/// Far more than a state ever has: a host with a wrong file must not make us read it all.
constexpr std::size_t kLargestState = 16 << 20;
constexpr std::size_t kReadAtOnce = 4096;

/// A host may take any part of it at a time.
bool writeAll(const clap_ostream_t& stream, std::span<const std::byte> bytes) {
    while (!bytes.empty()) {
        const std::int64_t written = stream.write(&stream, bytes.data(), bytes.size());
        if (written <= 0 || static_cast<std::uint64_t>(written) > bytes.size()) return false;
        bytes = bytes.subspan(static_cast<std::size_t>(written));
    }
    return true;
}

std::optional<std::vector<std::byte>> readAll(const clap_istream_t& stream) {
    std::vector<std::byte> bytes;
    std::array<std::byte, kReadAtOnce> part;
    for (;;) {
        const std::int64_t count = stream.read(&stream, part.data(), part.size());
        if (count == 0) return bytes;
        if (count < 0 || static_cast<std::uint64_t>(count) > part.size()) return {};
        if (bytes.size() + static_cast<std::size_t>(count) > kLargestState) return {};
        bytes.insert(bytes.end(), part.begin(), part.begin() + count);
    }
}

bool save(const clap_plugin_t* handle, const clap_ostream_t* stream) {
    return stream && stream->write && answer(handle, false, [=](ClapPlugin& plugin) {
               return writeAll(*stream, plugin.hosted().saveState());
           });
}

bool load(const clap_plugin_t* handle, const clap_istream_t* stream) {
    return stream && stream->read && answer(handle, false, [=](ClapPlugin& plugin) {
               const auto bytes = readAll(*stream);
               return bytes && plugin.hosted().restoreState(*bytes);
           });
}

}  // namespace

const clap_plugin_state_t kClapStateTable{.save = save, .load = load};

}  // namespace vanta
