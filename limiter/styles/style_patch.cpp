#include "limiter/styles/style_patch.hpp"

#include <filesystem>

#include "limiter/styles/engine_layout.hpp"
#include "limiter/styles/style_source.hpp"

namespace vanta {

StylePatch readStylePatch(std::string_view text, const std::string& fileName) {
    const EngineLayout layout(patchConfiguration());
    return {std::filesystem::path(fileName).stem().string(), parseStyleSource(layout, text, fileName)};
}

}  // namespace vanta
