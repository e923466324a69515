#include "limiter/factory/factory_archive.hpp"

#include <array>

#include "foundation/resource.hpp"
#include "plugin/presets/factory_presets.hpp"

namespace vanta {

void registerFactoryArchive() {
    static const std::array<Resource, 1> table{{{kSetupResource, factoryArchive()}}};
    addResources(table);
}

}  // namespace vanta
