#include "gui/graphics/device_backing.hpp"

#include <algorithm>

namespace vanta::gui {

void DeviceBacking::setScale(float scale) {
    if (scale == scale_) return;
    scale_ = scale;
    const std::vector<BackingScaleListener*> told = listeners_;
    for (BackingScaleListener* listener : told) {
        if (std::find(listeners_.begin(), listeners_.end(), listener) != listeners_.end()) {
            listener->backingScaleChanged();
        }
    }
}

void DeviceBacking::removeListener(BackingScaleListener& listener) {
    listeners_.erase(std::remove(listeners_.begin(), listeners_.end(), &listener), listeners_.end());
}

}  // namespace vanta::gui
