#include "gui/opengl/gl_functions.hpp"

namespace vanta::gui {

bool listContains(std::string_view list, std::string_view name) {
    for (std::size_t at = list.find(name); at != list.npos; at = list.find(name, at + 1)) {
        const std::size_t end = at + name.size();
        if ((at == 0 || list[at - 1] == ' ') && (end == list.size() || list[end] == ' ')) return true;
    }
    return false;
}

std::optional<GlFunctions> GlFunctions::find(const GlLookup& lookup) {
    GlFunctions found;
    bool complete = true;
#define VANTA_GL_FIND(name)                                                  \
    found.name = reinterpret_cast<decltype(found.name)>(lookup("gl" #name)); \
    complete = complete && found.name;
    VANTA_GL_FUNCTIONS(VANTA_GL_FIND)
#undef VANTA_GL_FIND
    if (!complete) return std::nullopt;
    return found;
}

}  // namespace vanta::gui
