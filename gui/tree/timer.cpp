#include "gui/tree/timer.hpp"

#include "gui/tree/user_interface.hpp"

namespace vanta::gui {

Timer::~Timer() {
    ui().removeFrameTimer(*this);
}

void Timer::propertyChanged(AbstractProperty& /*property*/) {
    restart();
}

void Timer::deferredCall(int /*argument*/) {
    restart();
}

void Timer::restart() {
    if (!ui().isInterfaceThread()) {
        ui().postDeferred(*this, 0);
        return;
    }
    ui().removeFrameTimer(*this);
    stopPlatformTimer();
    if (!running || interval <= 0) return;
    if (frameLocked && ui().accelerated) {
        ui().addFrameTimer(*this);
    } else {
        startPlatformTimer();
    }
}

}  // namespace vanta::gui
