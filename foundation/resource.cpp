#include "foundation/resource.hpp"

#include <algorithm>
#include <array>
#include <mutex>
#include <stdexcept>
#include <type_traits>

#include "foundation/ascii.hpp"

namespace vanta {
namespace {

/// Never destroyed, as resources may be read while other statics are torn down; and nothing on the heap, as
/// that would stay behind each time a host unloads the module.
struct Registry {
    std::span<const std::span<const Resource>> known() const { return std::span(tables).first(count); }

    std::mutex mutex;
    std::array<std::span<const Resource>, 16> tables{};
    std::size_t count = 0;
};
static_assert(std::is_trivially_destructible_v<Registry>);
constinit Registry registry;

std::string_view baseName(std::string_view path) {
    const std::size_t slash = path.find_last_of("/\\");
    return slash == std::string_view::npos ? path : path.substr(slash + 1);
}

bool sameBaseName(std::string_view a, std::string_view b) {
    a = baseName(a);
    b = baseName(b);
    return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                      [](char x, char y) { return lowerCase(x) == lowerCase(y); });
}

}  // namespace

void addResources(std::span<const Resource> table) {
    const std::lock_guard lock(registry.mutex);
    const bool isKnown = std::ranges::any_of(registry.known(), [&](auto other) {
        return other.data() == table.data() && other.size() == table.size();
    });
    if (isKnown) return;
    if (registry.count == registry.tables.size()) throw std::length_error("too many tables of resources");
    registry.tables[registry.count++] = table;
}

std::optional<std::span<const std::byte>> findResource(std::string_view name) {
    const std::lock_guard lock(registry.mutex);
    const Resource* byBaseName = nullptr;
    for (const std::span<const Resource> table : registry.known()) {
        for (const Resource& resource : table) {
            if (resource.name == name) return resource.bytes;
            if (!byBaseName && sameBaseName(resource.name, name)) byBaseName = &resource;
        }
    }
    if (byBaseName) return byBaseName->bytes;
    return std::nullopt;
}

}  // namespace vanta
