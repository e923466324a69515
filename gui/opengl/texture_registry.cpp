#include "gui/opengl/texture_registry.hpp"

#include <utility>

namespace vanta::gui {

void TextureRegistry::add(GLuint texture) {
    const std::lock_guard lock(mutex_);
    live_.push_back(texture);
}

void TextureRegistry::retire(GLuint texture) {
    const std::lock_guard lock(mutex_);
    if (std::erase(live_, texture) > 0) retired_.push_back(texture);
}

std::vector<GLuint> TextureRegistry::takeRetired() {
    const std::lock_guard lock(mutex_);
    return std::exchange(retired_, {});
}

std::vector<GLuint> TextureRegistry::takeAll() {
    const std::lock_guard lock(mutex_);
    std::vector<GLuint> all = std::exchange(retired_, {});
    all.insert(all.end(), live_.begin(), live_.end());
    live_.clear();
    return all;
}

}  // namespace vanta::gui
