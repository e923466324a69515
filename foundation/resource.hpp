#pragma once

#include <cstddef>
#include <optional>
#include <span>
#include <string_view>

namespace vanta {

/// A file that is built into the program.
struct Resource {
    std::string_view name;
    std::span<const std::byte> bytes;
};

/// Adds a table to the process-wide list. Names, bytes and the table itself must live until the process
/// ends. Adding the same table again changes nothing, so that each user of a table may add it. Of two
/// resources of one name the one that was added first is found. std::length_error beyond 16 tables. Any
/// thread.
void addResources(std::span<const Resource> table);

/// The bytes of a resource. The exact name wins; failing that, the last part of a path counts, without
/// regard to case. Any thread; takes a lock.
std::optional<std::span<const std::byte>> findResource(std::string_view name);

}  // namespace vanta
