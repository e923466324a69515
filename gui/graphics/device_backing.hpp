#pragma once

#include <vector>

namespace vanta::gui {

/// How many device pixels a logical unit has on the display that an interface is shown on, for all who hold
/// pixels made for it.
class DeviceBacking {
public:
    class BackingScaleListener {
    public:
        virtual ~BackingScaleListener() = default;
        virtual void backingScaleChanged() = 0;
    };

    float scale() const { return scale_; }
    /// Tells the listeners, in the order in which they came, if the scale really changes. They may come and
    /// go meanwhile; one that comes is not told of this change.
    void setScale(float scale);

    void addListener(BackingScaleListener& listener) { listeners_.push_back(&listener); }
    void removeListener(BackingScaleListener& listener);

private:
    float scale_ = 1.0f;
    std::vector<BackingScaleListener*> listeners_;
};

}  // namespace vanta::gui
