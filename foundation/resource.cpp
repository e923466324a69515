#include "foundation/resource.hpp"

#include <algorithm>
#include <mutex>
#include <vector>

#include "foundation/ascii.hpp"

namespace vanta {
namespace {

struct Registry {
    std::mutex mutex;
    std::vector<std::span<const Resource>> tables;
};

Registry& registry() {
    // Never destroyed: resources may be read while other statics are torn down.
    static Registry& instance = *new Registry;
    return instance;
}

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
    Registry& known = registry();
    const std::lock_guard lock(known.mutex);
    const bool isKnown = std::any_of(known.tables.begin(), known.tables.end(), [&](auto other) {
        return other.data() == table.data() && other.size() == table.size();
    });
    if (!isKnown) known.tables.push_back(table);
}

std::optional<std::span<const std::byte>> findResource(std::string_view name) {
    Registry& known = registry();
    const std::lock_guard lock(known.mutex);
    const Resource* byBaseName = nullptr;
    for (const std::span<const Resource> table : known.tables) {
        for (const Resource& resource : table) {
            if (resource.name == name) return resource.bytes;
            if (!byBaseName && sameBaseName(resource.name, name)) byBaseName = &resource;
        }
    }
    if (byBaseName) return byBaseName->bytes;
    return std::nullopt;
}

}  // namespace vanta
